// SPDX-License-Identifier: MIT
#include "ItemPosition.h"

#include <cmath>

namespace {
// A position that is this far from where a seek went to is still the one of before.
constexpr double seekTolerance = 2;
// Longer than this, in milliseconds, the position of what plays is not the same: most tell it in whole seconds.
constexpr qint64 standstill = 1500;
} // namespace

void ItemPosition::seekTo(double seconds)
{
    m_clock.moveTo(seconds);
    m_seeked.start();
}

bool ItemPosition::take(double seconds, double duration, int held)
{
    const bool isHeld = m_seeked.isValid() && !m_seeked.hasExpired(held);
    const bool isOutdated = isHeld && std::abs(seconds - m_clock.now()) > seekTolerance;
    const bool isDoubted = !isHeld && isDoubtful(seconds, duration);
    if (!isOutdated && !m_isFallDoubted)
        m_clock.moveTo(seconds);
    return isDoubted;
}

bool ItemPosition::isDoubtful(double seconds, double duration)
{
    const bool isDue = m_lastAt.isValid() && m_lastAt.hasExpired(standstill);
    const bool isStill = isDue && seconds <= m_last;
    const bool isOver = duration > 0 && m_clock.now() > duration;
    const bool isFallen = seconds + seekTolerance < m_clock.now();
    m_isFallDoubted = isFallen && !m_isFallDoubted;
    if (!m_lastAt.isValid() || isDue || seconds != m_last) {
        m_last = seconds;
        m_lastAt.start();
    }
    return isStill || isOver || isFallen;
}
