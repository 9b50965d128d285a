// SPDX-License-Identifier: MIT
#include "UpnpTransport.h"

#include "UpnpText.h"

#include <utility>

using Upnp::Answer;
using Upnp::Service;

namespace {
// AVTransport's own refusal.
constexpr int illegalTarget = 711;

Upnp::Call transportCall(
    const QByteArray &action, QList<QPair<QByteArray, QString>> in = {}, QList<QByteArray> out = {})
{
    return {.service = Service::AVTransport, .action = action, .in = std::move(in), .out = std::move(out)};
}
} // namespace

UpnpTransport::UpnpTransport(std::unique_ptr<RendererLink> link, const Patience &patience)
    : m_requests(std::move(link))
    , m_volume(&m_requests)
    , m_playback(this, &m_requests, &m_wishes, patience)
{
    const RendererLink *device = m_requests.link();
    connect(device, &RendererLink::reported, this, &UpnpTransport::hear);
    connect(device, &RendererLink::renamed, this, &UpnpTransport::nameReported);
    connect(device, &RendererLink::limitsKnown, this, [this](const Upnp::RendererLimits &limits) {
        m_abilities.setLimits(limits);
        m_volume.setLimits(limits);
        next();
    });
    connect(&m_requests, &RendererRequests::answered, this, &UpnpTransport::next);
    connect(&m_playback, &RendererPlayback::wished, this, &UpnpTransport::next);
    connect(&m_playback, &RendererPlayback::stateEntered, this, [this] { m_abilities.forgetActions(); });
    connectReports();
    m_wishes.knowState = true;
    next();
}

UpnpTransport::~UpnpTransport() = default;

/// Queued, so that whoever hears of it may do anything, also delete this object.
void UpnpTransport::connectReports()
{
    constexpr auto queued = Qt::QueuedConnection;
    connect(&m_requests, &RendererRequests::troubled, this, &UpnpTransport::troubled, queued);
    connect(&m_volume, &UpnpVolume::reported, this, &UpnpTransport::volumeReported, queued);
    const RendererPlayback *playback = &m_playback;
    connect(playback, &RendererPlayback::stateReported, this, &UpnpTransport::stateReported, queued);
    connect(playback, &RendererPlayback::ended, this, &UpnpTransport::ended, queued);
    connect(playback, &RendererPlayback::stopped, this, &UpnpTransport::stopped, queued);
    connect(playback, &RendererPlayback::failed, this, &UpnpTransport::failed, queued);
    connect(playback, &RendererPlayback::positionReported, this, &UpnpTransport::positionReported, queued);
    connect(playback, &RendererPlayback::seeked, this, &UpnpTransport::seeked, queued);
    connect(playback, &RendererPlayback::durationReported, this, &UpnpTransport::durationReported, queued);
    connect(playback, &RendererPlayback::fact, this, &UpnpTransport::fact, queued);
    connect(playback, &RendererPlayback::replaced, this, &UpnpTransport::replaced, queued);
}

void UpnpTransport::load(const Item &item)
{
    m_item = item;
    // Some that are given an item while they pause fall back into the pause once it plays.
    const bool isPaused = m_playback.state() == KelvoRenderer::Paused;
    m_playback.prepare(isPaused);
    m_playback.stopEnded();
    m_wishes.load = true;
    m_wishes.stop = isPaused;
    if (item.paused)
        m_wishes.paused = true;
    next();
}

void UpnpTransport::unload()
{
    m_playback.leave();
    m_wishes.stop = true;
    next();
}

void UpnpTransport::pause()
{
    m_wishes.paused = true;
    next();
}

void UpnpTransport::resume()
{
    m_wishes.paused = false;
    next();
}

void UpnpTransport::seek(double seconds)
{
    m_wishes.position = seconds;
    next();
}

void UpnpTransport::setVolume(int volume)
{
    m_volume.set(volume);
    next();
}

void UpnpTransport::setRate(double rate)
{
    m_item.rate = rate;
    m_wishes.rate = true;
    next();
}

void UpnpTransport::askPosition()
{
    m_wishes.knowPosition = true;
    next();
}

void UpnpTransport::next()
{
    while (!m_requests.isBusy() && sendFirstWish()) { }
}

/// Grants the most urgent wish. False when there is none that can be granted now.
bool UpnpTransport::sendFirstWish()
{
    const State state = m_playback.state();
    const bool isInPlay = state == KelvoRenderer::Playing || state == KelvoRenderer::Paused;
    const bool isStarting = m_playback.isStarting();
    if (std::exchange(m_wishes.stop, false))
        sendStop();
    else if (std::exchange(m_wishes.load, false))
        sendUri();
    else if (std::exchange(m_wishes.play, false))
        sendPlay();
    else if (std::exchange(m_wishes.knowState, false))
        askState();
    else if (m_wishes.paused && !isStarting && state != KelvoRenderer::Transitioning)
        sendPaused();
    else if (m_wishes.position && !isStarting && isInPlay)
        sendSeek();
    else if (m_volume.sendCommand())
        return true;
    else if (m_wishes.rate && !isStarting)
        sendRate();
    else if (std::exchange(m_wishes.knowMedia, false))
        askMedia();
    else if (m_volume.sendQuestion())
        return true;
    else if (std::exchange(m_wishes.knowPosition, false))
        sendPositionQuestion();
    else
        return false;
    return true;
}

void UpnpTransport::sendStop()
{
    m_playback.stopSent();
    m_requests.send(transportCall("Stop"), [this](const Answer &answer) {
        if (answer.outcome == Answer::Done)
            m_playback.expect(KelvoRenderer::Stopped);
        else
            forgive(KelvoRenderer::Stopped, "Stop", answer);
    });
}

void UpnpTransport::sendUri()
{
    m_playback.loadSent();
    const QString uri = m_item.info.url().toString(QUrl::FullyEncoded);
    Upnp::Call call = transportCall("SetAVTransportURI", {{"CurrentURI", uri}});
    call.media = m_item.info;
    m_requests.send(call, [this, uri, epoch = m_item.epoch](const Answer &answer) {
        // A file of this computer has got an address for the device.
        const QString given = answer.values.value("CurrentURI", uri);
        m_playback.uriAnswered(epoch, given, answer, epoch == m_item.epoch);
    });
}

void UpnpTransport::sendPlay()
{
    m_playback.loadSent();
    const QString speed = m_abilities.nearestSpeed(m_item.rate);
    m_requests.send(
        transportCall("Play", {{"Speed", speed}}), [this, epoch = m_item.epoch](const Answer &answer) {
            m_playback.playAnswered(answer, epoch == m_item.epoch);
        });
}

void UpnpTransport::sendPaused()
{
    const bool pauses = *std::exchange(m_wishes.paused, std::nullopt);
    const State wanted = pauses ? KelvoRenderer::Paused : KelvoRenderer::Playing;
    const State state = m_playback.state();
    if (state == wanted)
        m_playback.tellState();
    if (state == wanted || state == KelvoRenderer::Stopped)
        return;
    const char *action = pauses ? "Pause" : "Play";
    Upnp::Call call = transportCall(action);
    if (!pauses)
        call.in = {{"Speed", m_abilities.nearestSpeed(m_item.rate)}};
    m_requests.send(call, [this, wanted, action](const Answer &answer) {
        if (answer.outcome == Answer::Done)
            m_playback.expect(wanted);
        else
            forgive(wanted, action, answer);
    });
}

/// A refused change of state is none when the device is in that state already.
void UpnpTransport::forgive(State wanted, const char *action, const Answer &refusal)
{
    if (refusal.outcome != Answer::Refused) {
        m_playback.stopEnded();
        m_requests.trouble(action, refusal);
        return;
    }
    m_requests.send(transportCall("GetTransportInfo", {}, {"CurrentTransportState"}),
        [this, wanted, action, refusal](const Answer &answer) {
            const auto state = UpnpText::parseState(answer.values.value("CurrentTransportState"));
            if (state)
                m_playback.hearState(*state, true);
            if (state == wanted)
                return;
            m_playback.stopEnded();
            m_requests.trouble(action, refusal);
            // What was not reported because it was about to change.
            if (state)
                m_playback.tellState();
        });
}

void UpnpTransport::sendSeek()
{
    const double target = *std::exchange(m_wishes.position, std::nullopt);
    const QString time = UpnpText::formatTime(target);
    m_requests.send(transportCall("Seek", {{"Unit", QStringLiteral("REL_TIME")}, {"Target", time}}),
        [this, target](const Answer &answer) {
            if (answer.outcome == Answer::Done)
                m_playback.seekAccepted(target);
            else if (answer.code == illegalTarget)
                judgeTarget(target, answer);
            else
                m_requests.trouble("Seek", answer);
        });
}

/// Who seeks before the duration is known may seek past the end, which ends the item.
void UpnpTransport::judgeTarget(double target, const Answer &refusal)
{
    m_requests.send(transportCall("GetPositionInfo", {}, {"TrackDuration"}),
        [this, target, refusal](const Answer &answer) {
            m_playback.hearDuration(answer.values.value("TrackDuration"), false);
            const double duration = m_playback.duration();
            const bool isPastEnd = duration > 0 && target >= duration;
            if (isPastEnd && m_playback.isOurs() && !m_playback.isLoading())
                m_playback.endBefore();
            else
                m_requests.trouble("Seek", refusal);
        });
}

void UpnpTransport::sendRate()
{
    m_wishes.rate = false;
    const QString speed = m_abilities.nearestSpeed(m_item.rate);
    const double rate = UpnpText::parseSpeed(speed).value_or(1);
    if (m_playback.state() != KelvoRenderer::Playing) {
        tellRate(rate); // It counts when it plays.
        return;
    }
    m_requests.send(transportCall("Play", {{"Speed", speed}}), [this, rate](const Answer &answer) {
        if (answer.outcome != Answer::Done) {
            m_requests.trouble("Play", answer);
            return;
        }
        m_wishes.knowState = true;
        tellRate(rate);
    });
}

void UpnpTransport::tellRate(double rate)
{
    QMetaObject::invokeMethod(
        this, [this, rate] { Q_EMIT rateReported(rate); }, Qt::QueuedConnection);
}

void UpnpTransport::askState()
{
    m_requests.send(
        transportCall("GetTransportInfo", {}, {"CurrentTransportState", "CurrentTransportStatus"}),
        [this](const Answer &answer) { m_playback.stateAnswered(answer); });
}

void UpnpTransport::askMedia()
{
    m_requests.send(transportCall("GetMediaInfo", {}, {"CurrentURI", "MediaDuration", "CurrentURIMetaData"}),
        [this](const Answer &answer) { m_playback.mediaAnswered(answer); });
}

void UpnpTransport::sendPositionQuestion()
{
    const std::optional<quint64> epoch = m_playback.epoch();
    if (!epoch || m_playback.isLoading())
        return;
    QList<QByteArray> out = {"RelTime", "TrackDuration", "TrackURI"};
    // Of a short item no event may tell in time.
    if (!m_playback.isDescribed())
        out.append("TrackMetaData");
    m_requests.send(
        transportCall("GetPositionInfo", {}, std::move(out)), [this, epoch](const Answer &answer) {
            if (epoch == m_playback.epoch() && !m_playback.isLoading())
                m_playback.positionAnswered(answer);
        });
}

void UpnpTransport::hear(const Upnp::Report &report)
{
    m_playback.hear(report);
    if (report.isUnreadable)
        m_volume.doubt();
    m_volume.hear(report.values);
    // Which actions are possible changes with the state: a late event is about one that is over.
    const auto state = UpnpText::parseState(report.values.value("TransportState"));
    if (report.values.contains("CurrentTransportActions")
        && state.value_or(m_playback.state()) == m_playback.state())
        m_abilities.setActions(report.values.value("CurrentTransportActions"));
    next();
}
