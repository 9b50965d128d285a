// SPDX-License-Identifier: MIT
#include "MprisTransport.h"
#include "RemoteUrl.h"

#include <cmath>

namespace {
// All in milliseconds. How often to look while an item is on its way, at first and later.
constexpr int QuickLook = 25;
constexpr int SlowLook = 200;
constexpr qint64 QuickTime = 1500;
/// What a player that says it plays has not shown by then, it does not show at all.
constexpr qint64 BenefitOfDoubt = 1500;
/// Without any track for so long after it took the item, the player does not play it.
constexpr qint64 AbsenceBefore = 600;
constexpr qint64 AbsenceAfter = 150; ///< once it had been there
constexpr qint64 OpeningTime = 20'000;
/// A player may say for so long that it still plays what was stopped.
constexpr qint64 StoppingTime = 1000;
constexpr int Looks = 4;
// Seconds.
constexpr double NearEnd = 1.5;
constexpr double Tolerance = 0.3;
} // namespace

void MprisTransport::take(const MprisSnapshot &now)
{
    const MprisSnapshot before = m_last;
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
    m_last = now;
    if (before.canSeek != now.canSeek || before.canPause != now.canPause
        || before.canControl != now.canControl || before.volume.has_value() != now.volume.has_value())
        Q_EMIT abilitiesChanged();
}

void MprisTransport::takeCommon(const MprisSnapshot &now)
{
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

bool MprisTransport::isOurs(const MprisTrack &track) const
{
    if (!track.url.isEmpty())
        return track.url.adjusted(QUrl::NormalizePathSegments)
            == m_item.info.url().adjusted(QUrl::NormalizePathSegments);
    // A player that does not name URLs: whatever it shows some time after it took ours.
    return track.isPresent() && m_sinceLoad.elapsed() > QuickTime / 3;
}

/// Whether the position has moved on since the last look, which says more than what a player says about itself.
bool MprisTransport::hasAdvanced(const MprisSnapshot &now) const
{
    return now.position && m_last.position && now.track.isSameAs(m_last.track)
        && *now.position > *m_last.position;
}

void MprisTransport::takeOpening(const MprisSnapshot &now)
{
    if (!m_accepted)
        return;
    const qint64 passed = m_sinceLoad.elapsed();
    refreshIn(passed < QuickTime ? QuickLook : SlowLook);
    const bool replacedUrl = passed > BenefitOfDoubt && now.track.url != m_before;
    if (isOurs(now.track) || (now.track.isPresent() && replacedUrl)) {
        // What has played for longer than ours can have is what played before.
        const bool fresh
            = !now.position || *now.position <= double(passed) / 1000 + Tolerance || passed > BenefitOfDoubt;
        m_sinceAbsence.invalidate();
        m_seen = m_seen || fresh;
        takeOpeningOurs(now, fresh);
    } else if (!now.track.isPresent()) {
        if (now.state == KelvoRenderer::Playing && passed > BenefitOfDoubt)
            begin(now, now.state); // It plays and says nothing of what.
        else
            takeAbsence();
    } else if (passed > OpeningTime) {
        takeAbsence();
    }
}

void MprisTransport::takeOpeningOurs(const MprisSnapshot &now, bool fresh)
{
    const bool late = m_sinceLoad.elapsed() > BenefitOfDoubt;
    const auto wanted = m_item.paused ? KelvoRenderer::Paused : KelvoRenderer::Playing;
    const bool plays = now.state == KelvoRenderer::Playing && (now.position.value_or(0) > 0 || late);
    const bool playsSilently = now.state == KelvoRenderer::Stopped && hasAdvanced(now);
    if (!fresh)
        return;
    if (now.state == KelvoRenderer::Paused && (m_item.paused || (m_nudged && late))) {
        begin(now, KelvoRenderer::Paused);
    } else if ((plays || playsSilently) && (!m_item.paused || late)) {
        m_trustsPosition = playsSilently;
        begin(now, KelvoRenderer::Playing);
    } else if (!m_nudged && (plays || playsSilently || now.state != wanted)) {
        // Some keep the pause of what played before, some do not start by themselves.
        m_nudged = true;
        command(m_item.paused ? QStringLiteral("Pause") : QStringLiteral("Play"), {}, [this] { refresh(); });
    } else if (m_sinceLoad.elapsed() > OpeningTime) {
        takeAbsence();
    }
}

/// The player has no track, or does not answer.
void MprisTransport::takeAbsence()
{
    if (!m_sinceAbsence.isValid())
        m_sinceAbsence.start();
    const QString where = QStringLiteral("%1: %2").arg(m_address.label, m_item.info.url().toDisplayString());
    if (m_accepted && m_sinceLoad.elapsed() > OpeningTime)
        fail(KelvoError::Timeout, QStringLiteral("%1 did not begin to play").arg(where));
    else if (m_accepted && m_sinceAbsence.elapsed() >= (m_seen ? AbsenceAfter : AbsenceBefore))
        fail(KelvoError::ReadFailed, QStringLiteral("%1 was given up without a reason").arg(where));
    else
        refreshIn(QuickLook);
}

void MprisTransport::fail(KelvoError::Code code, const QString &message)
{
    m_phase = Phase::Idle;
    m_sinceUnload.start();
    m_track = MprisTrack{{}, m_item.info.url(), {}, {}, {}, {}, {}, -1};
    Q_EMIT failed(std::exchange(m_epoch, 0), code, message);
}

void MprisTransport::begin(const MprisSnapshot &now, KelvoRenderer::State state)
{
    m_phase = Phase::Following;
    m_track = now.track;
    m_state = KelvoRenderer::Transitioning;
    enter(state);
    tellFacts(now);
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
    if (state == KelvoRenderer::Stopped) {
        takeEnd();
    } else if (now.track.isPresent() && m_track.isPresent() && !now.track.isSameAs(m_track)) {
        takeReplacement(now);
    } else {
        enter(state);
        tellFacts(now);
    }
}

/// By itself, when it was where its end is; of what has no known end it is taken to be one.
void MprisTransport::takeEnd()
{
    m_phase = Phase::Idle;
    m_trustsPosition = false;
    m_looks = 0;
    m_state = KelvoRenderer::Stopped;
    const bool atEnd = m_duration <= 0 || m_position.now() >= m_duration - NearEnd;
    m_position.setRunning(false);
    if (m_epoch != 0 && atEnd)
        Q_EMIT ended(std::exchange(m_epoch, 0));
    else
        Q_EMIT stateReported(m_epoch, KelvoRenderer::Stopped);
}

void MprisTransport::takeIdle(const MprisSnapshot &now)
{
    const bool playsSilently
        = now.state == KelvoRenderer::Stopped && now.track.isPresent() && hasAdvanced(now);
    const bool plays = now.state != KelvoRenderer::Stopped || playsSilently;
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
    if (now.position) {
        m_position.moveTo(*now.position);
        Q_EMIT positionReported(m_epoch, *now.position);
    }
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

void MprisTransport::tell(const char *key, const QString &text)
{
    const QString name = QString::fromLatin1(key);
    if (text.isEmpty() || m_told.value(name) == text)
        return;
    m_told.insert(name, text);
    Q_EMIT fact(m_epoch, name, {text});
}
