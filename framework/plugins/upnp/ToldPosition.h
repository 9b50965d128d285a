// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>

class ItemProgress;

/// What a device says of where its item is, and whether that shows that an event is missing: not all send them.
/// Seconds.
///
/// That is judged by the device's own words, which is why they are kept here: where the item is by them, the progress knows.
/// It hears of them from the event loop only, so whether the device has moved on is known here first.
class ToldPosition
{
public:
    /// Another item.
    void reset() { *this = {}; }

    /// @param progress  of the item until now
    /// @return whether the item would not explain it while it plays: at rest, past its end, or fallen back
    bool take(double seconds, double duration, const ItemProgress &progress);
    /// What has fallen back is not to be believed before it is said again, since it may be that of an end.
    bool isFallDoubted() const { return m_isFallDoubted; }
    /// Whether the device has told of any but the start.
    bool hasMoved() const { return m_hasMoved; }

private:
    bool m_hasMoved = false;
    double m_last = -1;
    QElapsedTimer m_lastAt;
    bool m_isFallDoubted = false;
};
