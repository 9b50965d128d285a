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
constexpr int mostTries = 3;
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
    if (values.contains("CurrentTrackDuration"))
        hearDuration(values.value("CurrentTrackDuration"));
    if (report.track)
        hearTrack(*report.track);
    hearRendering(report);
    const auto state = UpnpText::parseState(values.value("TransportState"));
    if (values.value("TransportStatus").toUpper() == QLatin1String("ERROR_OCCURRED"))
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
    if (isLoading() || !m_epoch || uri.isEmpty() || uri == QLatin1String("NOT_IMPLEMENTED"))
        return;
    if (*m_epoch == 0 || !UpnpText::isSameUri(uri, m_uri))
        m_wishes.knowMedia = true;
}

void UpnpTransport::hearMedia(const Upnp::Answer &answer)
{
    if (answer.outcome != Upnp::Answer::Done || isLoading() || m_isStopping)
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

void UpnpTransport::hearDuration(const QString &text)
{
    const double duration = UpnpText::parseTime(text).value_or(-1);
    if (!m_epoch || isLoading() || qFuzzyCompare(duration, m_duration))
        return;
    // At first some tell of the item before, and take it back with the 0 that they write for what has no duration, or
    // one below a second.
    const bool isTakenBack = duration == 0 && m_duration > 0 && m_clock.position() < earlyStop;
    if (duration <= 0 && !isTakenBack)
        return;
    m_duration = isTakenBack ? -1 : duration;
    tell([this, epoch = *m_epoch, known = m_duration] { Q_EMIT durationReported(epoch, known); });
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
    else
        enterState(state);
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
    if (!m_check.isActive())
        m_check.start(m_checkDelay = std::min(2 * m_checkDelay, longestCheck));
}

void UpnpTransport::hearStarting(State state, bool isCertain)
{
    if (state == KelvoRenderer::Playing || state == KelvoRenderer::Paused) {
        m_isStarting = false;
        expectationEnds();
        m_progress.start(m_patience.progress);
        enterState(state);
        return;
    }
    const bool isLate = m_expectedSince.hasExpired(m_patience.start);
    if (state == KelvoRenderer::Stopped && isCertain && isLate) {
        fail(KelvoError::UnknownError, QStringLiteral("%1 does not play it").arg(m_link->deviceName()));
        return;
    }
    // What comes while a device is still busy with the item before gets lost in some.
    if (state == KelvoRenderer::Stopped && isCertain && m_playTries < mostTries
        && m_expectedSince.hasExpired(m_playTries * m_patience.retry))
        m_wishes.play = true;
    else if (isCertain && !m_check.isActive())
        m_check.start(m_checkDelay = std::min(2 * m_checkDelay, longestCheck));
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
    m_wishes.paused.reset();
    m_wishes.position.reset();
    if (!m_epoch)
        return;
    const quint64 epoch = *std::exchange(m_epoch, std::nullopt);
    const bool isEarly = m_duration > 0 && m_clock.position() < m_duration - earlyStop;
    if (epoch > 0 && isEarly)
        m_stoppedEpoch = epoch;
    if (epoch == 0 || isEarly)
        tell([this, epoch] { Q_EMIT stateReported(epoch, KelvoRenderer::Stopped); });
    else
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
    const auto position = UpnpText::parseTime(answer.values.value("RelTime"));
    const bool isJudged = std::exchange(m_isProgressJudged, false);
    hearDuration(answer.values.value("TrackDuration"));
    if (!position)
        return;
    m_position = std::max(m_position, *position);
    if (isJudged && m_position <= 0 && m_state == KelvoRenderer::Playing) {
        fail(KelvoError::Stalled,
            QStringLiteral("%1 says that it plays but does not move on").arg(m_link->deviceName()));
        m_wishes.stop = true;
        return;
    }
    const bool isOutdated = m_seeked.isValid() && !m_seeked.hasExpired(m_patience.seek)
        && std::abs(*position - m_clock.position()) > seekTolerance;
    if (!isOutdated)
        m_clock.set(*position);
    tell([this, epoch = *m_epoch, seconds = m_clock.position()] { Q_EMIT positionReported(epoch, seconds); });
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
