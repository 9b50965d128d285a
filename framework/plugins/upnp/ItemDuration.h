// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

/// Which of the durations that a device says can be believed. Seconds.
///
/// At first some tell of the item before, and take it back with the 0 that they write for what has no duration, or one below a
/// second. So what the device said of both items is remembered here, told or not: the progress of the item begins anew
/// with each, before the device does, and knows only what it was told. Whether what is told is news, is judged there.
class ItemDuration
{
public:
    /// Another item.
    void reset();
    double seconds() const { return m_seconds; } ///< below 0: not known
    bool isKnown() const { return m_seconds > 0; }

    /// What the device says.
    /// @param isAtStart  the item has only just begun, so that a 0 takes back what was said before
    /// @param isStale    it may be about the item before: who is asked right after the start may still answer for that
    /// @return whether it is to be told
    bool take(double seconds, bool isAtStart, bool isStale);
    /// It may be the one of the item before: it is to be asked for again.
    bool isUntold() const { return m_isUntold; }

    /// An answer takes it back, or it is over because the item is: that shows with the state.
    void doubt(bool isDoubted) { m_isDoubted = isDoubted; }
    bool takeDoubt() { return std::exchange(m_isDoubted, false); }

private:
    double m_seconds = -1; // said last of this item, and not taken back
    double m_before = -1; // of the item before
    bool m_isUntold = false; // it may be that one
    bool m_isDoubted = false;
};
