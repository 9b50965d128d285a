// SPDX-License-Identifier: MIT
#include "PlayPosition.h"

#include "LastingPipeline.h"
#include "PlayState.h"
#include "Playbin.h"

#include <algorithm>

namespace {
constexpr qint64 pauseMargin = GST_MSECOND; // so that the position reported after the pause is not before it
} // namespace

PlayPosition::PlayPosition(const PlayState &state, const LastingPipeline &pipeline,
    std::shared_ptr<Mailbox> mailbox, QObject *parent)
    : QObject(parent)
    , m_state(state)
    , m_pipeline(pipeline)
    , m_pauseClock(std::move(mailbox))
{
    m_time.start();
}

void PlayPosition::beginItem(double speed)
{
    m_wishes.beginItem(speed);
}

void PlayPosition::forgetItem()
{
    stopClock();
    m_wishes.forgetItem();
}

void PlayPosition::begin()
{
    note();
    m_wishes.adoptSpeed();
    if (const std::optional<qint64> wish = m_wishes.takeWish())
        seekTo(*wish);
    else
        issueSeek();
}

qint64 PlayPosition::leavePipeline()
{
    const qint64 here = current();
    stopClock();
    m_wishes.finish();
    return here;
}

void PlayPosition::resumeAt(qint64 position)
{
    if (position > 0)
        m_wishes.wish(position);
}

qint64 PlayPosition::current() const
{
    if (const std::optional<qint64> destination = m_wishes.destination())
        return *destination;
    const bool known = m_state.isLoaded() || m_state.phase() == PlayState::Phase::Ended;
    return known && m_pipeline ? m_pipeline->position().value_or(0) : 0;
}

qint64 PlayPosition::note()
{
    const qint64 position = current();
    m_note.take(position, m_time.elapsed());
    return position;
}

qint64 PlayPosition::reachable() const
{
    return m_note.reachable(current(), m_time.elapsed(), m_wishes.speed());
}

void PlayPosition::seek(int seconds, bool relative)
{
    const qint64 target = (relative ? current() : 0) + seconds * qint64(GST_SECOND);
    if (m_state.isLoading())
        m_wishes.wish(std::max<qint64>(0, target));
    else if (m_state.isLoaded() && !m_pipeline->isSeekable())
        Q_EMIT seekRefused();
    else if (m_state.isLoaded())
        seekTo(target);
}

void PlayPosition::seekTo(qint64 target)
{
    const std::optional<qint64> duration = m_pipeline->duration();
    const qint64 clamped = std::clamp<qint64>(target, 0, duration.value_or(std::max<qint64>(target, 0)));
    const bool atEnd = duration && clamped >= *duration;
    if (atEnd && !m_pausePoint.isWithin(clamped)) {
        Q_EMIT endReached();
        return;
    }
    m_wishes.wish(clamped);
    issueSeek();
}

void PlayPosition::seekOnTheSpot()
{
    m_wishes.wishSeekOnTheSpot();
    issueSeek();
}

void PlayPosition::setSpeed(double speed)
{
    if (m_state.isLoaded() && !m_pipeline->isSeekable()) {
        Q_EMIT speedRefused();
        Q_EMIT speedChanged(m_wishes.speed());
        return;
    }
    m_wishes.setSpeed(speed);
    Q_EMIT speedChanged(speed);
    m_wishes.wishSeekOnTheSpot(m_state.isLoaded());
    issueSeek();
}

void PlayPosition::turnAround()
{
    m_wishes.setSpeed(1.0);
    Q_EMIT speedChanged(1.0);
    m_wishes.wish(0);
    issueSeek();
}

void PlayPosition::issueSeek()
{
    if (!m_state.isLoaded() || !m_wishes.isDue())
        return;
    const qint64 target = current();
    m_wishes.begin(target);
    stopClock();
    if (m_pipeline->seek(target, m_wishes.speed())) {
        Q_EMIT seekBegun();
    } else {
        m_wishes.finish();
        Q_EMIT seekRefused();
    }
}

void PlayPosition::seekDone()
{
    m_wishes.finish();
    note();
    issueSeek();
    checkPausePoint();
}

void PlayPosition::setPauseAt(qint64 position)
{
    m_pausePoint.set(position);
    checkPausePoint();
}

void PlayPosition::dropPauseAt()
{
    m_pausePoint.drop();
    stopClock();
}

void PlayPosition::checkPausePoint()
{
    stopClock();
    if (!m_pausePoint.isSet() || !m_state.isLoaded() || m_wishes.isSeeking())
        return;
    const qint64 position = current();
    if (m_pausePoint.takeReached(position)) {
        Q_EMIT pausePointReached();
        return;
    }
    const std::optional<qint64> ahead = m_pausePoint.timeFrom(position, m_wishes.speed());
    if (ahead && m_state.goesOn())
        m_pauseClock.arm(m_pipeline->element(), *ahead + pauseMargin, [this] { checkPausePoint(); });
}
