// SPDX-License-Identifier: MIT
#pragma once

#include "RemotePosition.h"
#include "SeekInFlight.h"

#include <cmath>
#include <optional>

/// How far the item in play has come: the one clock of a player, kept above its transport, which may read it to judge
/// what the player says. Seconds.
class ItemProgress
{
public:
    /// Another item or none; it stands at its beginning.
    void begin()
    {
        const double before = rate();
        *this = {};
        setRate(before);
    }
    void setRunning(bool running) { m_position.setRunning(running); }
    void setRate(double rate) { m_position.setRate(rate); }
    void setDuration(double seconds) { m_duration = seconds; }
    /// It has played for so long, whatever the player says of the position.
    void setPassed(double seconds) { m_ahead = seconds - now(); }
    /// The player was sent there.
    void seekTo(double seconds)
    {
        m_position.moveTo(seconds);
        m_seek.begin(seconds);
        m_told = seconds;
        m_ahead = 0;
        m_isSeeking = true;
    }
    /// What it was told last it has refused: if that was a seek, the next position is the first that can be known.
    void giveUpSeek()
    {
        m_isSeeking = m_isSeeking || m_seek.isRecent();
        m_seek.giveUp();
    }
    /// The player has taken a seek, and is there; `settling` as in RemoteTransport::seeked().
    void confirmSeek(double seconds, int settling)
    {
        setPassed(seconds);
        m_seek.settleFor(settling);
        m_told = seconds;
        m_isSeeking = false;
    }
    /// It was paused when it was there. What the player tells a little before that is the same place.
    void holdAt(double seconds)
    {
        if (now() < seconds)
            m_position.moveTo(seconds);
        m_seek.aimAt(seconds);
    }
    /// The player says that it is there. False: that is where it was before a seek.
    bool take(double seconds, bool isPaused)
    {
        const double expected = passed();
        const double lag = expected - seconds;
        m_isSeeking = isSeeking() && std::abs(lag) > SeekInFlight::Tolerance;
        if (!m_isSeeking && seconds > 0)
            m_told = seconds;
        const bool isLate = isRunning() && (seconds <= 0 || (lag >= 0 && lag <= Lag));
        const std::optional<double> settled = m_seek.settle(seconds, now(), isPaused);
        if (settled)
            m_position.moveTo(*settled);
        setPassed(m_isSeeking || isLate ? expected : seconds);
        return settled.has_value();
    }

    /// By what the player said last.
    double now() const { return m_position.now(); }
    /// By the time that has passed, which counts for more than what may be said late: for the judgement of ends.
    double passed() const { return now() + m_ahead; }
    /// Where the player said last that it is, or was sent. A 0 does not count: some say that when they have lost it.
    double told() const { return m_told; }
    double duration() const { return m_duration; } ///< below 0: not known
    double rate() const { return m_position.rate(); }
    bool isRunning() const { return m_position.isRunning(); }
    /// It was sent somewhere a moment ago, and has not been seen there yet.
    bool isSeeking() const { return m_isSeeking && m_seek.isRecent(); }
    /// The position is where it was sent: the player may tell another one without anything having happened.
    bool isAimed() const { return m_isSeeking || m_seek.isSettling(); }
    const SeekInFlight &seek() const { return m_seek; }

private:
    /// Some tell of the position once a second only, and begin a little later than they say.
    static constexpr double Lag = 1.5;

    RemotePosition m_position;
    SeekInFlight m_seek;
    double m_duration = -1;
    double m_told = 0;
    double m_ahead = 0; ///< of what the player said is the time that has passed
    bool m_isSeeking = false;
};
