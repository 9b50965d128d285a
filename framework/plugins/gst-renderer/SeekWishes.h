// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <optional>

/// Where playback is to go and how fast it is to be. Positions in nanoseconds.
///
/// One seek at a time: a pipeline that is flooded with seeks shows nothing until the last is done. Of those wished for
/// in the meantime only the newest is carried out.
class SeekWishes
{
public:
    /// Another item, which is to be played at that speed once it is loaded.
    void beginItem(double speed);
    /// The item is out of play: nothing is wished for any more.
    void forgetItem();

    void wish(qint64 position) { m_wished = position; }
    /// Takes the wish back.
    std::optional<qint64> takeWish();
    void setSpeed(double speed) { m_speed = speed; }
    /// A seek to where playback is, which takes over the speed.
    void wishSeekOnTheSpot(bool wished = true) { m_isWishedOnTheSpot = wished; }
    /// A pipeline begins at normal speed.
    void adoptSpeed() { m_isWishedOnTheSpot |= m_speed != 1.0; }

    double speed() const { return m_speed; }
    bool isSeeking() const { return m_inFlight.has_value(); }
    bool isAtRest() const { return !m_inFlight && !m_wished; }
    /// On the way to a position, that position.
    std::optional<qint64> destination() const { return m_wished ? m_wished : m_inFlight; }

    /// Whether a seek is to be made now.
    bool isDue() const { return !m_inFlight && (m_wished || m_isWishedOnTheSpot); }
    /// The one that was due is being made; none is any more.
    void begin(qint64 position);
    /// It is done, or was refused, or its pipeline is gone.
    void finish() { m_inFlight.reset(); }

private:
    double m_speed = 1.0;
    std::optional<qint64> m_wished; ///< the newest, and not yet sought
    std::optional<qint64> m_inFlight;
    bool m_isWishedOnTheSpot = false;
};
