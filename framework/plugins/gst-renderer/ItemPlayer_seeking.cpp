// SPDX-License-Identifier: MIT
#include "ItemPlayer.h"
#include "Mailbox.h"
#include "PauseClock.h"
#include "Playbin.h"

#include <algorithm>

namespace {
constexpr qint64 second = GST_SECOND;
// Media are made of frames of some milliseconds: a position this close to a second counts as that second.
constexpr qint64 tolerance = 10 * GST_MSECOND;
constexpr qint64 pauseMargin = GST_MSECOND; // so that the position reported after the pause is not before it
} // namespace

/// Nanoseconds; on the way to a position, that position.
qint64 ItemPlayer::position() const
{
    if (m_seekWanted)
        return *m_seekWanted;
    if (m_seekInFlight)
        return *m_seekInFlight;
    const bool known = m_phase == Phase::Loaded || m_phase == Phase::Ended;
    return known && m_pipeline ? m_pipeline->position().value_or(0) : 0;
}

void ItemPlayer::noteProgress()
{
    m_noted = position();
    m_notedAt = m_time.elapsed();
}

/// How far playback can have come at its end. The position that is reported then is of no use: some formats
/// jump to the announced duration, however early their data ends.
qint64 ItemPlayer::reachedPosition() const
{
    const double since = double(m_time.elapsed() - m_notedAt) * GST_MSECOND;
    return std::min(position(), m_noted + qint64(since * m_speed));
}

void ItemPlayer::answerPosition(const KelvoAnswer &answer)
{
    answer.deliver({uint((position() + tolerance) / second)});
}

void ItemPlayer::answerExactPosition(const KelvoAnswer &answer)
{
    answer.deliver({QString(KelvoRenderer::PropertyPosition), double(position()) / second});
}

void ItemPlayer::seek(int seconds, bool relative)
{
    if (m_phase == Phase::Loading)
        m_seekWanted = std::max<qint64>(0, (relative ? position() : 0) + seconds * second);
    else if (m_phase == Phase::Loaded && !m_pipeline->isSeekable())
        Q_EMIT troubled(m_item.epoch, KelvoError::NotSeekable, m_item.uri.toDisplayString());
    else if (m_phase == Phase::Loaded)
        seekTo((relative ? position() : 0) + seconds * second);
}

void ItemPlayer::seekTo(qint64 target)
{
    const std::optional<qint64> duration = m_pipeline->duration();
    const qint64 clamped = std::clamp<qint64>(target, 0, duration.value_or(std::max<qint64>(target, 0)));
    const bool atEnd = duration && clamped >= *duration;
    if (atEnd && !(m_pauseAt && *m_pauseAt <= clamped)) {
        endItem(true);
        return;
    }
    m_seekWanted = clamped;
    issueSeek();
}

void ItemPlayer::setSpeed(double speed)
{
    if (m_phase == Phase::Loaded && !m_pipeline->isSeekable()) {
        Q_EMIT troubled(m_item.epoch, KelvoError::NotSeekable, QStringLiteral("the speed cannot be changed"));
        Q_EMIT speedChanged(m_item.epoch, m_speed);
        return;
    }
    m_speed = speed;
    Q_EMIT speedChanged(m_item.epoch, speed);
    m_rateWanted = m_phase == Phase::Loaded;
    issueSeek();
}

/// One seek at a time: a pipeline that is flooded with seeks shows nothing until the last is done. Of those
/// asked for in the meantime only the newest is carried out.
void ItemPlayer::issueSeek()
{
    if (m_phase != Phase::Loaded || m_seekInFlight || (!m_seekWanted && !m_rateWanted))
        return;
    const qint64 target = position();
    m_seekWanted.reset();
    m_rateWanted = false;
    m_pauseClock->disarm();
    if (m_pipeline->seek(target, m_speed)) {
        m_seekInFlight = target;
        m_stallWatch.restart(m_time.elapsed());
    } else {
        Q_EMIT troubled(m_item.epoch, KelvoError::NotSeekable, m_item.uri.toDisplayString());
    }
}

void ItemPlayer::seekDone()
{
    m_seekInFlight.reset();
    noteProgress();
    issueSeek();
    checkPauseAt();
    takeDueFrame();
}

void ItemPlayer::setPauseAt(uint seconds)
{
    m_pauseAt = seconds * second;
    checkPauseAt();
}

void ItemPlayer::dropPauseAt()
{
    m_pauseAt.reset();
    m_pauseClock->disarm();
}

/// Pauses at or past the point asked for; before it, has the pipeline's clock tell when it is reached.
void ItemPlayer::checkPauseAt()
{
    m_pauseClock->disarm();
    if (!m_pauseAt || m_phase != Phase::Loaded || m_seekInFlight)
        return;
    const qint64 left = *m_pauseAt - position();
    if (left <= 0) {
        m_pauseAt.reset();
        m_wantPlaying = false;
        Q_EMIT pausedAtPosition(m_item.epoch);
        applyState();
    } else if (m_pipelinePlaying && m_playingAsked && m_speed > 0) {
        m_pauseClock->arm(
            m_pipeline->element(), qint64(double(left) / m_speed) + pauseMargin, [this] { checkPauseAt(); });
    }
}

/// Playing backwards has come to the beginning, where it goes on forwards at normal speed.
void ItemPlayer::backAtStart()
{
    m_speed = 1.0;
    Q_EMIT speedChanged(m_item.epoch, m_speed);
    m_seekWanted = 0;
    issueSeek();
}
