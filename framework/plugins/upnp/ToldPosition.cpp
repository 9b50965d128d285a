// SPDX-License-Identifier: MIT
#include "ToldPosition.h"

#include "ItemProgress.h"

namespace {
// A position that is this far behind has fallen back.
constexpr double fall = 2;
// Longer than this, in milliseconds, the position of what plays is not the same: most tell it in whole seconds.
constexpr qint64 standstill = 1500;
} // namespace

bool ToldPosition::take(double seconds, double duration, const ItemProgress &progress)
{
    m_hasMoved = m_hasMoved || seconds > 0;
    if (progress.isAimed())
        return false;
    const bool isDue = m_lastAt.isValid() && m_lastAt.hasExpired(standstill);
    const bool isStill = isDue && seconds <= m_last;
    const bool isOver = duration > 0 && progress.now() > duration;
    const bool isFallen = seconds + fall < progress.now();
    m_isFallDoubted = isFallen && !m_isFallDoubted;
    if (!m_lastAt.isValid() || isDue || seconds != m_last) {
        m_last = seconds;
        m_lastAt.start();
    }
    return isStill || isOver || isFallen;
}
