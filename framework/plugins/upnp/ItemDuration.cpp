// SPDX-License-Identifier: MIT
#include "ItemDuration.h"

#include <QtGlobal>

void ItemDuration::reset()
{
    const double before = isKnown() ? m_seconds : m_before;
    *this = {};
    m_before = before;
}

bool ItemDuration::take(double seconds, bool isAtStart, bool isStale)
{
    const bool isTakenBack = seconds == 0 && isKnown() && isAtStart;
    if (seconds <= 0 && !isTakenBack)
        return false;
    const bool isToldAlready = !m_isUntold && qFuzzyCompare(seconds, m_seconds);
    m_seconds = isTakenBack ? -1 : seconds;
    const bool isTakenBackUntold = std::exchange(m_isUntold, false) && isTakenBack;
    m_isUntold = isStale && !isToldAlready && qFuzzyCompare(seconds, m_before);
    return !m_isUntold && !isTakenBackUntold;
}
