// SPDX-License-Identifier: MIT
#include "RemoteRenderer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
// All in milliseconds.
constexpr qint64 PollInterval = 1000;
/// How long after a question the next one is expected.
constexpr qint64 Interest = 3000;
/// Before the end, when it is good to know the position.
constexpr qint64 NearEnd = 3000;
/// What was said earlier than this is asked for again before it is told on.
constexpr qint64 Freshness = 1500;
/// How long an answer waits for the player.
constexpr int Patience = 1000;
/// How long a player may still tell of the position before a seek; while it is paused there is no hurry to know better.
constexpr qint64 SeekTime = 700;
constexpr qint64 PausedSeekTime = 3000;
constexpr qint64 SettleInterval = 300;
/// A timer may run ahead of the player's clock, and a pause before its second has not reached it.
constexpr double Behind = 20;
/// Farther away from where a seek went, in seconds, is where it came from.
constexpr double SeekTolerance = 1.5;
constexpr double PieceOfMedia = 0.3;

bool isWithin(const QElapsedTimer &timer, qint64 milliseconds)
{
    return timer.isValid() && timer.elapsed() < milliseconds;
}
} // namespace

void RemoteRenderer::askPosition()
{
    m_pollTimer.stop();
    if (!m_loaded || (m_state != Playing && m_state != Paused))
        return;
    m_lastPoll.start();
    m_transport->askPosition();
    schedulePoll();
}

void RemoteRenderer::positionReported(quint64 epoch, double seconds)
{
    if (epoch != m_epoch || m_state == Stopped || !m_loaded)
        return;
    m_positionTold = true;
    m_moved = m_moved || seconds > 0;
    const bool isNear = std::abs(seconds - m_position.now()) <= SeekTolerance;
    if (isSeeking() && !isNear)
        return;
    m_seekArrived = m_seekArrived || isNear;
    // Players go to the beginning of the piece of media that holds the second.
    const bool atTarget = m_seekTarget && seconds < *m_seekTarget && *m_seekTarget - seconds < PieceOfMedia;
    m_position.moveTo(std::max(0.0, atTarget ? *m_seekTarget : seconds));
    // Right after a seek a player may be a little ahead at first and go back when it pauses.
    if (!atTarget && m_state == Playing && !isSeeking())
        m_seekTarget.reset();
    m_positionKnown = true;
    m_lastReport.start();
    positionMoved();
    answerWaiting();
}

void RemoteRenderer::durationReported(quint64 epoch, double seconds)
{
    if (epoch != m_epoch || seconds == m_duration)
        return;
    m_duration = seconds;
    if (seconds >= 0)
        takeFact(QStringLiteral("duration"), {int(std::lround(seconds))});
    schedulePoll();
}

/// Answers from the event loop, with the time that has passed since the player's last word added.
void RemoteRenderer::answerPosition(std::function<void(double)> answer)
{
    m_lastAsked.start();
    if (m_state == Stopped || !m_loaded) {
        later([answer] { answer(0); });
        return;
    }
    if (isPositionKnown()) {
        schedulePoll();
        const double limit = m_duration > 0 ? m_duration : m_position.now();
        later([answer, position = std::min(m_position.now(), limit)] { answer(position); });
        return;
    }
    m_waiting.append(std::move(answer));
    if (!m_answerTimer.isActive()) {
        m_answerTimer.start(Patience);
        if (!isWithin(m_lastPoll, PollInterval))
            askPosition();
    }
}

void RemoteRenderer::answerWaiting()
{
    m_answerTimer.stop();
    const double position = m_state == Stopped || !m_loaded ? 0 : m_position.now();
    const auto waiting = std::exchange(m_waiting, {});
    for (const auto &answer : waiting)
        later([answer, position] { answer(position); });
}

bool RemoteRenderer::isPositionKnown() const
{
    return m_positionKnown && (m_state == Paused || isWithin(m_lastReport, Freshness));
}

/// The position or the way it moves changed.
void RemoteRenderer::positionMoved()
{
    m_pauseTimer.stop();
    if (!checkPausePoint())
        schedulePoll();
}

/// Pauses when the position is at or past the point of pauseAt(), otherwise waits for it. A point that is passed
/// while already paused has done its duty too.
bool RemoteRenderer::checkPausePoint()
{
    if (!m_pauseAt || !m_loaded || (m_state != Playing && m_state != Paused))
        return false;
    const double wait = 1000 * (double(*m_pauseAt) - m_position.now());
    if (wait <= 0) {
        m_pauseAt.reset();
        pause();
        return m_pauseWanted;
    }
    if (m_state == Playing && m_position.isRunning() && m_position.rate() > 0 && wait < 1e9)
        m_pauseTimer.start(int(std::ceil(wait / m_position.rate() + Behind)));
    return false;
}

/// Whether the player may not yet have arrived where it was sent.
bool RemoteRenderer::isSeeking() const
{
    return isWithin(m_lastSeek, SeekTime)
        || (m_state == Paused && !m_seekArrived && isWithin(m_lastSeek, PausedSeekTime));
}

bool RemoteRenderer::isPositionWanted() const
{
    return isWithin(m_lastAsked, Interest) || m_pauseAt
        || (m_duration > 0 && 1000 * (m_duration - m_position.now()) <= NearEnd);
}

/// Asks the player at most once a second, while it plays and somebody needs to know.
void RemoteRenderer::schedulePoll()
{
    const bool settles = m_state == Paused && isSeeking();
    if (!m_loaded || (m_state != Playing && !settles)) {
        m_pollTimer.stop();
        return;
    }
    const qint64 sincePoll = m_lastPoll.isValid() ? m_lastPoll.elapsed() : PollInterval;
    if (settles)
        m_pollTimer.start(
            int(m_seekArrived ? SeekTime - m_lastSeek.elapsed() + 1
                              : std::min(SettleInterval, PausedSeekTime - m_lastSeek.elapsed() + 1)));
    else if (isPositionWanted())
        m_pollTimer.start(int(std::max<qint64>(0, PollInterval - sincePoll)));
    else if (isLifeUnknown())
        m_pollTimer.start(
            int(std::max<qint64>(0, PollInterval - std::min(sincePoll, m_playingSince.elapsed()))));
    else if (m_duration > 0 && m_position.rate() > 0)
        m_pollTimer.start(
            int(std::min(1e9, (1000 * (m_duration - m_position.now()) - NearEnd) / m_position.rate() + 1)));
    else
        m_pollTimer.stop();
}
