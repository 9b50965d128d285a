// SPDX-License-Identifier: MIT
#include "MprisTransport.h"

#include <array>

namespace {
// All in milliseconds. How often to look while an item is on its way, at first and later.
constexpr int QuickLook = 25;
constexpr int LateLook = 200;
constexpr qint64 QuickTime = 1500;
/// What a player that says it plays has not shown by then, it does not show at all.
constexpr qint64 BenefitOfDoubt = 1500;
/// With nothing in it for so long after it took the item, the player does not play it.
constexpr qint64 EmptyBefore = 600;
constexpr qint64 AbsenceAfter = 150; ///< without any track, once ours had been there
/// Stopped for so long, the player has given our item up: with it, without any track after it had said that it plays,
/// and since it took the item if it never said so.
constexpr qint64 StopAfterTrying = 500;
constexpr qint64 EmptyAfterTrying = 1500;
constexpr qint64 StopWithoutTrying = 2500;
constexpr qint64 Silence = 400;
/// So long paused, it is to be paused.
constexpr qint64 PauseTime = 6000;
/// Between one nudge and the next, each longer than the one before: some begin anew with each.
constexpr std::array<qint64, 4> NudgePauses{250, 750, 2000, 4000};
constexpr int RefusedNudges = 3;
/// A player that says nothing definite may be waiting for a server.
constexpr qint64 OpeningTime = 10'000;
// Seconds.
constexpr double Tolerance = 0.3;
constexpr double ShortTime = 0.5;
} // namespace

bool MprisTransport::isOurs(const MprisTrack &track) const
{
    if (!track.url.isEmpty())
        return MprisTrack::isSameAddress(track.url, m_item.info.url());
    // A player that does not name URLs: whatever it shows some time after it took ours.
    return track.isPresent() && m_sinceLoad.elapsed() > QuickTime / 3;
}

/// What has played for longer than ours can have is what played before.
bool MprisTransport::isFresh(const MprisSnapshot &now) const
{
    const qint64 passed = m_sinceLoad.elapsed();
    return !now.position || *now.position <= double(passed) / 1000 + Tolerance || passed > BenefitOfDoubt;
}

void MprisTransport::takeOpening(const MprisSnapshot &now)
{
    if (!m_accepted)
        return;
    const qint64 passed = m_sinceLoad.elapsed();
    refreshIn(passed < QuickTime ? QuickLook : LateLook);
    const bool isNew = now.track.isPresent() && passed > BenefitOfDoubt
        && !MprisTrack::isSameAddress(now.track.url, m_before);
    if ((isOurs(now.track) || isNew) && isFresh(now))
        takeOpeningOurs(now);
    else if (!now.track.isPresent() && now.state == KelvoRenderer::Playing && passed > BenefitOfDoubt)
        begin(now, now.state); // It plays and says nothing of what.
    else
        takeAbsence(&now);
}

void MprisTransport::takeOpeningOurs(const MprisSnapshot &now)
{
    m_seen = true;
    m_tried = m_tried || now.state == KelvoRenderer::Playing;
    m_sinceAbsence.invalidate();
    noteRest(now);
    const bool late = m_sinceLoad.elapsed() > BenefitOfDoubt;
    const bool playsSilently = now.state == KelvoRenderer::Stopped && hasAdvanced(now);
    const bool plays
        = playsSilently || (now.state == KelvoRenderer::Playing && (now.position.value_or(0) > 0 || late));
    const bool staysPaused = m_item.paused || m_sinceRest.elapsed() >= PauseTime;
    if (now.state == KelvoRenderer::Paused && staysPaused) {
        begin(now, KelvoRenderer::Paused);
    } else if (plays && (!m_item.paused || late)) {
        m_trustsPosition = playsSilently;
        begin(now, KelvoRenderer::Playing);
    } else {
        takeOpeningRest(now);
    }
}

/// A player that was busy for a while has not been at rest.
void MprisTransport::noteRest(const MprisSnapshot &now)
{
    const std::pair rest(now.state, now.track.isPresent());
    const bool hasBeenSilent = m_sinceLook.isValid() && m_sinceLook.elapsed() > Silence;
    if (std::exchange(m_rest, rest) != rest || !m_sinceRest.isValid() || hasBeenSilent)
        m_sinceRest.start();
    m_sinceLook.start();
}

/// The player has our item and does not do what it should with it, or not yet.
void MprisTransport::takeOpeningRest(const MprisSnapshot &now)
{
    const bool isStopped = now.state == KelvoRenderer::Stopped;
    if (isStopped && hasPlayedAtOnce(now)) {
        begin(now, KelvoRenderer::Playing);
        m_position.moveTo(m_duration);
        takeEnd(now);
    } else if ((isStopped && hasGivenUp()) || m_sinceLoad.elapsed() > OpeningTime) {
        giveUp();
    } else {
        nudge(now);
    }
}

/// Whether it has been stopped with our item for long enough. One that says when nothing is left of it is waited for.
bool MprisTransport::hasGivenUp() const
{
    const bool late = m_tried || m_sinceLoad.elapsed() >= StopWithoutTrying;
    return !m_tellsOfEmptiness && late && m_sinceRest.elapsed() >= StopAfterTrying;
}

/// Whether it is so short that it was over between two looks.
bool MprisTransport::hasPlayedAtOnce(const MprisSnapshot &now) const
{
    const double length = now.track.length;
    return m_tried && length > 0 && length <= double(m_sinceLoad.elapsed()) / 1000 + ShortTime;
}

/// Some keep the pause of what played before, some do not start by themselves, and some take no command before they are
/// ready for it. What has stopped by itself is not tried for ever.
void MprisTransport::nudge(const MprisSnapshot &now)
{
    const auto wanted = m_item.paused ? KelvoRenderer::Paused : KelvoRenderer::Playing;
    const bool hasBeenTried = now.state == KelvoRenderer::Stopped && m_nudges > 0;
    const bool isEnough = hasBeenTried || m_nudges > NudgePauses.size();
    if (now.state == wanted || isEnough
        || (m_nudges > 0 && m_sinceNudge.elapsed() < NudgePauses.at(m_nudges - 1)))
        return;
    ++m_nudges;
    m_sinceNudge.start();
    command(
        m_item.paused ? QStringLiteral("Pause") : QStringLiteral("Play"), {},
        [this, epoch = m_epoch] {
            if (epoch == m_epoch)
                m_refusals = 0;
            refresh();
        },
        [this, epoch = m_epoch](KelvoError::Code, const QString &message) {
            if (epoch == m_epoch && m_phase == Phase::Opening)
                takeRefusal(message);
        });
}

/// Once, it may not be ready for the command; again and again, it cannot do it.
void MprisTransport::takeRefusal(const QString &message)
{
    if (++m_refusals < RefusedNudges)
        return;
    fail(KelvoError::ReadFailed, QStringLiteral("%1 (%2)").arg(m_item.info.url().toDisplayString(), message));
}

/// Whether a player without any track has said all that it will say of our item.
bool MprisTransport::isEmptyForGood(const MprisSnapshot &now) const
{
    const qint64 absent = m_sinceAbsence.elapsed();
    const bool hasTried = m_tried && now.state == KelvoRenderer::Stopped;
    return (m_seen && absent >= AbsenceAfter) || (now.isEmptied && absent >= EmptyBefore)
        || (hasTried && m_sinceRest.elapsed() >= EmptyAfterTrying);
}

/// The player shows nothing of ours, or does not answer.
void MprisTransport::takeAbsence(const MprisSnapshot *now)
{
    const bool isAbsent = now && !now->track.isPresent();
    if (!isAbsent)
        m_sinceAbsence.invalidate();
    else if (!m_sinceAbsence.isValid())
        m_sinceAbsence.start();
    if (isAbsent) {
        m_tried = m_tried || now->state == KelvoRenderer::Playing;
        noteRest(*now);
    }
    if (m_accepted && isAbsent && isEmptyForGood(*now))
        giveUp();
    else if (m_accepted && m_sinceLoad.elapsed() > OpeningTime && now)
        giveUp();
    else if (m_accepted && m_sinceLoad.elapsed() > OpeningTime)
        fail(KelvoError::Timeout,
            QStringLiteral("%1 did not begin to play %2")
                .arg(m_address.label, m_item.info.url().toDisplayString()));
    else
        refreshIn(m_sinceLoad.elapsed() < QuickTime ? QuickLook : LateLook);
}

void MprisTransport::giveUp()
{
    fail(KelvoError::ReadFailed,
        QStringLiteral("%1: %2 was given up without a reason")
            .arg(m_address.label, m_item.info.url().toDisplayString()));
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
    m_toldPosition = 0;
    // It plays for as long as it says so, even where it does not say how far it has come.
    const bool saysIt = state == now.state && state == KelvoRenderer::Playing && m_sinceRest.isValid();
    m_position.moveTo(saysIt ? double(m_sinceRest.elapsed()) / 1000 : 0);
    m_state = KelvoRenderer::Transitioning;
    enter(state);
    tellFacts(now);
}
