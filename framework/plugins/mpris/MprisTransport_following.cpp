// SPDX-License-Identifier: MIT
#include "MprisTransport.h"
#include "RemoteUrl.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
// All in milliseconds. How often to look at what may be changing.
constexpr int SlowLook = 200;
constexpr int LossLook = 50;
/// A player may say for so long that it still plays what was stopped.
constexpr qint64 StoppingTime = 1000;
constexpr int Looks = 4;
/// For so long a player may still tell where it was before a seek.
constexpr qint64 SeekingTime = 3000;
/// So much later comes what a player has to say of a position that is lost: that it was a seek, or the end.
constexpr qint64 LossTime = 300;
// Seconds.
constexpr double NearEnd = 1.5;
constexpr double ReadAhead = 3;
constexpr double NearStart = 0.5;
/// Past its end for so long and still without a position, it has ended.
constexpr double Overdue = 2;
/// Some tell of the position once a second only, and begin a little later than they say.
constexpr double Lag = 1.5;
constexpr double SeekTolerance = 1.5;
} // namespace

void MprisTransport::take(const MprisSnapshot &now)
{
    // First: whoever hears of what follows may give the player the next item.
    m_previous = std::exchange(m_last, now);
    const MprisSnapshot before = m_previous;
    takeCommon(now);
    switch (m_phase) {
    case Phase::Opening:
        takeOpening(now);
        break;
    case Phase::Following:
        takeFollowing(now);
        break;
    case Phase::Idle:
        takeIdle(now);
        break;
    }
    if (before.canSeek != now.canSeek || before.canPause != now.canPause
        || before.canControl != now.canControl || before.volume.has_value() != now.volume.has_value())
        Q_EMIT abilitiesChanged();
}

void MprisTransport::takeCommon(const MprisSnapshot &now)
{
    m_tellsOfEmptiness = m_tellsOfEmptiness || now.isEmptied;
    if (now.volume && !m_settingVolume && (*now.volume != m_volume || m_volumeAwaited)) {
        m_volume = *now.volume;
        m_volumeAwaited = false;
        Q_EMIT volumeReported(m_volume);
    }
    if (now.rate && (*now.rate != m_rate || m_rateAwaited)) {
        m_rate = *now.rate;
        m_rateAwaited = false;
        m_position.setRate(m_rate);
        Q_EMIT rateReported(m_rate);
    }
}

/// Whether the position has moved on since the last look, which says more than what a player says about itself.
bool MprisTransport::hasAdvanced(const MprisSnapshot &now) const
{
    return now.position && m_previous.position && now.track.isSameAs(m_previous.track)
        && *now.position > *m_previous.position;
}

void MprisTransport::enter(KelvoRenderer::State state)
{
    m_position.setRunning(state == KelvoRenderer::Playing);
    if (std::exchange(m_state, state) != state)
        Q_EMIT stateReported(m_epoch, state);
}

void MprisTransport::takeFollowing(const MprisSnapshot &now)
{
    auto state = now.state;
    if (state != KelvoRenderer::Stopped)
        m_trustsPosition = false;
    else if (m_trustsPosition && now.track.isPresent())
        state = KelvoRenderer::Playing;
    const bool isOther = now.track.isPresent() && m_track.isPresent() && !now.track.isSameAs(m_track);
    if (state == KelvoRenderer::Stopped || (m_epoch != 0 && isBackAtRest(now))) {
        takeEnd(now);
    } else if (isOther && m_epoch != 0 && isHandOver()) {
        m_position.moveTo(m_duration);
        takeEnd(now); // The player goes on with a list of its own.
    } else if (isOther) {
        takeReplacement(now);
    } else if (m_epoch != 0 && now.position && isLoss(*now.position)) {
        takeLoss(now);
    } else {
        m_sinceLoss.invalidate();
        enter(state);
        tellFacts(now);
    }
}

bool MprisTransport::isAtEnd() const
{
    return m_duration > 0 && m_position.now() >= m_duration - NearEnd;
}

/// Whether another track follows ours. Some tell of it as soon as they have read all of ours.
bool MprisTransport::isHandOver() const
{
    return m_duration > 0 && m_position.now() >= m_duration - ReadAhead;
}

/// Whether that second may say nothing of where the item is: back at the start without a seek of ours. Some players
/// lose the position when they have read all of the item, some when it ends, before they tell of the end; and some call
/// that a seek.
bool MprisTransport::isLoss(double seconds) const
{
    const bool seeks = m_sinceSeek.isValid() && m_sinceSeek.elapsed() < SeekingTime;
    const bool isBack = seconds < std::min(m_toldPosition, NearStart);
    return m_state == KelvoRenderer::Playing && m_duration > 0 && !seeks && isBack
        && m_position.now() >= m_duration / 2;
}

/// Whether it came to rest at the start after its end.
bool MprisTransport::isBackAtRest(const MprisSnapshot &now) const
{
    return now.state == KelvoRenderer::Paused && m_sinceLoss.isValid() && isAtEnd()
        && now.position.value_or(0) < NearStart;
}

void MprisTransport::notePositionLost(double seconds, bool isSeek)
{
    if (!m_sinceLoss.isValid()) {
        m_sinceLoss.start();
        m_lostAt = seconds;
        m_lostBySeek = false;
    }
    m_lostBySeek = m_lostBySeek || isSeek;
    refreshIn(LossLook);
}

/// Until the player tells of the end or plays on, time goes on. Playing on from the start, it repeats the item, or
/// somebody has sent it there.
void MprisTransport::takeLoss(const MprisSnapshot &now)
{
    notePositionLost(*now.position, false);
    const bool playsOn = *now.position > m_lostAt && m_sinceLoss.elapsed() >= LossTime;
    if ((playsOn && isAtEnd() && !m_lostBySeek) || m_position.now() > m_duration + Overdue) {
        takeEnd(now);
    } else if (playsOn) {
        m_sinceLoss.invalidate();
        tellFacts(now);
    } else {
        Q_EMIT positionReported(m_epoch, m_position.now());
    }
}

/// By itself, when it was where its end is; of what has no known end it is taken to be one.
void MprisTransport::takeEnd(const MprisSnapshot &now)
{
    m_phase = Phase::Idle;
    m_trustsPosition = false;
    m_looks = 0;
    m_state = KelvoRenderer::Stopped;
    const bool ends = m_duration <= 0 || isAtEnd();
    m_position.setRunning(false);
    if (m_epoch == 0 || !ends) {
        Q_EMIT stateReported(m_epoch, KelvoRenderer::Stopped);
        return;
    }
    // What the player has gone on with is stopped or replaced like ours.
    if (now.track.isPresent())
        m_track = now.track;
    // It has been read although the player told of no position.
    if (m_isFactChanged)
        Q_EMIT positionReported(m_epoch, m_position.now());
    Q_EMIT ended(std::exchange(m_epoch, 0));
}

void MprisTransport::takeIdle(const MprisSnapshot &now)
{
    const bool playsSilently
        = now.state == KelvoRenderer::Stopped && now.track.isPresent() && hasAdvanced(now);
    // After their end some come to rest in what they had first.
    const bool rests = now.state == KelvoRenderer::Paused && m_epoch == 0 && m_sinceUnload.isValid();
    const bool plays = (now.state != KelvoRenderer::Stopped && !rests) || playsSilently;
    const bool stillStopping = m_sinceUnload.isValid() && m_sinceUnload.elapsed() < StoppingTime
        && (now.track.isSameAs(m_track) || !now.track.isPresent());
    if (!plays || stillStopping) {
        // Whether something plays shows at the next look.
        if (stillStopping && plays)
            refreshIn(SlowLook);
        else if (now.track.isPresent() && m_looks++ < Looks)
            refreshIn(SlowLook);
        return;
    }
    m_trustsPosition = playsSilently;
    if (m_epoch == 0 || !now.track.isSameAs(m_track)) {
        takeReplacement(now);
        return;
    }
    // Ours, started again by somebody else.
    m_phase = Phase::Following;
    enter(playsSilently ? KelvoRenderer::Playing : now.state);
    tellFacts(now);
}

void MprisTransport::takeReplacement(const MprisSnapshot &now)
{
    m_phase = Phase::Following;
    m_epoch = 0;
    m_track = now.track;
    m_duration = -1;
    m_told.clear();
    m_titleAskedFor.clear();
    m_looks = 0;
    Q_EMIT replaced(KelvoMediaInfo({}, now.track.url, now.track.title));
    m_state = KelvoRenderer::Transitioning;
    enter(m_trustsPosition ? KelvoRenderer::Playing : now.state);
    tellFacts(now);
}

void MprisTransport::tellFacts(const MprisSnapshot &now)
{
    if (!now.track.id.isEmpty())
        m_track.id = now.track.id;
    if (now.track.length != m_duration && now.track.length > 0) {
        m_duration = now.track.length;
        Q_EMIT durationReported(m_epoch, m_duration);
    }
    if (now.position)
        takePosition(*now.position);
    tell("title", now.track.title);
    tell("artist", now.track.artist);
    tell("album", now.track.album);
    tell("genre", now.track.genre);
    const QUrl cover(now.track.cover);
    if (RemoteUrl::isWeb(cover) || cover.isLocalFile())
        tell("cover", now.track.cover);
    if (now.track.title.isEmpty())
        askTitle();
}

void MprisTransport::takePosition(double seconds)
{
    const bool hasArrived = std::abs(seconds - m_position.now()) <= SeekTolerance;
    if (hasArrived || (m_sinceSeek.isValid() && m_sinceSeek.elapsed() >= SeekingTime))
        m_sinceSeek.invalidate();
    const bool seeks = m_sinceSeek.isValid();
    if (!seeks && isNews(seconds))
        m_position.moveTo(seconds);
    if (!seeks && seconds > 0)
        m_toldPosition = seconds;
    Q_EMIT positionReported(m_epoch, seconds);
}

/// For the judgement of ends, the time that has passed counts for more than what may be said late.
bool MprisTransport::isNews(double seconds) const
{
    const double lag = m_position.now() - seconds;
    return m_state != KelvoRenderer::Playing || (seconds > 0 && (lag < 0 || lag > Lag));
}

void MprisTransport::tell(const char *key, const QString &text)
{
    const QString name = QString::fromLatin1(key);
    if (text.isEmpty() || m_told.value(name) == text)
        return;
    m_isFactChanged = m_isFactChanged || m_told.contains(name);
    m_told.insert(name, text);
    Q_EMIT fact(m_epoch, name, {text});
}
