// SPDX-License-Identifier: MIT
#include "MprisTransport.h"
#include "RemoteUrl.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
// All in milliseconds. How often to look at what may be changing.
constexpr int SlowLook = 200;
constexpr int FallLook = 50;
/// A player may say for so long that it still plays what was stopped.
constexpr qint64 StoppingTime = 1000;
constexpr int Looks = 4;
/// For so long a player may still tell where it was before a seek.
constexpr qint64 SeekingTime = 3000;
/// So much later comes what a player has to say when its position falls back from the end: that it was a seek, or that
/// it has stopped.
constexpr qint64 FallTime = 300;
constexpr qint64 FallMemory = 1000;
// Seconds.
constexpr double NearEnd = 1.5;
constexpr double NearStart = 0.5;
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
    const bool isBackAtRest
        = state == KelvoRenderer::Paused && hasJustFallen() && now.position.value_or(0) < NearStart;
    if (state == KelvoRenderer::Stopped || (m_epoch != 0 && isBackAtRest)) {
        takeEnd(now);
    } else if (isOther && m_epoch != 0 && (isAtEnd() || hasJustFallen())) {
        takeEnd(now); // The player goes on with a list of its own.
    } else if (isOther) {
        takeReplacement(now);
    } else if (m_epoch != 0 && now.position && isFall(*now.position)) {
        takeFall(now);
    } else {
        enter(state);
        tellFacts(now);
    }
}

bool MprisTransport::isAtEnd() const
{
    return m_duration > 0 && m_position.now() >= m_duration - NearEnd;
}

/// Whether that second is one that only an end leads to: back from the end without a seek of ours.
bool MprisTransport::isFall(double seconds) const
{
    const bool seeks = m_sinceSeek.isValid() && m_sinceSeek.elapsed() < SeekingTime;
    const bool isBack = seconds < std::min(m_toldPosition, m_duration / 2);
    return m_state == KelvoRenderer::Playing && !seeks && isBack && isAtEnd()
        && m_position.now() >= m_duration / 2;
}

bool MprisTransport::hasJustFallen() const
{
    return m_sinceFall.isValid() && m_sinceFall.elapsed() < FallMemory;
}

/// The end comes with it or after it, unless somebody tells of a seek. A player that plays on repeats the item.
void MprisTransport::takeFall(const MprisSnapshot &now)
{
    if (!hasJustFallen())
        m_sinceFall.start();
    if (m_sinceFall.elapsed() >= FallTime)
        takeEnd(now);
    else
        refreshIn(FallLook);
}

/// By itself, when it was where its end is; of what has no known end it is taken to be one.
void MprisTransport::takeEnd(const MprisSnapshot &now)
{
    m_phase = Phase::Idle;
    m_trustsPosition = false;
    m_looks = 0;
    m_state = KelvoRenderer::Stopped;
    const bool ends = m_duration <= 0 || isAtEnd() || hasJustFallen();
    m_position.setRunning(false);
    if (m_epoch == 0 || !ends) {
        Q_EMIT stateReported(m_epoch, KelvoRenderer::Stopped);
        return;
    }
    // What the player has gone on with is stopped or replaced like ours.
    if (now.track.isPresent())
        m_track = now.track;
    Q_EMIT ended(std::exchange(m_epoch, 0));
}

void MprisTransport::takeIdle(const MprisSnapshot &now)
{
    const bool playsSilently
        = now.state == KelvoRenderer::Stopped && now.track.isPresent() && hasAdvanced(now);
    // Where it came to rest after its end.
    const bool rests = now.state == KelvoRenderer::Paused && m_epoch == 0 && m_sinceUnload.isValid()
        && now.track.isSameAs(m_track);
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
    if (!m_sinceSeek.isValid()) {
        m_position.moveTo(seconds);
        m_toldPosition = seconds;
    }
    Q_EMIT positionReported(m_epoch, seconds);
}

void MprisTransport::tell(const char *key, const QString &text)
{
    const QString name = QString::fromLatin1(key);
    if (text.isEmpty() || m_told.value(name) == text)
        return;
    m_told.insert(name, text);
    Q_EMIT fact(m_epoch, name, {text});
}
