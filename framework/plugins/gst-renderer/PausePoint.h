// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <optional>

/// The position at which playback is to pause, once, in this item or a later one. In nanoseconds.
class PausePoint
{
public:
    void set(qint64 position) { m_position = position; }
    void drop() { m_position.reset(); }

    bool isSet() const { return m_position.has_value(); }
    /// Whether whoever goes to that position comes to it.
    bool isWithin(qint64 position) const { return m_position && *m_position <= position; }
    /// True at that position or past it, and then no more.
    bool takeReached(qint64 position);
    /// How long playing takes from there to it; nothing when it is not ahead.
    std::optional<qint64> timeFrom(qint64 position, double speed) const;

private:
    std::optional<qint64> m_position;
};
