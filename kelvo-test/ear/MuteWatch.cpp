// SPDX-License-Identifier: MIT
#include "MuteWatch.h"

#include <utility>

namespace {
constexpr int longestEnd = 1000; // milliseconds
const auto soundControl = QStringLiteral("pactl");
} // namespace

MuteWatch::MuteWatch(QObject *parent)
    : QObject(parent)
{
    // What is read is in no language of the desktop.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    m_news.setProcessEnvironment(environment);
    m_question.setProcessEnvironment(environment);
    connect(&m_news, &QProcess::readyReadStandardOutput, this, &MuteWatch::takeNews);
    connect(&m_question, &QProcess::finished, this, &MuteWatch::takeAnswer);
}

MuteWatch::~MuteWatch()
{
    for (QProcess *process : {&m_news, &m_question}) {
        process->disconnect(this);
        process->kill();
        process->waitForFinished(longestEnd);
    }
}

void MuteWatch::watch(const QString &source)
{
    m_source = source;
    m_news.start(soundControl, {QStringLiteral("subscribe")});
    ask();
}

void MuteWatch::takeNews()
{
    bool isOfSource = false;
    while (m_news.canReadLine())
        isOfSource = m_news.readLine().contains("'change' on source #") || isOfSource;
    if (isOfSource)
        ask();
}

void MuteWatch::ask()
{
    m_asksAgain = m_question.state() != QProcess::NotRunning;
    if (!m_asksAgain)
        m_question.start(soundControl, {QStringLiteral("get-source-mute"), m_source});
}

void MuteWatch::takeAnswer()
{
    const bool muted = m_question.readAllStandardOutput().contains("yes");
    if (muted != std::exchange(m_isMuted, muted))
        Q_EMIT changed(muted);
    if (m_asksAgain)
        ask();
}
