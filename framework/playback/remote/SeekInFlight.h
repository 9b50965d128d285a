// SPDX-License-Identifier: MIT
#pragma once

#include <QDeadlineTimer>
#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <optional>

/// A player on its way to where it was sent: for a while it may still tell where it was.
class SeekInFlight
{
public:
    /// Milliseconds. While it is paused there is no hurry to know better.
    static constexpr qint64 SeekTime = 700;
    static constexpr qint64 PausedSeekTime = 3000;
    /// Seconds. What the player tells is farther away from the target than this as long as it is not there.
    static constexpr double Tolerance = 1.5;

    void begin(double target)
    {
        m_target = target;
        m_arrived = false;
        m_since.start();
    }
    /// It is there, by playing until there. What is behind that was the target of a seek past it.
    void aimAt(double target) { m_target = std::max(target, m_target.value_or(target)); }
    /// The player refused.
    void giveUp()
    {
        m_since.invalidate();
        m_settling = {};
    }
    /// The player has taken it, and for so many milliseconds may tell any position.
    void settleFor(int milliseconds) { m_settling.setRemainingTime(milliseconds, Qt::PreciseTimer); }
    /// Whether that lasts.
    bool isSettling() const { return !m_settling.hasExpired(); }
    /// Whether the player may not yet have arrived.
    bool isUnderWay(bool isPaused) const
    {
        return isWithin(SeekTime) || (isPaused && !m_arrived && isRecent());
    }
    /// Whether a player that has not been seen at the target may yet come there.
    bool isRecent() const { return isWithin(PausedSeekTime); }
    /// Where the player is, by what it tells and what was expected of it; none: it tells of where it came from.
    std::optional<double> settle(double told, double expected, bool isPaused)
    {
        const bool isNear = std::abs(told - expected) <= Tolerance;
        if ((isSettling() || isUnderWay(isPaused)) && !isNear)
            return std::nullopt;
        m_arrived = m_arrived || isNear;
        // Players go to the beginning of the piece of media that holds the second.
        const bool atTarget = m_target && told < *m_target && *m_target - told < PieceOfMedia;
        const double position = atTarget ? *m_target : told;
        // Right after a seek a player may be a little ahead at first and go back when it pauses.
        if (!atTarget && !isPaused && !isUnderWay(false))
            m_target.reset();
        return std::max(0.0, position);
    }
    /// Milliseconds until it is good to ask again.
    int settleTime() const
    {
        constexpr qint64 interval = 300;
        return int(m_arrived ? SeekTime - m_since.elapsed() + 1
                             : std::min(interval, PausedSeekTime - m_since.elapsed() + 1));
    }

private:
    static constexpr double PieceOfMedia = 0.3; ///< seconds

    bool isWithin(qint64 milliseconds) const { return m_since.isValid() && m_since.elapsed() < milliseconds; }

    QElapsedTimer m_since;
    QDeadlineTimer m_settling;
    bool m_arrived = true;
    std::optional<double> m_target; ///< until it plays on from there
};
