// SPDX-License-Identifier: MIT
#include "MprisOpening.h"

#include <array>

namespace {
// All in milliseconds. How often to look while an item is on its way, at first and later.
constexpr int quickLook = 25;
constexpr int lateLook = 200;
constexpr qint64 quickTime = 1500;
/// What a player that says it plays has not shown by then, it does not show at all.
constexpr qint64 benefitOfDoubt = 1500;
/// With nothing in it for so long after it took the item, the player does not play it.
constexpr qint64 emptyBefore = 600;
constexpr qint64 absenceAfter = 150; ///< without any track, once ours had been there
/// Stopped for so long, the player has given our item up: with it, without any track after it had said that it plays,
/// and since it took the item if it never said so.
constexpr qint64 stopAfterTrying = 500;
constexpr qint64 emptyAfterTrying = 1500;
constexpr qint64 stopWithoutTrying = 2500;
constexpr qint64 silence = 400;
/// So long paused, it is to be paused.
constexpr qint64 pauseTime = 6000;
/// Some begin paused and go on by themselves: what they are told meanwhile they may take the wrong way.
constexpr qint64 ownBeginning = 150;
/// Between one nudge and the next, each longer than the one before: some begin anew with each.
constexpr std::array<qint64, 4> nudgePauses{250, 750, 2000, 4000};
constexpr int refusedNudges = 3;
/// A player that says nothing definite may be waiting for a server.
constexpr qint64 openingTime = 10'000;
// Seconds.
constexpr double tolerance = 0.3;
constexpr double shortTime = 0.5;
} // namespace

void MprisOpening::begin(const RemoteTransport::Item &item, const QUrl &before)
{
    const bool tellsOfEmptiness = m_tellsOfEmptiness;
    *this = {};
    m_tellsOfEmptiness = tellsOfEmptiness;
    m_item = item;
    m_before = before;
    m_sinceLoad.start();
}

void MprisOpening::accept()
{
    m_isAccepted = true;
    m_sinceLoad.start();
}

int MprisOpening::nextLook() const
{
    return m_sinceLoad.elapsed() < quickTime ? quickLook : lateLook;
}

double MprisOpening::playedFor() const
{
    return m_sinceRest.isValid() ? double(m_sinceRest.elapsed()) / 1000 : 0;
}

bool MprisOpening::isOurs(const MprisTrack &track) const
{
    if (!track.url.isEmpty())
        return MprisTrack::isSameAddress(track.url, m_item.info.url());
    // A player that does not name URLs: whatever it shows some time after it took ours.
    return track.isPresent() && m_sinceLoad.elapsed() > quickTime / 3;
}

/// What has played for longer than ours can have is what played before.
bool MprisOpening::isFresh(const MprisSnapshot &now) const
{
    const qint64 passed = m_sinceLoad.elapsed();
    return !now.position || *now.position <= double(passed) / 1000 + tolerance || passed > benefitOfDoubt;
}

bool MprisOpening::isOverdue() const
{
    return m_sinceLoad.elapsed() > openingTime;
}

MprisOpening::Step MprisOpening::take(const MprisSnapshot &now, bool hasAdvanced)
{
    if (!m_isAccepted)
        return Step::Wait;
    const bool late = m_sinceLoad.elapsed() > benefitOfDoubt;
    const bool isNew = now.track.isPresent() && late && !MprisTrack::isSameAddress(now.track.url, m_before);
    if ((isOurs(now.track) || isNew) && isFresh(now))
        return takeOurs(now, hasAdvanced);
    if (!now.track.isPresent() && now.playbackStatus == KelvoRenderer::Playing && late)
        return Step::Plays; // And says nothing of what.
    return takeAbsence(now);
}

MprisOpening::Step MprisOpening::takeOurs(const MprisSnapshot &now, bool hasAdvanced)
{
    m_isSeen = true;
    m_isTried = m_isTried || now.playbackStatus == KelvoRenderer::Playing;
    m_sinceAbsence.invalidate();
    noteRest(now);
    const bool late = m_sinceLoad.elapsed() > benefitOfDoubt;
    const bool playsUnnoticed = now.playbackStatus == KelvoRenderer::Stopped && hasAdvanced;
    const bool plays = playsUnnoticed
        || (now.playbackStatus == KelvoRenderer::Playing && (now.position.value_or(0) > 0 || late));
    const bool staysPaused = m_item.paused || m_sinceRest.elapsed() >= pauseTime;
    if (now.playbackStatus == KelvoRenderer::Paused && staysPaused)
        return Step::Pauses;
    if (plays && (!m_item.paused || late))
        return playsUnnoticed ? Step::PlaysUnnoticed : Step::Plays;
    return takeRest(now);
}

/// A player that was busy for a while has not been at rest.
void MprisOpening::noteRest(const MprisSnapshot &now)
{
    const std::pair rest(now.playbackStatus, now.track.isPresent());
    const bool hasBeenSilent = m_sinceLook.isValid() && m_sinceLook.elapsed() > silence;
    if (std::exchange(m_rest, rest) != rest || !m_sinceRest.isValid() || hasBeenSilent)
        m_sinceRest.start();
    m_sinceLook.start();
}

/// The player has our item and does not do what it should with it, or not yet.
MprisOpening::Step MprisOpening::takeRest(const MprisSnapshot &now)
{
    const bool isStopped = now.playbackStatus == KelvoRenderer::Stopped;
    if (isStopped && hasPlayedAtOnce(now))
        return Step::HasPlayed;
    if ((isStopped && hasGivenUp()) || isOverdue())
        return Step::GivenUp;
    if (!isNudgeDue(now))
        return Step::Wait;
    ++m_nudges;
    m_sinceNudge.start();
    return Step::Nudge;
}

/// Whether it has been stopped with our item for long enough. One that says when nothing is left of it is waited for.
bool MprisOpening::hasGivenUp() const
{
    const bool late = m_isTried || m_sinceLoad.elapsed() >= stopWithoutTrying;
    return !m_tellsOfEmptiness && late && m_sinceRest.elapsed() >= stopAfterTrying;
}

/// Whether it is so short that it was over between two looks.
bool MprisOpening::hasPlayedAtOnce(const MprisSnapshot &now) const
{
    const double length = now.track.length;
    return m_isTried && length > 0 && length <= double(m_sinceLoad.elapsed()) / 1000 + shortTime;
}

/// Some keep the pause of what played before, some do not start by themselves, and some take no command before they are
/// ready for it. What has stopped by itself is not tried for ever.
bool MprisOpening::isNudgeDue(const MprisSnapshot &now) const
{
    const auto wanted = m_item.paused ? KelvoRenderer::Paused : KelvoRenderer::Playing;
    const bool hasBeenTried = now.playbackStatus == KelvoRenderer::Stopped && m_nudges > 0;
    const bool isEnough = hasBeenTried || m_nudges > nudgePauses.size();
    const bool mayBegin = now.playbackStatus == KelvoRenderer::Paused && m_sinceRest.elapsed() < ownBeginning;
    return now.playbackStatus != wanted && !isEnough && !mayBegin
        && (m_nudges == 0 || m_sinceNudge.elapsed() >= nudgePauses.at(m_nudges - 1));
}

bool MprisOpening::nudgeRefused()
{
    return ++m_refusals >= refusedNudges;
}

/// Whether a player without any track has said all that it will say of our item.
bool MprisOpening::isEmptyForGood(const MprisSnapshot &now) const
{
    const qint64 absent = m_sinceAbsence.elapsed();
    const bool hasTried = m_isTried && now.playbackStatus == KelvoRenderer::Stopped;
    return (m_isSeen && absent >= absenceAfter) || (now.isEmptied && absent >= emptyBefore)
        || (hasTried && m_sinceRest.elapsed() >= emptyAfterTrying);
}

/// The player shows nothing of ours.
MprisOpening::Step MprisOpening::takeAbsence(const MprisSnapshot &now)
{
    if (now.track.isPresent()) {
        m_sinceAbsence.invalidate();
        return isOverdue() ? Step::GivenUp : Step::Wait;
    }
    if (!m_sinceAbsence.isValid())
        m_sinceAbsence.start();
    m_isTried = m_isTried || now.playbackStatus == KelvoRenderer::Playing;
    noteRest(now);
    return isEmptyForGood(now) || isOverdue() ? Step::GivenUp : Step::Wait;
}

MprisOpening::Step MprisOpening::takeSilence()
{
    m_sinceAbsence.invalidate();
    return m_isAccepted && isOverdue() ? Step::TimedOut : Step::Wait;
}
