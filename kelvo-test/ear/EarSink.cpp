// SPDX-License-Identifier: MIT
#include "EarSink.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace {
constexpr int answerTime = 5000; // milliseconds
const auto mixer = QStringLiteral("pactl");

/// What the sound server answers. Nothing, with the reason, where it does not.
QString ask(const QStringList &arguments, QString *error)
{
    QProcess process;
    process.start(mixer, arguments);
    const bool ended = process.waitForFinished(answerTime);
    if (ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    const QString words = QString::fromUtf8(process.readAllStandardError()).trimmed();
    if (process.error() == QProcess::FailedToStart)
        *error = QStringLiteral("pactl is missing (package pulseaudio-utils)");
    else
        *error = words.isEmpty() ? QStringLiteral("the sound server does not answer")
                                 : words.section(u'\n', 0, 0);
    return {};
}
} // namespace

EarSink::EarSink(QObject *parent)
    : QObject(parent)
    , m_name(QStringLiteral("kelvo_ear_%1").arg(QCoreApplication::applicationPid()))
{
}

EarSink::~EarSink()
{
    m_news.disconnect(this);
    m_news.kill();
    m_news.waitForFinished(answerTime);
    QString error;
    if (!m_module.isEmpty())
        ask({QStringLiteral("unload-module"), m_module}, &error);
}

bool EarSink::make(QString *error)
{
    m_module = ask({QStringLiteral("load-module"), QStringLiteral("module-null-sink"),
                       QStringLiteral("sink_name=") + m_name, QStringLiteral("rate=48000")},
        error);
    if (m_module.isEmpty())
        return false;
    qputenv("PULSE_SINK", m_name.toUtf8());
    follow();
    return true;
}

void EarSink::follow()
{
    connect(&m_news, &QProcess::readyReadStandardOutput, this, &EarSink::takeNews);
    m_news.start(mixer, {QStringLiteral("subscribe")});
}

void EarSink::takeNews()
{
    static const QRegularExpression news(QStringLiteral("'new' on sink-input #(\\d+)"));
    while (m_news.canReadLine()) {
        const QRegularExpressionMatch stream = news.match(QString::fromUtf8(m_news.readLine()));
        if (stream.hasMatch())
            move(stream.captured(1));
    }
}

/// One that has gone again, or is there already, is left alone.
void EarSink::move(const QString &stream)
{
    auto *const process = new QProcess(this);
    connect(process, &QProcess::finished, process, &QObject::deleteLater);
    connect(process, &QProcess::errorOccurred, process, &QObject::deleteLater);
    process->start(mixer, {QStringLiteral("move-sink-input"), stream, m_name});
}
