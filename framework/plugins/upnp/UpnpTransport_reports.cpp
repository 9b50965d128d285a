// SPDX-License-Identifier: MIT
#include "RemoteUrl.h"
#include "UpnpText.h"
#include "UpnpTransport.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
// An item that stops so many seconds before its end was stopped by somebody.
constexpr double earlyStop = 3;
// A position that is this far from where a seek went to is still the one of before.
constexpr double seekTolerance = 2;
constexpr int longestCheck = 500; // milliseconds
// Longer than this, in milliseconds, the position of what plays is not the same: most tell it in whole seconds.
constexpr qint64 standstill = 1500;
constexpr int mostTries = 3;
constexpr qsizetype mostEarly = 20; // events
// Milliseconds; doubled each time.
constexpr int firstProof = 100;
constexpr int longestProof = 1000;
constexpr qint64 stale = 1000;
} // namespace

void UpnpTransport::hear(const Upnp::Report &report)
{
    if (report.isUnreadable) {
        m_wishes.knowState = true;
        m_wishes.knowVolume = true;
        m_wishes.knowMedia = m_epoch.has_value();
    }
    const auto &values = report.values;
    if (values.contains("AVTransportURI"))
        hearUri(values.value("AVTransportURI"));
    const bool isOfItemBefore = !hearTrackUri(values.value("CurrentTrackURI"));
    const auto state = UpnpText::parseState(values.value("TransportState"));
    if (!isOfItemBefore)
        hearItem(report, state);
    hearRendering(report);
    const bool isDoubtful
        = isOfItemBefore || values.value("TransportStatus").toUpper() == QLatin1String("ERROR_OCCURRED");
    if (isDoubtful)
        m_wishes.knowState = true;
    else if (state)
        hearState(*state, false);
    // Which actions are possible changes with the state: a late event is about one that is over.
    if (values.contains("CurrentTransportActions") && state.value_or(m_state) == m_state) {
        m_allowedActions = UpnpText::parseActions(values.value("CurrentTransportActions"));
        noteAbilities();
    }
    next();
}

void UpnpTransport::hearItem(const Upnp::Report &report, std::optional<State> state)
{
    if (isLoading()) {
        // What is not named has not changed.
        const QString trackUri = report.values.value("CurrentTrackURI", m_trackUri);
        if (m_early.size() < mostEarly && !trackUri.isEmpty()) {
            m_early.append(report);
            m_early.last().values.insert("CurrentTrackURI", trackUri);
        }
        return;
    }
    const QString duration = report.values.value("CurrentTrackDuration");
    // With an item's end its duration is over too, and not taken back.
    const bool isOver = state == KelvoRenderer::Stopped && UpnpText::parseTime(duration) == 0;
    if (!duration.isEmpty() && !isOver)
        hearDuration(duration, From::Event);
    if (report.track)
        hearTrack(*report.track);
}

/// An event may be quicker than the answer. What it tells of the item is not said again.
void UpnpTransport::hearEarly()
{
    for (const Upnp::Report &report : std::exchange(m_early, {})) {
        if (UpnpText::isSameUri(report.values.value("CurrentTrackURI"), m_uri))
            hearItem(report, UpnpText::parseState(report.values.value("TransportState")));
    }
}

void UpnpTransport::hearRendering(const Upnp::Report &report)
{
    const QString mute = report.values.value("Mute").toLower();
    const bool isMuted = mute == QLatin1String("1") || mute == QLatin1String("true");
    if (!mute.isEmpty() && isMuted != m_isMuted) {
        m_isMuted = isMuted;
        if (isMuted)
            m_volumeBeforeMute = m_volume;
        else
            m_wishes.knowVolume = true;
    }
    // Which of several channels it is about does not come with it.
    if (report.values.contains("Volume"))
        m_wishes.knowVolume = true;
}

void UpnpTransport::hearUri(const QString &uri)
{
    // Nothing is in the device: some forget an item at its end. It is given again with the next load.
    m_isAddressGone = uri.isEmpty() && !isLoading() && !m_isStarting;
    if (isLoading() || !m_epoch || uri.isEmpty() || uri == QLatin1String("NOT_IMPLEMENTED"))
        return;
    if (*m_epoch == 0 || !UpnpText::isSameUri(uri, m_uri))
        m_wishes.knowMedia = true;
}

void UpnpTransport::hearMedia(const Upnp::Answer &answer)
{
    // What is to be stopped need not be shown, and would take the wish with it.
    if (answer.outcome != Upnp::Answer::Done || isLoading() || m_isStopping || m_wishes.stop)
        return;
    const QString uri = answer.values.value("CurrentURI");
    if (!m_epoch && m_stoppedEpoch && UpnpText::isSameUri(uri, m_uri)) {
        // Somebody lets it play again.
        m_epoch = std::exchange(m_stoppedEpoch, std::nullopt);
        tell([this, epoch = *m_epoch, state = m_state] { Q_EMIT stateReported(epoch, state); });
        return;
    }
    const bool isOurs = m_epoch.value_or(0) > 0;
    const bool isKnown
        = isOurs ? uri.isEmpty() || UpnpText::isSameUri(uri, m_uri) : m_epoch && uri == m_foreignUri;
    if (isKnown)
        return;
    m_foreignUri = uri;
    const Upnp::Track track = answer.track.value_or(Upnp::Track());
    const double duration
        = UpnpText::parseTime(answer.values.value("MediaDuration")).value_or(track.duration);
    KelvoMediaInfo info({}, QUrl(uri), track.title, duration > 0 ? int(std::lround(duration)) : -1);
    info.setArtist(track.artist);
    info.setAlbum(track.album);
    info.setMimeType(track.mimeType);
    becomeForeign(info);
    hearTrack(track);
}

void UpnpTransport::becomeForeign(const KelvoMediaInfo &info)
{
    forgetItem();
    m_before.clear();
    m_epoch = 0;
    m_clock.run(m_state == KelvoRenderer::Playing);
    tell([this, info, state = m_state] {
        Q_EMIT replaced(info);
        tell([this, state] { Q_EMIT stateReported(0, state); });
    });
}

void UpnpTransport::hearTrack(const Upnp::Track &track)
{
    if (!m_epoch || isLoading())
        return;
    const QList<QPair<QString, QString>> facts
        = {{QStringLiteral("title"), track.title}, {QStringLiteral("artist"), track.artist},
            {QStringLiteral("album"), track.album}, {QStringLiteral("genre"), track.genre},
            {QStringLiteral("cover"), RemoteUrl::isWeb(QUrl(track.cover)) ? track.cover : QString()}};
    for (const auto &[key, text] : facts) {
        if (text.isEmpty() || m_facts.value(key) == text)
            continue;
        m_facts.insert(key, text);
        tell([this, epoch = *m_epoch, key = key, text = text] { Q_EMIT fact(epoch, key, {text}); });
    }
}

void UpnpTransport::hearDuration(const QString &text, From from)
{
    const double duration = UpnpText::parseTime(text).value_or(-1);
    if (!m_epoch || isLoading() || (qFuzzyCompare(duration, m_duration) && !m_isDurationUntold))
        return;
    // At first some tell of the item before, and take it back with the 0 that they write for what has no duration, or
    // one below a second.
    const bool isTakenBack = duration == 0 && m_duration > 0 && m_clock.position() < earlyStop;
    if (duration <= 0 && !isTakenBack)
        return;
    m_duration = isTakenBack ? -1 : duration;
    const bool isTakenBackUntold = std::exchange(m_isDurationUntold, false) && isTakenBack;
    m_isDurationUntold = from == From::Answer && isDurationOfItemBefore(duration);
    if (!m_isDurationUntold && !isTakenBackUntold)
        tell([this, epoch = *m_epoch, known = m_duration] { Q_EMIT durationReported(epoch, known); });
}

/// Who is asked right after the start may still answer for the item before. What it says later, or by itself, counts.
bool UpnpTransport::isDurationOfItemBefore(double duration) const
{
    return qFuzzyCompare(duration, m_durationBefore) && m_started.isValid() && !m_started.hasExpired(stale);
}

void UpnpTransport::hearState(State state, bool isCertain)
{
    if (isLoading())
        return;
    if (m_isStarting) {
        hearStarting(state, isCertain);
        return;
    }
    if (m_expected) {
        const bool isReached = state == *m_expected;
        if (!isReached && !m_expectedSince.hasExpired(m_patience.change)) {
            // On its way, or an event from before.
            if (isCertain)
                awaitExpected();
            return;
        }
        m_isStopping = m_isStopping && isReached;
        expectationEnds();
    }
    // Late events are about the item before, or about what we have just stopped.
    if (state != m_state && !isCertain && (state == KelvoRenderer::Stopped || !m_epoch))
        m_wishes.knowState = true;
    else if (state == KelvoRenderer::Stopped && isUnproven())
        doubtStart();
    else
        enterState(state);
}

/// Whether the device named the item that is to be heard of, or none. Else it is asked.
bool UpnpTransport::hearTrackUri(const QString &uri)
{
    if (!uri.isEmpty() && uri != QLatin1String("NOT_IMPLEMENTED"))
        m_trackUri = uri;
    // Once it is at our item, what it does not name has not changed.
    return !isItemBefore(m_isTrackOurs ? uri : m_trackUri);
}

bool UpnpTransport::isItemBefore(const QString &trackUri) const
{
    const auto isSame = [&trackUri](const QString &known) {
        return UpnpText::isSameUri(known, trackUri);
    };
    return !trackUri.isEmpty() && m_epoch.value_or(0) > 0 && !UpnpText::isSameUri(trackUri, m_uri)
        && std::any_of(m_before.cbegin(), m_before.cend(), isSame);
}

/// Some say that they play while that is still the item before. Others never name the track that they are at.
bool UpnpTransport::isTrackDoubtful() const
{
    const auto isOther = [this](const QString &known) {
        return !known.isEmpty() && !UpnpText::isSameUri(known, m_uri);
    };
    return !m_isTrackOurs && !m_expectedSince.hasExpired(m_patience.change)
        && std::any_of(m_before.cbegin(), m_before.cend(), isOther);
}

/// What stops at once, without anything that shows that it has played.
bool UpnpTransport::isUnproven() const
{
    const bool isInPlay = m_state == KelvoRenderer::Playing || m_state == KelvoRenderer::Paused;
    return isInPlay && m_epoch.value_or(0) > 0 && !m_isAddressGone && m_position <= 0 && m_duration <= 0
        && m_started.isValid() && !m_started.hasExpired(m_patience.proof);
}

/// It may still be on its way from the item before to this one, or it cannot play it.
void UpnpTransport::doubtStart()
{
    if (std::exchange(m_isDoubted, true)) {
        failStart();
        return;
    }
    m_progress.stop();
    m_state = KelvoRenderer::Transitioning;
    m_clock.run(false);
    m_isStarting = true;
    m_playTries = mostTries;
    expect(KelvoRenderer::Playing);
    tell([this, epoch = *m_epoch] { Q_EMIT stateReported(epoch, KelvoRenderer::Transitioning); });
}

void UpnpTransport::failStart()
{
    fail(KelvoError::ReadFailed, QStringLiteral("%1 does not play it").arg(m_link->deviceName()));
}

/// Events come late or not at all, and short items are over before anybody else wants to know the position. Right at the
/// start many do not know either.
void UpnpTransport::askForProof()
{
    if (m_state != KelvoRenderer::Playing || !(isUnproven() || m_isDurationUntold))
        return;
    m_proof.start(m_proofDelay);
    m_proofDelay = std::min(2 * m_proofDelay, longestProof);
    askPosition();
}

/// Asks again in a while. A device that accepted a command and lost it is told once more.
void UpnpTransport::awaitExpected()
{
    if (m_changeTries < mostTries && m_expectedSince.hasExpired(m_changeTries * m_patience.retry)) {
        ++m_changeTries;
        if (*m_expected == KelvoRenderer::Stopped)
            m_wishes.stop = true;
        else
            m_wishes.paused = *m_expected == KelvoRenderer::Paused;
    }
    checkAgain();
}

void UpnpTransport::checkAgain()
{
    if (!m_check.isActive())
        m_check.start(m_checkDelay = std::min(2 * m_checkDelay, longestCheck));
}

void UpnpTransport::itemStarted(State state)
{
    m_isStarting = false;
    m_isTrackOurs = true;
    expectationEnds();
    m_progress.start(m_patience.progress);
    if (!m_started.isValid())
        m_started.start();
    m_proof.start(m_proofDelay = firstProof);
    m_wishes.knowPosition = true;
    enterState(state);
}

void UpnpTransport::hearStarting(State state, bool isCertain)
{
    if (state == KelvoRenderer::Playing || state == KelvoRenderer::Paused) {
        if (isTrackDoubtful())
            askPosition();
        else
            itemStarted(state);
        return;
    }
    const bool isLate = m_expectedSince.hasExpired(m_isDoubted ? m_patience.doubt : m_patience.start);
    if (state == KelvoRenderer::Stopped && isCertain && isLate) {
        failStart();
        return;
    }
    // What comes while a device is still busy with the item before gets lost in some.
    if (state == KelvoRenderer::Stopped && isCertain && m_playTries < mostTries
        && m_expectedSince.hasExpired(m_playTries * m_patience.retry))
        m_wishes.play = true;
    else if (isCertain)
        checkAgain();
}

void UpnpTransport::enterState(State state)
{
    if (state == m_state && !(m_isStopping && state == KelvoRenderer::Stopped))
        return;
    m_state = state;
    m_clock.run(state == KelvoRenderer::Playing);
    m_allowedActions.clear();
    noteAbilities();
    if (state == KelvoRenderer::Stopped) {
        m_isStopping = false;
        finishItem();
        return;
    }
    if (!m_epoch) {
        // Somebody plays something on it, perhaps what we had put in.
        m_wishes.knowMedia = !m_isStopping;
        return;
    }
    // About to pause: nobody needs to see it play for a moment.
    if (state == KelvoRenderer::Playing && m_wishes.paused.value_or(false))
        return;
    tell([this, epoch = *m_epoch, state] { Q_EMIT stateReported(epoch, state); });
}

void UpnpTransport::finishItem()
{
    m_progress.stop();
    m_proof.stop();
    m_wishes.paused.reset();
    m_wishes.position.reset();
    if (!m_epoch)
        return;
    const quint64 epoch = *std::exchange(m_epoch, std::nullopt);
    const bool isEarly = m_duration > 0 && m_clock.position() < m_duration - earlyStop;
    if (epoch > 0 && isEarly)
        m_stoppedEpoch = epoch;
    if (epoch == 0 || isEarly) {
        tell([this, epoch] { Q_EMIT stateReported(epoch, KelvoRenderer::Stopped); });
        return;
    }
    // Short ones may end before anybody has asked where they are: that it has moved is to be known first.
    tell([this, epoch, seconds = m_clock.position()] { Q_EMIT positionReported(epoch, seconds); });
    tell([this, epoch] { Q_EMIT ended(epoch); });
}

void UpnpTransport::fail(KelvoError::Code code, const QString &message)
{
    const quint64 epoch = m_epoch.value_or(0);
    forgetItem();
    m_epoch.reset();
    m_state = KelvoRenderer::Stopped;
    tell([this, epoch, code, message] { Q_EMIT failed(epoch, code, message); });
}

void UpnpTransport::hearPosition(const Upnp::Answer &answer)
{
    const bool isJudged = std::exchange(m_isProgressJudged, false);
    const bool isOurs = hearTrackUri(answer.values.value("TrackURI"));
    if (m_isStarting) {
        m_isTrackOurs = isOurs;
        if (isOurs)
            m_wishes.knowState = true;
        else
            checkAgain();
        return;
    }
    const QString duration = answer.values.value("TrackDuration");
    // It may be over because the item is.
    m_isDurationDoubted = m_duration > 0 && UpnpText::parseTime(duration) == 0;
    if (m_isDurationDoubted)
        m_wishes.knowState = true;
    else
        hearDuration(duration, From::Answer);
    if (isOurs && answer.track && m_facts.isEmpty())
        hearTrack(*answer.track);
    if (const auto position = UpnpText::parseTime(answer.values.value("RelTime")))
        takePosition(*position, isJudged);
}

void UpnpTransport::settleDuration(State state)
{
    if (std::exchange(m_isDurationDoubted, false) && state != KelvoRenderer::Stopped)
        hearDuration(QStringLiteral("0:00:00"), From::Event);
}

void UpnpTransport::takePosition(double position, bool isJudged)
{
    m_position = std::max(m_position, position);
    if (isJudged && m_position <= 0 && m_state == KelvoRenderer::Playing) {
        fail(KelvoError::Stalled,
            QStringLiteral("%1 says that it plays but does not move on").arg(m_link->deviceName()));
        m_wishes.stop = true;
        return;
    }
    const bool isHeld = m_seeked.isValid() && !m_seeked.hasExpired(m_patience.seek);
    const bool isOutdated = isHeld && std::abs(position - m_clock.position()) > seekTolerance;
    if (!isHeld && isStateDoubtful(position))
        m_wishes.knowState = true;
    if (!isOutdated && !m_isPositionDoubted)
        m_clock.set(position);
    tell([this, epoch = *m_epoch, seconds = m_clock.position()] { Q_EMIT positionReported(epoch, seconds); });
}

/// Whether the item would not explain what the device says of its position, so that an event may be missing: not all
/// send them. A fall back is not taken before that is known, since it may be the one of an end.
bool UpnpTransport::isStateDoubtful(double position)
{
    const bool isDue = m_lastPositionAt.isValid() && m_lastPositionAt.hasExpired(standstill);
    const bool isStill = isDue && position <= m_lastPosition;
    const bool isOver = m_duration > 0 && m_clock.position() > m_duration;
    const bool isFallen = position + seekTolerance < m_clock.position();
    m_isPositionDoubted = isFallen && !m_isPositionDoubted;
    if (!m_lastPositionAt.isValid() || isDue || position != m_lastPosition) {
        m_lastPosition = position;
        m_lastPositionAt.start();
    }
    return m_state == KelvoRenderer::Playing && (isStill || isOver || isFallen);
}

void UpnpTransport::checkProgress()
{
    if (m_position > 0 || m_epoch.value_or(0) == 0)
        return;
    if (m_state == KelvoRenderer::Playing) {
        m_isProgressJudged = true;
        askPosition();
    } else {
        m_progress.start();
    }
}

void UpnpTransport::hearVolume(int deviceVolume)
{
    if (m_wishes.volume || m_isMuted)
        return;
    const int remembered = std::exchange(m_volumeBeforeMute, -1);
    if (deviceVolume <= m_limits.lowestVolume && remembered > 0) {
        // Muting cost it its volume.
        m_wishes.volume = remembered;
        return;
    }
    // Devices round; a step off is what was set. With few steps each one counts.
    const int tolerance = m_limits.highestVolume - m_limits.lowestVolume >= 50 ? 1 : 0;
    if (m_setVolume && std::abs(deviceVolume - m_setVolume->deviceVolume) <= tolerance)
        return;
    m_setVolume.reset();
    const int volume
        = UpnpText::fromDeviceVolume(deviceVolume, m_limits.lowestVolume, m_limits.highestVolume);
    if (std::exchange(m_volume, volume) != volume)
        tell([this, volume] { Q_EMIT volumeReported(volume); });
}
