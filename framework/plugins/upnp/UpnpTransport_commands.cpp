// SPDX-License-Identifier: MIT
#include "UpnpText.h"
#include "UpnpTransport.h"

#include <QPointer>

#include <utility>

using Upnp::Answer;
using Upnp::Service;

namespace {
// AVTransport's own refusals.
constexpr int transitionNotAvailable = 701;
constexpr int transportLocked = 705;
constexpr int illegalTarget = 711;

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

QPair<QByteArray, QString> channel()
{
    return {"Channel", QStringLiteral("Master")};
}
} // namespace

void UpnpTransport::next()
{
    while (!m_isBusy && sendFirstWish()) { }
}

/// Grants the most urgent wish. False when there is none that can be granted now.
bool UpnpTransport::sendFirstWish()
{
    const bool isInPlay = m_state == KelvoRenderer::Playing || m_state == KelvoRenderer::Paused;
    if (std::exchange(m_wishes.stop, false))
        sendStop();
    else if (std::exchange(m_wishes.load, false))
        sendUri();
    else if (std::exchange(m_wishes.play, false))
        sendPlay();
    else if (std::exchange(m_wishes.knowState, false))
        askState();
    else if (m_wishes.paused && !m_isStarting && m_state != KelvoRenderer::Transitioning)
        sendPaused();
    else if (m_wishes.position && !m_isStarting && isInPlay)
        sendSeek();
    else if (m_wishes.volume)
        sendVolume();
    else if (m_wishes.rate && !m_isStarting)
        sendRate();
    else if (std::exchange(m_wishes.knowMedia, false))
        askMedia();
    else if (std::exchange(m_wishes.knowVolume, false))
        askVolume();
    else if (std::exchange(m_wishes.knowPosition, false))
        sendPositionQuestion();
    else
        return false;
    return true;
}

void UpnpTransport::send(Service service, const char *action, QList<QPair<QByteArray, QString>> in,
    QList<QByteArray> out, std::function<void(const Answer &)> handler)
{
    Upnp::Call call;
    call.service = service;
    call.action = action;
    call.in = std::move(in);
    call.in.prepend({"InstanceID", QStringLiteral("0")});
    call.out = std::move(out);
    if (call.action == "SetAVTransportURI")
        call.media = m_item.info;
    m_isBusy = true;
    m_link->call(call, [this, handler = std::move(handler)](const Answer &answer) {
        m_isBusy = false;
        handler(answer);
        next();
    });
}

void UpnpTransport::sendStop()
{
    m_isStopping = true;
    send(Service::AVTransport, "Stop", {}, {}, [this](const Answer &answer) {
        if (answer.outcome == Answer::Done)
            expect(KelvoRenderer::Stopped);
        else
            forgive(KelvoRenderer::Stopped, "Stop", answer);
    });
}

void UpnpTransport::sendUri()
{
    m_isLoading = true;
    const QString uri = m_item.info.url().toString(QUrl::FullyEncoded);
    send(Service::AVTransport, "SetAVTransportURI", {{"CurrentURI", uri}}, {},
        [this, uri, epoch = m_item.epoch](const Answer &answer) {
            // A file of this computer has got an address for the device.
            uriAnswered(epoch, answer.values.value("CurrentURI", uri), answer);
        });
}

void UpnpTransport::uriAnswered(quint64 epoch, const QString &uri, const Answer &answer)
{
    const bool isWanted = std::exchange(m_isLoading, false) && epoch == m_item.epoch;
    if (answer.outcome == Answer::Done) {
        if (std::exchange(m_isTrackOurs, false))
            m_before.clear();
        m_before += {m_uri, m_foreignUri};
        m_uri = uri;
    }
    if (!isWanted)
        return;
    if (answer.outcome == Answer::Done) {
        m_epoch = epoch;
        m_isStopping = false;
        m_state = KelvoRenderer::Transitioning;
        m_wishes.play = true;
        tell([this, epoch] { Q_EMIT stateReported(epoch, KelvoRenderer::Transitioning); });
        return;
    }
    const bool isBusyPlaying = answer.code == transitionNotAvailable || answer.code == transportLocked;
    if (isBusyPlaying && !std::exchange(m_isStopTried, true)) {
        m_wishes.stop = true;
        m_wishes.load = true;
        return;
    }
    const bool isInPlay = m_state != KelvoRenderer::Stopped;
    m_epoch = epoch;
    fail(loadError(answer), describe("SetAVTransportURI", answer));
    // Else the item before would play on.
    m_wishes.stop = isInPlay && answer.outcome == Answer::Refused;
}

void UpnpTransport::sendPlay()
{
    m_isLoading = true;
    const QString speed = UpnpText::nearestSpeed(m_limits.speeds, m_item.rate);
    send(Service::AVTransport, "Play", {{"Speed", speed}}, {},
        [this, epoch = m_item.epoch](const Answer &answer) { playAnswered(epoch, answer); });
    m_clock.setRate(UpnpText::parseSpeed(speed).value_or(1));
}

void UpnpTransport::playAnswered(quint64 epoch, const Answer &answer)
{
    if (!std::exchange(m_isLoading, false) || epoch != m_item.epoch)
        return;
    // A device that plays by itself once it has an item refuses to be told so.
    if (answer.outcome == Answer::Done || answer.code == transitionNotAvailable) {
        m_isStarting = true;
        ++m_playTries;
        expect(KelvoRenderer::Playing);
        hearEarly();
    } else if (isRefusalPassing(answer)) {
        m_wishes.stop = true;
        m_wishes.load = true;
    } else {
        fail(loadError(answer), describe("Play", answer));
    }
}

/// Some cannot begin while they are still busy with the end of the item before. One that is given the item anew, after
/// a stop, has had the time; what it refuses then it does not play.
bool UpnpTransport::isRefusalPassing(const Answer &answer)
{
    return answer.outcome == Answer::Refused && loadError(answer) == KelvoError::CommandRefused
        && !std::exchange(m_isRefusalTried, true);
}

void UpnpTransport::sendPaused()
{
    const bool pauses = *std::exchange(m_wishes.paused, std::nullopt);
    const State wanted = pauses ? KelvoRenderer::Paused : KelvoRenderer::Playing;
    if (m_state == wanted && m_epoch)
        tell([this, wanted, epoch = *m_epoch] { Q_EMIT stateReported(epoch, wanted); });
    if (m_state == wanted || m_state == KelvoRenderer::Stopped)
        return;
    const char *action = pauses ? "Pause" : "Play";
    QList<QPair<QByteArray, QString>> in;
    if (!pauses)
        in = {{"Speed", UpnpText::nearestSpeed(m_limits.speeds, m_item.rate)}};
    send(Service::AVTransport, action, in, {}, [this, wanted, action](const Answer &answer) {
        if (answer.outcome == Answer::Done)
            expect(wanted);
        else
            forgive(wanted, action, answer);
    });
}

void UpnpTransport::forgive(State wanted, const char *action, const Answer &refusal)
{
    if (refusal.outcome != Answer::Refused) {
        m_isStopping = false;
        trouble(action, refusal);
        return;
    }
    send(Service::AVTransport, "GetTransportInfo", {}, {"CurrentTransportState"},
        [this, wanted, action, refusal](const Answer &answer) {
            const auto state = UpnpText::parseState(answer.values.value("CurrentTransportState"));
            if (state)
                hearState(*state, true);
            if (state == wanted)
                return;
            m_isStopping = false;
            trouble(action, refusal);
            // What was not reported because it was about to change.
            if (state && m_epoch)
                tell([this, epoch = *m_epoch, now = m_state] { Q_EMIT stateReported(epoch, now); });
        });
}

void UpnpTransport::sendSeek()
{
    const double target = *std::exchange(m_wishes.position, std::nullopt);
    send(Service::AVTransport, "Seek",
        {{"Unit", QStringLiteral("REL_TIME")}, {"Target", UpnpText::formatTime(target)}}, {},
        [this, target](const Answer &answer) { seekAnswered(target, answer); });
}

void UpnpTransport::seekAnswered(double target, const Answer &answer)
{
    if (answer.code == illegalTarget) {
        judgeTarget(target, answer);
        return;
    }
    if (answer.outcome != Answer::Done) {
        trouble("Seek", answer);
        return;
    }
    if (!m_epoch || isLoading())
        return;
    m_clock.set(target);
    m_seeked.start();
    tell([this, epoch = *m_epoch, target] { Q_EMIT positionReported(epoch, target); });
}

/// Who seeks before the duration is known may seek past the end, which ends the item.
void UpnpTransport::judgeTarget(double target, const Answer &refusal)
{
    send(Service::AVTransport, "GetPositionInfo", {}, {"TrackDuration"},
        [this, target, refusal](const Answer &answer) {
            hearDuration(answer.values.value("TrackDuration"), From::Event);
            const bool isPastEnd = m_duration > 0 && target >= m_duration;
            if (!isPastEnd || m_epoch.value_or(0) == 0 || isLoading()) {
                trouble("Seek", refusal);
                return;
            }
            const quint64 epoch = *m_epoch;
            unload();
            tell([this, epoch] { Q_EMIT ended(epoch); });
        });
}

void UpnpTransport::sendVolume()
{
    if (m_isMuted && *m_wishes.volume > 0) {
        unmute();
        return;
    }
    const int volume = *std::exchange(m_wishes.volume, std::nullopt);
    const int deviceVolume = UpnpText::toDeviceVolume(volume, m_limits.lowestVolume, m_limits.highestVolume);
    send(Service::RenderingControl, "SetVolume",
        {channel(), {"DesiredVolume", QString::number(deviceVolume)}}, {},
        [this, volume, deviceVolume](const Answer &answer) {
            if (answer.outcome != Answer::Done) {
                trouble("SetVolume", answer);
                return;
            }
            m_setVolume = SetVolume{volume, deviceVolume};
            m_volume = volume;
            tell([this, volume] { Q_EMIT volumeReported(volume); });
        });
}

void UpnpTransport::unmute()
{
    m_isMuted = false;
    // Some come back with volume 0; here it is set next anyway.
    m_volumeBeforeMute = -1;
    send(Service::RenderingControl, "SetMute", {channel(), {"DesiredMute", QStringLiteral("0")}}, {},
        [this](const Answer &answer) {
            if (answer.outcome != Answer::Done)
                trouble("SetMute", answer);
        });
}

void UpnpTransport::sendRate()
{
    m_wishes.rate = false;
    const QString speed = UpnpText::nearestSpeed(m_limits.speeds, m_item.rate);
    const double rate = UpnpText::parseSpeed(speed).value_or(1);
    if (m_state != KelvoRenderer::Playing) {
        // It counts when it plays.
        tell([this, rate] { Q_EMIT rateReported(rate); });
        return;
    }
    send(Service::AVTransport, "Play", {{"Speed", speed}}, {}, [this, rate](const Answer &answer) {
        if (answer.outcome != Answer::Done) {
            trouble("Play", answer);
            return;
        }
        m_clock.setRate(rate);
        m_wishes.knowState = true;
        tell([this, rate] { Q_EMIT rateReported(rate); });
    });
}

void UpnpTransport::askState()
{
    send(Service::AVTransport, "GetTransportInfo", {}, {"CurrentTransportState", "CurrentTransportStatus"},
        [this](const Answer &answer) {
            const auto state = UpnpText::parseState(answer.values.value("CurrentTransportState"));
            if (answer.values.value("CurrentTransportStatus").toUpper() == QLatin1String("ERROR_OCCURRED")
                && state == KelvoRenderer::Stopped && m_epoch && !isLoading())
                fail(KelvoError::UnknownError,
                    QStringLiteral("%1 reports that an error occurred").arg(m_link->deviceName()));
            else if (state)
                hearState(*state, true);
            else if (m_expected)
                m_check.start(m_checkDelay);
            if (state)
                settleDuration(*state);
        });
}

void UpnpTransport::askMedia()
{
    send(Service::AVTransport, "GetMediaInfo", {}, {"CurrentURI", "MediaDuration", "CurrentURIMetaData"},
        [this](const Answer &answer) { hearMedia(answer); });
}

void UpnpTransport::askVolume()
{
    send(
        Service::RenderingControl, "GetVolume", {channel()}, {"CurrentVolume"}, [this](const Answer &answer) {
            bool isNumber = false;
            const int volume = answer.values.value("CurrentVolume").toInt(&isNumber);
            if (isNumber)
                hearVolume(volume);
        });
}

void UpnpTransport::sendPositionQuestion()
{
    if (!m_epoch || isLoading())
        return;
    QList<QByteArray> out = {"RelTime", "TrackDuration", "TrackURI"};
    // Of a short item no event may tell in time.
    if (m_facts.isEmpty())
        out.append("TrackMetaData");
    send(Service::AVTransport, "GetPositionInfo", {}, out, [this, epoch = m_epoch](const Answer &answer) {
        if (epoch == m_epoch && !isLoading())
            hearPosition(answer);
    });
}
