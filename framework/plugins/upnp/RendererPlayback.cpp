// SPDX-License-Identifier: MIT
#include "RendererPlayback.h"

#include "ItemProgress.h"
#include "RemoteUrl.h"
#include "RendererRequests.h"
#include "UpnpText.h"

#include <cmath>
#include <utility>

using Upnp::Answer;

namespace {
// AVTransport's own refusals.
constexpr int transitionNotAvailable = 701;
constexpr int transportLocked = 705;
// Seconds. What stops so close to its end has ended; what is not farther from its start has only just begun.
constexpr double earlyStop = 3;
// Milliseconds after the start that an answer may still be about the item before.
constexpr int stale = 1000;

KelvoError::Code loadError(const Answer &answer)
{
    if (answer.outcome == Answer::TimedOut)
        return KelvoError::Timeout;
    if (answer.outcome == Answer::Unreachable)
        return KelvoError::NetworkFailed;
    if (answer.outcome == Answer::Missing)
        return KelvoError::DeviceGone;
    switch (answer.code) {
    case 704: // format not supported
    case 714: // illegal MIME type
        return KelvoError::UnsupportedType;
    case 716: // resource not found
        return KelvoError::NotFound;
    case 715: // content busy
        return KelvoError::AccessDenied;
    default:
        return KelvoError::CommandRefused;
    }
}

bool isErrorReported(const QString &transportStatus)
{
    return transportStatus.toUpper() == QLatin1String("ERROR_OCCURRED");
}

/// What somebody else has put into a device.
KelvoMediaInfo foreignItem(const Answer &mediaInfo)
{
    const Upnp::Track track = mediaInfo.track.value_or(Upnp::Track());
    const double duration
        = UpnpText::parseTime(mediaInfo.values.value("MediaDuration")).value_or(track.duration);
    KelvoMediaInfo info({}, QUrl(mediaInfo.values.value("CurrentURI")), track.title,
        duration > 0 ? int(std::lround(duration)) : -1);
    info.setArtist(track.artist);
    info.setAlbum(track.album);
    info.setMimeType(track.mimeType);
    return info;
}
} // namespace

RendererPlayback::RendererPlayback(const RemoteTransport *transport, const RendererRequests *requests,
    RendererWishes *wishes, const Patience &patience)
    : m_transport(transport)
    , m_requests(requests)
    , m_wishes(wishes)
    , m_patience(patience)
    , m_change(patience.retry, patience.change)
    , m_proof(patience.progress)
{
    connect(&m_change, &StateChange::checkDue, this, [this] {
        m_wishes->knowState = true;
        Q_EMIT wished();
    });
    connect(&m_proof, &PlayingProof::due, this, &RendererPlayback::askForProof);
    connect(&m_proof, &PlayingProof::progressDue, this, &RendererPlayback::judgeProgress);
}

/// Everything that was meant for the item before is forgotten.
void RendererPlayback::prepare(bool isStopSent)
{
    *m_wishes = {};
    m_start.reset(isStopSent);
    m_inDevice.setAddressGone(false);
    m_duration.reset();
    m_told.reset();
    m_proof.end();
    m_stoppedEpoch.reset();
    m_change.end();
}

void RendererPlayback::leave()
{
    prepare(false);
    m_epoch.reset();
}

void RendererPlayback::expect(State state)
{
    m_change.expect(state);
    m_wishes->knowState = true;
}

void RendererPlayback::uriAnswered(quint64 epoch, const QString &uri, const Answer &answer, bool isCurrent)
{
    const bool isWanted = m_start.takeAnswer() && isCurrent;
    if (answer.outcome == Answer::Done)
        m_inDevice.accept(uri);
    if (!isWanted)
        return;
    if (answer.outcome == Answer::Done) {
        m_epoch = epoch;
        m_change.setStopping(false);
        m_state = KelvoRenderer::Transitioning;
        m_wishes->play = true;
        Q_EMIT stateReported(epoch, KelvoRenderer::Transitioning);
        return;
    }
    const bool isBusyPlaying = answer.code == transitionNotAvailable || answer.code == transportLocked;
    if (isBusyPlaying && m_start.takeStopTry()) {
        m_wishes->stop = true;
        m_wishes->load = true;
        return;
    }
    const bool isInPlay = m_state != KelvoRenderer::Stopped;
    m_epoch = epoch;
    fail(loadError(answer), m_requests->describe("SetAVTransportURI", answer));
    // Else the item before would play on.
    m_wishes->stop = isInPlay && answer.outcome == Answer::Refused;
}

void RendererPlayback::playAnswered(const Answer &answer, bool isCurrent)
{
    if (!m_start.takeAnswer() || !isCurrent)
        return;
    const bool mayPass = answer.outcome == Answer::Refused && loadError(answer) == KelvoError::CommandRefused;
    // A device that plays by itself once it has an item refuses to be told so.
    if (answer.outcome == Answer::Done || answer.code == transitionNotAvailable) {
        m_start.accept();
        expect(KelvoRenderer::Playing);
        for (const Upnp::Report &report : m_start.takeEarly()) {
            if (m_inDevice.isOurs(report.values.value("CurrentTrackURI")))
                hearItem(report, UpnpText::parseState(report.values.value("TransportState")));
        }
    } else if (mayPass && m_start.takeRefusalTry()) {
        m_wishes->stop = true;
        m_wishes->load = true;
    } else {
        fail(loadError(answer), m_requests->describe("Play", answer));
    }
}

void RendererPlayback::seekAccepted(double seconds)
{
    if (!m_epoch || isLoading())
        return;
    Q_EMIT seeked(*m_epoch, seconds, m_patience.seek);
}

void RendererPlayback::endBefore()
{
    const quint64 epoch = m_epoch.value_or(0);
    leave();
    m_wishes->stop = true;
    Q_EMIT ended(epoch);
}

void RendererPlayback::tellState()
{
    if (m_epoch)
        Q_EMIT stateReported(*m_epoch, m_state);
}

void RendererPlayback::hear(const Upnp::Report &report)
{
    if (report.isUnreadable) {
        m_wishes->knowState = true;
        m_wishes->knowMedia = m_epoch.has_value();
    }
    const auto &values = report.values;
    if (values.contains("AVTransportURI"))
        hearUri(values.value("AVTransportURI"));
    const bool isOfItemBefore = !hearTrackUri(values.value("CurrentTrackURI"));
    const auto state = UpnpText::parseState(values.value("TransportState"));
    if (!isOfItemBefore)
        hearItem(report, state);
    if (isOfItemBefore || isErrorReported(values.value("TransportStatus")))
        m_wishes->knowState = true;
    else if (state)
        hearState(*state, false);
}

void RendererPlayback::hearItem(const Upnp::Report &report, std::optional<State> state)
{
    if (isLoading()) {
        m_start.keepEarly(report, m_inDevice.trackUri());
        return;
    }
    const QString duration = report.values.value("CurrentTrackDuration");
    // With an item's end its duration is over too, and not taken back.
    const bool isOver = state == KelvoRenderer::Stopped && UpnpText::parseTime(duration) == 0;
    if (!duration.isEmpty() && !isOver)
        hearDuration(duration, false);
    if (report.track)
        hearTrack(*report.track);
}

void RendererPlayback::hearUri(const QString &uri)
{
    // Nothing is in the device: some forget an item at its end. It is given again with the next load.
    m_inDevice.setAddressGone(uri.isEmpty() && !isLoading() && !m_start.isStarting());
    if (isLoading() || !m_epoch || uri.isEmpty() || uri == QLatin1String("NOT_IMPLEMENTED"))
        return;
    if (*m_epoch == 0 || !m_inDevice.isOurs(uri))
        m_wishes->knowMedia = true;
}

/// Whether the device named the item that is to be heard of, or none. Else it is asked.
bool RendererPlayback::hearTrackUri(const QString &uri)
{
    return m_inDevice.hearTrack(uri) || !isOurs();
}

void RendererPlayback::hearTrack(const Upnp::Track &track)
{
    if (!m_epoch || isLoading())
        return;
    const QList<QPair<QString, QString>> facts
        = {{QStringLiteral("title"), track.title}, {QStringLiteral("artist"), track.artist},
            {QStringLiteral("album"), track.album}, {QStringLiteral("genre"), track.genre},
            {QStringLiteral("cover"), RemoteUrl::isWeb(QUrl(track.cover)) ? track.cover : QString()}};
    for (const auto &[key, text] : facts) {
        if (text.isEmpty())
            continue;
        m_start.setDescribed();
        Q_EMIT fact(*m_epoch, key, {text});
    }
}

void RendererPlayback::hearDuration(const QString &text, bool isAnswer)
{
    if (!m_epoch || isLoading())
        return;
    const double duration = UpnpText::parseTime(text).value_or(-1);
    const bool isAtStart = m_transport->progress().now() < earlyStop;
    if (m_duration.take(duration, isAtStart, isAnswer && m_start.hasBegunWithin(stale)))
        Q_EMIT durationReported(*m_epoch, m_duration.seconds());
}

void RendererPlayback::hearState(State state, bool isCertain)
{
    if (isLoading())
        return;
    if (m_start.isStarting()) {
        hearStarting(state, isCertain);
        return;
    }
    if (m_change.expected()) {
        const bool isReached = state == *m_change.expected();
        if (!isReached && !m_change.isOverdue()) {
            // On its way, or an event from before.
            if (isCertain)
                awaitExpected();
            return;
        }
        m_change.setStopping(m_change.isStopping() && isReached);
        m_change.end();
    }
    // Late events are about the item before, or about what we have just stopped.
    if (state != m_state && !isCertain && (state == KelvoRenderer::Stopped || !m_epoch))
        m_wishes->knowState = true;
    else if (state == KelvoRenderer::Stopped && isUnproven())
        doubtStart();
    else
        enterState(state);
}

/// Asks again in a while. A device that accepted a command and lost it is told once more.
void RendererPlayback::awaitExpected()
{
    if (m_change.takeRetry()) {
        if (*m_change.expected() == KelvoRenderer::Stopped)
            m_wishes->stop = true;
        else
            m_wishes->paused = *m_change.expected() == KelvoRenderer::Paused;
    }
    m_change.checkLater();
}

void RendererPlayback::hearStarting(State state, bool isCertain)
{
    if (state == KelvoRenderer::Playing || state == KelvoRenderer::Paused) {
        if (m_inDevice.isTrackDoubtful() && !m_change.isOverdue())
            m_wishes->knowPosition = true;
        else
            itemStarted(state);
        return;
    }
    const bool isLate = m_change.hasTaken(m_start.isDoubted() ? m_patience.doubt : m_patience.start);
    if (state == KelvoRenderer::Stopped && isCertain && isLate)
        failStart();
    // What comes while a device is still busy with the item before gets lost in some.
    else if (state == KelvoRenderer::Stopped && isCertain && m_change.isRetryDue(m_start.playTries()))
        m_wishes->play = true;
    else if (isCertain)
        m_change.checkLater();
}

void RendererPlayback::itemStarted(State state)
{
    m_start.begin();
    m_inDevice.begin();
    m_change.end();
    m_proof.begin();
    m_wishes->knowPosition = true;
    enterState(state);
}

/// What stops at once, without anything that shows that it has played.
bool RendererPlayback::isUnproven() const
{
    const bool isInPlay = m_state == KelvoRenderer::Playing || m_state == KelvoRenderer::Paused;
    return isInPlay && isOurs() && !m_inDevice.isAddressGone() && !m_told.hasMoved() && !m_duration.isKnown()
        && m_start.hasBegunWithin(m_patience.proof);
}

/// It may still be on its way from the item before to this one, or it cannot play it.
void RendererPlayback::doubtStart()
{
    if (!m_start.doubt()) {
        failStart();
        return;
    }
    m_proof.endProgress();
    m_state = KelvoRenderer::Transitioning;
    expect(KelvoRenderer::Playing);
    Q_EMIT stateReported(*m_epoch, KelvoRenderer::Transitioning);
}

void RendererPlayback::failStart()
{
    fail(KelvoError::ReadFailed, QStringLiteral("%1 does not play it").arg(m_requests->link()->deviceName()));
}

void RendererPlayback::askForProof()
{
    if (m_state != KelvoRenderer::Playing || !(isUnproven() || m_duration.isUntold()))
        return;
    m_proof.askLater();
    m_wishes->knowPosition = true;
    Q_EMIT wished();
}

void RendererPlayback::judgeProgress()
{
    if (m_told.hasMoved() || !isOurs())
        return;
    if (m_state == KelvoRenderer::Playing) {
        m_wishes->judgeProgress = true;
        m_wishes->knowPosition = true;
        Q_EMIT wished();
    } else {
        m_proof.waitForProgress();
    }
}

void RendererPlayback::enterState(State state)
{
    if (state == m_state && !(m_change.isStopping() && state == KelvoRenderer::Stopped))
        return;
    m_state = state;
    Q_EMIT stateEntered();
    if (state == KelvoRenderer::Stopped) {
        m_change.setStopping(false);
        finishItem();
        return;
    }
    if (!m_epoch) {
        // Somebody plays something on it, perhaps what we had put in.
        m_wishes->knowMedia = !m_change.isStopping();
        return;
    }
    // About to pause: nobody needs to see it play for a moment.
    if (state == KelvoRenderer::Playing && m_wishes->paused.value_or(false))
        return;
    Q_EMIT stateReported(*m_epoch, state);
}

void RendererPlayback::finishItem()
{
    m_proof.end();
    m_wishes->paused.reset();
    m_wishes->position.reset();
    if (!m_epoch)
        return;
    const quint64 epoch = *std::exchange(m_epoch, std::nullopt);
    if (epoch == 0) {
        Q_EMIT stateReported(epoch, KelvoRenderer::Stopped);
        return;
    }
    const RemoteTransport::Stop stop{m_transport->progress().now(), m_duration.seconds(), earlyStop};
    if (!stop.isEnd())
        m_stoppedEpoch = epoch;
    // Short ones may end before anybody has asked where they are: that it has moved is to be known first.
    Q_EMIT positionReported(epoch, stop.position);
    Q_EMIT stopped(epoch, stop);
}

void RendererPlayback::fail(KelvoError::Code code, const QString &message)
{
    const quint64 epoch = m_epoch.value_or(0);
    prepare(false);
    m_epoch.reset();
    m_state = KelvoRenderer::Stopped;
    Q_EMIT failed(epoch, code, message);
}

void RendererPlayback::stateAnswered(const Answer &answer)
{
    const auto state = UpnpText::parseState(answer.values.value("CurrentTransportState"));
    if (isErrorReported(answer.values.value("CurrentTransportStatus")) && state == KelvoRenderer::Stopped
        && m_epoch && !isLoading())
        fail(KelvoError::UnknownError,
            QStringLiteral("%1 reports that an error occurred").arg(m_requests->link()->deviceName()));
    else if (state)
        hearState(*state, true);
    else if (m_change.expected())
        m_change.checkAgain();
    // A duration that was taken back while the item goes on.
    if (state && m_duration.takeDoubt() && state != KelvoRenderer::Stopped)
        hearDuration(QStringLiteral("0:00:00"), false);
}

void RendererPlayback::mediaAnswered(const Answer &answer)
{
    // What is to be stopped need not be shown, and would take the wish with it.
    if (answer.outcome != Answer::Done || isLoading() || m_change.isStopping() || m_wishes->stop)
        return;
    const QString uri = answer.values.value("CurrentURI");
    if (!m_epoch && m_stoppedEpoch && m_inDevice.isOurs(uri)) {
        // Somebody lets it play again.
        m_epoch = std::exchange(m_stoppedEpoch, std::nullopt);
        Q_EMIT stateReported(*m_epoch, m_state);
        return;
    }
    const bool isKnown
        = isOurs() ? uri.isEmpty() || m_inDevice.isOurs(uri) : m_epoch && m_inDevice.isForeign(uri);
    if (isKnown)
        return;
    m_inDevice.setForeign(uri);
    becomeForeign(foreignItem(answer));
    hearTrack(answer.track.value_or(Upnp::Track()));
}

void RendererPlayback::becomeForeign(const KelvoMediaInfo &info)
{
    prepare(false);
    m_inDevice.forgetItemsBefore();
    m_epoch = 0;
    Q_EMIT replaced(info);
    // Once what is known of the item has been told.
    QMetaObject::invokeMethod(
        this, [this, state = m_state] { Q_EMIT stateReported(0, state); }, Qt::QueuedConnection);
}

void RendererPlayback::positionAnswered(const Answer &answer)
{
    const bool isJudged = std::exchange(m_wishes->judgeProgress, false);
    const bool isOurs = hearTrackUri(answer.values.value("TrackURI"));
    if (m_start.isStarting()) {
        m_inDevice.setTrackOurs(isOurs);
        if (isOurs)
            m_wishes->knowState = true;
        else
            m_change.checkLater();
        return;
    }
    const QString duration = answer.values.value("TrackDuration");
    // It may be over because the item is.
    const bool isTakenBack = m_duration.isKnown() && UpnpText::parseTime(duration) == 0;
    m_duration.doubt(isTakenBack);
    if (isTakenBack)
        m_wishes->knowState = true;
    else
        hearDuration(duration, true);
    if (isOurs && answer.track && !m_start.isDescribed())
        hearTrack(*answer.track);
    const auto position = UpnpText::parseTime(answer.values.value("RelTime"));
    if (!position)
        return;
    const ItemProgress &progress = m_transport->progress();
    const bool isDoubted = m_told.take(*position, m_duration.seconds(), progress);
    const bool isPlaying = m_state == KelvoRenderer::Playing;
    if (isJudged && !m_told.hasMoved() && isPlaying) {
        fail(KelvoError::Stalled,
            QStringLiteral("%1 says that it plays but does not move on")
                .arg(m_requests->link()->deviceName()));
        m_wishes->stop = true;
        return;
    }
    if (isDoubted && isPlaying)
        m_wishes->knowState = true;
    Q_EMIT positionReported(*m_epoch, m_told.isFallDoubted() ? progress.now() : *position);
}
