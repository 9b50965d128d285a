// SPDX-License-Identifier: MIT
#include "RemoteProgress.h"

#include "RemoteTransport.h"

#include <algorithm>
#include <utility>

namespace {
// All in milliseconds.
constexpr qint64 pollInterval = 1000;
/// How long after a question the next one is expected.
constexpr qint64 interest = 3000;
/// Before the end, when it is good to know the position.
constexpr qint64 nearEnd = 3000;
/// What was said earlier than this is asked for again before it is told on.
constexpr qint64 freshness = 1500;
/// How long an answer waits for the player.
constexpr int patience = 1000;
/// Longer ones are as good as none.
constexpr double longestTimer = 1e9;

bool isWithin(const QElapsedTimer &timer, qint64 milliseconds)
{
    return timer.isValid() && timer.elapsed() < milliseconds;
}
} // namespace

RemoteProgress::RemoteProgress(RemoteTransport &transport, Pause pause)
    : m_transport(transport)
    , m_pause(std::move(pause))
{
    transport.setProgress(&m_item);
    for (QTimer *timer : {&m_pollTimer, &m_waiting.timer}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    connect(&m_pollTimer, &QTimer::timeout, this, &RemoteProgress::ask);
    connect(&m_pausePoint, &RemotePausePoint::due, this, [this] { follow(m_pausePoint.lookAgain(m_item)); });
    connect(&m_waiting.timer, &QTimer::timeout, this, &RemoteProgress::answerWaiting);
}

void RemoteProgress::begin(bool isAlive)
{
    m_motion = Motion::None;
    m_life.begin(isAlive);
    m_item.begin();
    m_earlySeek.end();
    m_pausePoint.takePaused();
    m_known = false;
    move();
    answerWaiting();
}

void RemoteProgress::setMotion(Motion motion)
{
    // Where exactly it paused, the player knows.
    if (motion == Motion::Paused && !isPaused()) {
        m_known = false;
        if (const std::optional<uint> second = m_pausePoint.takePaused())
            m_item.holdAt(*second);
    }
    m_motion = motion;
    m_item.setRunning(motion == Motion::Playing || motion == Motion::Pausing);
    if (motion == Motion::Playing)
        m_life.notePlaying();
    else if (motion == Motion::Waiting || motion == Motion::Pausing)
        m_life.noteFallingBack();
    move();
}

void RemoteProgress::setRate(double rate)
{
    if (rate == m_item.rate())
        return;
    m_pausePoint.rest();
    m_item.setRate(rate);
    move();
}

void RemoteProgress::beginSeek(double seconds)
{
    if (m_life.hasBegun())
        m_earlySeek.begin(seconds, m_life.age());
    aimFor(seconds);
}

void RemoteProgress::giveUpSeek()
{
    m_earlySeek.end();
    m_item.giveUpSeek();
}

void RemoteProgress::aimFor(double seconds)
{
    m_pausePoint.takePaused();
    m_pausePoint.rest();
    m_item.seekTo(seconds);
    m_known = true;
    m_lastReport.start();
    move();
}

void RemoteProgress::takePosition(double seconds)
{
    if (m_motion == Motion::None)
        return;
    m_life.notePosition(seconds);
    const double expected = now();
    const SeekInFlight &seek = m_item.seek();
    const bool isSettled = !seek.isUnderWay(isPaused()) && !seek.isSettling();
    if (!m_item.take(seconds, isPaused()))
        return;
    if (isSettled)
        seekAgainIfLost(seconds, expected);
    m_known = true;
    m_lastReport.start();
    move();
    answerWaiting();
}

void RemoteProgress::seekAgainIfLost(double told, double expected)
{
    const std::optional<double> target = m_earlySeek.takeLost(told, expected, m_life.age());
    if (!target)
        return;
    m_transport.seek(*target);
    aimFor(*target);
}

void RemoteProgress::takeSeek(double seconds, int settling)
{
    takePosition(seconds);
    m_item.confirmSeek(seconds, settling);
}

bool RemoteProgress::takeDuration(double seconds)
{
    if (seconds == duration())
        return false;
    m_item.setDuration(seconds);
    m_life.noteDuration(seconds);
    schedulePoll();
    return true;
}

void RemoteProgress::setPauseAt(std::optional<uint> seconds)
{
    m_pausePoint.set(seconds);
    move();
}

/// The position or the way it moves changed.
void RemoteProgress::move()
{
    if (!isInPlay()) {
        m_pausePoint.rest();
        schedulePoll();
    } else if (!follow(m_pausePoint.look(m_item, isPaused()))) {
        schedulePoll();
    }
}

/// Pauses when the position is at or past the point of pauseAt(). A point that is passed while already paused has done its
/// duty too.
bool RemoteProgress::follow(RemotePausePoint::Step step)
{
    if (step == RemotePausePoint::Step::Ask)
        ask();
    if (step != RemotePausePoint::Step::Pause)
        return false;
    const bool isSent = !isPaused() && m_pause();
    if (!isSent)
        m_pausePoint.takePaused();
    return isSent || isPaused();
}

void RemoteProgress::ask()
{
    m_pollTimer.stop();
    if (!isInPlay())
        return;
    m_lastPoll.start();
    m_transport.askPosition();
    schedulePoll();
}

void RemoteProgress::makeSure()
{
    if (!m_known)
        ask();
}

void RemoteProgress::answer(Engine::PositionAnswer answer)
{
    m_lastAsked.start();
    if (m_motion == Motion::None) {
        tellLater(answer, 0);
        return;
    }
    if (isPositionKnown()) {
        schedulePoll();
        tellLater(answer, duration() > 0 ? std::min(now(), duration()) : now());
        return;
    }
    m_waiting.answers.append(std::move(answer));
    if (!m_waiting.timer.isActive()) {
        m_waiting.timer.start(patience);
        if (!isWithin(m_lastPoll, pollInterval))
            ask();
    }
}

void RemoteProgress::answerWaiting()
{
    m_waiting.timer.stop();
    const double position = m_motion == Motion::None ? 0 : now();
    const auto answers = std::exchange(m_waiting.answers, {});
    for (const auto &answer : answers)
        tellLater(answer, position);
}

void RemoteProgress::tellLater(const Engine::PositionAnswer &answer, double seconds)
{
    QMetaObject::invokeMethod(
        this, [answer, seconds] { answer(seconds); }, Qt::QueuedConnection);
}

bool RemoteProgress::isPositionKnown() const
{
    return m_known && (isPaused() || isWithin(m_lastReport, freshness));
}

bool RemoteProgress::isPositionWanted() const
{
    return isWithin(m_lastAsked, interest) || m_pausePoint.isSet() || m_earlySeek.isWatched()
        || (duration() > 0 && 1000 * (duration() - now()) <= nearEnd);
}

void RemoteProgress::schedulePoll()
{
    if (const std::optional<qint64> time = timeToPoll())
        m_pollTimer.start(int(std::max<qint64>(0, *time)));
    else
        m_pollTimer.stop();
}

/// Milliseconds until the player is to be asked; none: there is no need.
std::optional<qint64> RemoteProgress::timeToPoll() const
{
    if (isPaused() && m_item.seek().isUnderWay(true))
        return m_item.seek().settleTime();
    if (m_motion != Motion::Playing)
        return std::nullopt;
    const qint64 sincePoll = m_lastPoll.isValid() ? m_lastPoll.elapsed() : pollInterval;
    if (isPositionWanted())
        return pollInterval - sincePoll;
    if (m_life.isUnknown())
        return pollInterval - std::min(sincePoll, m_life.age());
    if (duration() > 0 && m_item.rate() > 0) {
        const double left = 1000 * (duration() - now()) - nearEnd;
        return qint64(std::min(longestTimer, left / m_item.rate() + 1));
    }
    return std::nullopt;
}
