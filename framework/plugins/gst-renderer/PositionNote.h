// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// Where playback was when it was last looked at: tells how far it can have come since. The position that is reported
/// at the end is of no use for that: some formats jump to the announced duration, however early their data ends.
class PositionNote
{
public:
    /// Positions in nanoseconds, times in milliseconds of any one clock.
    void take(qint64 position, qint64 now);
    /// The reported position, unless that is farther than playing has come at that speed.
    qint64 reachable(qint64 reported, qint64 now, double speed) const;

private:
    qint64 m_position = 0;
    qint64 m_at = 0;
};
