// SPDX-License-Identifier: MIT
#pragma once

#include "RemotePosition.h"

#include <QElapsedTimer>

/// Where the item in a device is, by what the device says and the time that has passed, and whether what it says shows that an
/// event is missing: not all send them. Seconds.
class ItemPosition
{
public:
    /// Another item.
    void reset() { *this = {}; }
    void run(bool isRunning) { m_clock.setRunning(isRunning); }
    void setRate(double rate) { m_clock.setRate(rate); }
    double now() const { return m_clock.now(); }

    /// The device has gone there by our seek.
    void seekTo(double seconds);
    /// What the device says.
    void note(double seconds) { m_furthest = std::max(m_furthest, seconds); }
    /// Whether the device has told of any but the start.
    bool hasMoved() const { return m_furthest > 0; }
    /// Goes by what the device says.
    /// @param held  milliseconds that the target of a seek counts, because devices answer 0 for a while
    /// @return whether the item would not explain it while it plays: at rest, past its end, or fallen back, which is not taken
    ///         before it is said again, since it may be that of an end
    bool take(double seconds, double duration, int held);

private:
    bool isDoubtful(double seconds, double duration);

    RemotePosition m_clock;
    double m_furthest = 0; // as the device said
    double m_last = -1;
    QElapsedTimer m_lastAt;
    bool m_isFallDoubted = false;
    QElapsedTimer m_seeked;
};
