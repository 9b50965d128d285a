// SPDX-License-Identifier: MIT
#include "MprisQuestions.h"

#include "MprisCalls.h"

#include <utility>

MprisQuestions::MprisQuestions(MprisCalls *calls, QObject *parent)
    : QObject(parent)
    , m_calls(calls)
{
    m_nextQuestion.setSingleShot(true);
    connect(&m_nextQuestion, &QTimer::timeout, this, &MprisQuestions::ask);
}

void MprisQuestions::ask()
{
    m_nextQuestion.stop();
    if (m_isAsking) {
        m_isToAskAgain = true;
        return;
    }
    m_isAsking = true;
    m_calls->getProperties([this, generation = m_generation](const std::optional<QVariantMap> &properties) {
        m_isAsking = false;
        const bool isOutdated = generation != m_generation;
        if (std::exchange(m_isToAskAgain, false) || isOutdated)
            askIn(1);
        if (properties && !isOutdated)
            Q_EMIT answered(MprisSnapshot::of(*properties));
        else
            Q_EMIT unanswered();
    });
}

void MprisQuestions::askIn(int milliseconds)
{
    if (!m_nextQuestion.isActive() || m_nextQuestion.remainingTime() > milliseconds)
        m_nextQuestion.start(milliseconds);
}
