// SPDX-License-Identifier: MIT
#include "RemotePausePoint.h"

#include "ItemProgress.h"

#include <algorithm>
#include <cmath>

namespace {
// All in milliseconds.
/// A timer may run ahead of the player's clock, and a pause before its second has not reached it.
constexpr double behind = 20;
/// Longer ones are as good as none.
constexpr double farthest = 1e9;
/// A player that has not answered by then is believed to be where it should be.
constexpr int answerTime = 100;
/// Many tell their position in steps of up to a second: so long after it should be there the player is asked again and again.
constexpr qint64 wholeStep = 1000;
constexpr double askEvery = 250;
} // namespace

RemotePausePoint::RemotePausePoint()
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &RemotePausePoint::due);
}

void RemotePausePoint::set(std::optional<uint> seconds)
{
    rest();
    m_second = seconds;
    m_paused.reset();
}

void RemotePausePoint::rest()
{
    m_timer.stop();
    m_isAsked = false;
    m_expected = QDeadlineTimer(QDeadlineTimer::Forever);
}

RemotePausePoint::Step RemotePausePoint::judge(const ItemProgress &item, bool isPaused, bool isDue)
{
    if (!m_second)
        return Step::Wait;
    const double left = *m_second - item.now();
    const bool isToldSo = isPaused || item.told() >= *m_second;
    const bool isUnanswered = isDue && m_isAsked;
    if (left <= 0 && (isToldSo || isUnanswered)) {
        rest();
        m_paused = std::exchange(m_second, std::nullopt);
        return Step::Pause;
    }
    if (left <= 0 && !m_isAsked)
        m_expected = std::min(m_expected, QDeadlineTimer::current(Qt::PreciseTimer));
    if (m_expected.hasExpired() && (isDue || (left <= 0 && !m_isAsked))) {
        m_isAsked = true;
        m_timer.start(answerTime);
        return Step::Ask;
    }
    if (left > 0 && item.isRunning() && item.rate() > 0)
        waitFor(left / item.rate());
    else if (left > 0)
        rest();
    return Step::Wait;
}

/// What the player says puts it off, but in steps only.
void RemotePausePoint::waitFor(double seconds)
{
    m_isAsked = false;
    const double wait = std::ceil(1000 * seconds + behind);
    if (wait >= farthest) {
        rest();
        return;
    }
    const QDeadlineTimer expected(qint64(wait), Qt::PreciseTimer);
    const bool isPutOff = (m_expected + wholeStep).hasExpired();
    m_expected = isPutOff ? expected : std::min(expected, m_expected);
    m_timer.start(
        m_expected.hasExpired() ? int(std::min(wait, askEvery)) : int(m_expected.remainingTime()) + 1);
}
