// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/qglobal.h>

#include <optional>

/// The position within an item as a function of time: it stands still or moves at a speed. All times and
/// positions in milliseconds. The position may run past either end of the item: its user clamps it.
class SimulatedPosition
{
public:
    /// Back to 0, standing still; the speed stays.
    void reset(qint64 now) { set(0, now, false); }

    double at(qint64 now) const;
    void moveTo(double position, qint64 now) { set(position, now, m_running); }
    void setRunning(bool running, qint64 now) { set(at(now), now, running); }
    bool isRunning() const { return m_running; }

    double speed() const { return m_speed; }
    /// Not 0.
    void setSpeed(double speed, qint64 now);

    /// How long until the position is at or past that point, in the direction it moves, rounded up; 0 when it
    /// is there already. None when it stands still or the point is months away.
    std::optional<qint64> timeUntil(double position, qint64 now) const;

private:
    void set(double position, qint64 now, bool running);

    double m_base = 0; ///< position at m_since
    qint64 m_since = 0;
    double m_speed = 1;
    bool m_running = false;
};
