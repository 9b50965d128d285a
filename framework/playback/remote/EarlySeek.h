// SPDX-License-Identifier: MIT
#pragma once

#include "SeekInFlight.h"

#include <QElapsedTimer>

#include <optional>
#include <utility>

/// A seek right after an item has begun: some players accept it and lose it, being busy with the beginning. It is sought
/// once more when the player is where it would be without it.
class EarlySeek
{
public:
    /// @param age  milliseconds that the item has played
    void begin(double target, qint64 age)
    {
        m_target = age < Early ? std::optional<double>(target) : std::nullopt;
        m_since.start();
    }
    void end() { m_target.reset(); }

    /// Whether what the player tells of its position is of interest.
    bool isWatched() const { return m_target && !m_since.hasExpired(Watched); }
    /// Where it is to be sent again, once.
    /// @param told      where the player says that it is, now that it had time to get there; seconds
    /// @param expected  where it would be had it got there
    /// @param age       as above
    std::optional<double> takeLost(double told, double expected, qint64 age)
    {
        const double unmoved = double(age) / 1000;
        const bool isLost = isWatched() && expected - told > SeekInFlight::Tolerance
            && told < unmoved + SeekInFlight::Tolerance;
        return isLost ? std::exchange(m_target, std::nullopt) : std::nullopt;
    }

private:
    // Milliseconds.
    static constexpr qint64 Early = 1000;
    /// It may take a while until the player is asked, and until what it tells is believed.
    static constexpr qint64 Watched = 5000;

    std::optional<double> m_target; ///< seconds
    QElapsedTimer m_since;
};
