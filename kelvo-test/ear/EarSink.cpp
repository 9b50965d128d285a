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
    const QRegularExpression ours(
        QStringLiteral("^(\\d+)\t%1\t").arg(m_name), QRegularExpression::MultilineOption);
    m_number
        = ours.match(ask({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sinks")}, error))
              .captured(1);
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
            look(stream.captured(1));
    }
}

/// Moves it if it is elsewhere; one that has gone again is left alone.
void EarSink::look(const QString &stream)
{
    auto *const question = new QProcess(this);
    connect(question, &QProcess::finished, this, [this, question, stream] {
        const QString streams = QString::fromUtf8(question->readAllStandardOutput());
        question->deleteLater();
        const QRegularExpression place(
            QStringLiteral("^%1\t(\\d+)\t").arg(stream), QRegularExpression::MultilineOption);
        const QString sink = place.match(streams).captured(1);
        if (!sink.isEmpty() && sink != m_number)
            move(stream);
    });
    connect(question, &QProcess::errorOccurred, question, &QObject::deleteLater);
    question->start(mixer, {QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sink-inputs")});
}

void EarSink::move(const QString &stream)
{
    ++m_movedStreams;
    auto *const process = new QProcess(this);
    connect(process, &QProcess::finished, process, &QObject::deleteLater);
    connect(process, &QProcess::errorOccurred, process, &QObject::deleteLater);
    process->start(mixer, {QStringLiteral("move-sink-input"), stream, m_name});
}
