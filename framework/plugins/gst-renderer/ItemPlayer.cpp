// SPDX-License-Identifier: MIT
#include "ItemPlayer.h"

#include "AudioOutput.h"
#include "DecoderRanks.h"
#include "Mailbox.h"
#include "Playbin.h"
#include "VideoPresenter.h"

#include <QTimer>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
constexpr int watchInterval = 500; // milliseconds
constexpr qint64 second = GST_SECOND;
// An item that fails after this much has played: a list of such items may go round for ever.
constexpr qint64 leastProgress = GST_SECOND;
constexpr qint64 progress = GST_SECOND / 10; // less than this is not playing
constexpr qint64 shortOfEnd = GST_SECOND; // an item that ends this much too early was cut off

/// What keeps GStreamer from being used; empty when nothing does.
QString startGStreamer()
{
    GlibHandles::Error problem;
    if (!gst_init_check(nullptr, nullptr, problem.out()))
        return problem ? QString::fromUtf8(problem->message) : QStringLiteral("GStreamer does not start");
    DecoderRanks::preferSmallDecoders();
    for (const char *name : {"playbin", "fakesink", "videoconvert", "videoscale"}) {
        if (!GstHandles::ElementFactory(gst_element_factory_find(name)))
            return QStringLiteral("GStreamer has no element \"%1\"").arg(QLatin1String(name));
    }
    return {};
}

QString inSeconds(qint64 time)
{
    return QString::number(double(time) / GST_SECOND, 'f', 1);
}
} // namespace

ItemPlayer::ItemPlayer(const EngineSettings &settings)
    : m_settings(settings)
    , m_mailbox(std::make_shared<Mailbox>(this))
    , m_pipeline(settings, m_mailbox, this)
    , m_messages(this)
    , m_position(m_state, m_pipeline, m_mailbox, this)
    , m_watchTimer(new QTimer(this))
{
    m_watchTimer->setInterval(
        std::clamp(std::min(settings.localStall, settings.networkStall) / 4, 10, watchInterval));
    connect(m_watchTimer, &QTimer::timeout, this, &ItemPlayer::look);
    m_time.start();
    connectParts();
    connectPosition();
}

ItemPlayer::~ItemPlayer()
{
    m_mailbox->close();
}

void ItemPlayer::connectParts()
{
    connect(&m_pipeline, &LastingPipeline::messageArrived, this, &ItemPlayer::hear);
    connect(&m_pipeline, &LastingPipeline::volumeMoved, this, &ItemPlayer::volumeChanged);
    connect(&m_messages, &PipelineMessages::stateReached, this, &ItemPlayer::takeStateChange);
    connect(&m_messages, &PipelineMessages::asyncDone, this, &ItemPlayer::takeAsyncDone);
    connect(&m_messages, &PipelineMessages::endReached, this, &ItemPlayer::takeEnd);
    connect(&m_messages, &PipelineMessages::failed, this, &ItemPlayer::takeFailure);
    connect(&m_messages, &PipelineMessages::codecMissing, this, &ItemPlayer::takeMissingCodec);
    connect(&m_messages, &PipelineMessages::typeUnknown, this,
        [this](const QByteArray &mediaType) { m_findings.noteUnplayable(mediaType); });
    connect(&m_messages, &PipelineMessages::buffered, this, &ItemPlayer::takeBuffering);
    connect(&m_messages, &PipelineMessages::tagsFound, this, [this](const GstTagList *tags) {
        m_findings.facts().merge(tags);
        tellFacts();
    });
    connect(&m_messages, &PipelineMessages::durationChanged, this, &ItemPlayer::tellDuration);
    connect(&m_messages, &PipelineMessages::outputRequested, this,
        [this](bool playing) { takeOverride(!playing); });
    connect(&m_messages, &PipelineMessages::clockLost, this, &ItemPlayer::takeClockLoss);
}

void ItemPlayer::connectPosition()
{
    connect(&m_position, &PlayPosition::seekBegun, this, [this] { m_watch.restart(m_time.elapsed()); });
    connect(&m_position, &PlayPosition::seekRefused, this, [this] { refuse(m_item.uri.toDisplayString()); });
    connect(&m_position, &PlayPosition::speedRefused, this,
        [this] { refuse(QStringLiteral("the speed cannot be changed")); });
    connect(&m_position, &PlayPosition::speedChanged, this,
        [this](double speed) { Q_EMIT speedChanged(m_item.epoch, speed); });
    connect(&m_position, &PlayPosition::endReached, this, [this] { endItem(true); });
    connect(&m_position, &PlayPosition::pausePointReached, this, [this] {
        m_state.pauseHere();
        Q_EMIT pausedAtPosition(m_item.epoch);
        applyState();
    });
}

void ItemPlayer::initialise()
{
    m_video = std::make_unique<VideoPresenter>(m_settings.videoSink);
    connect(m_video.get(), &VideoPresenter::redrawDue, this, &ItemPlayer::redrawPaused);
    connect(m_video.get(), &VideoPresenter::colorKeyChanged, this, &ItemPlayer::colorKeyChanged);
    Q_EMIT initialised(startGStreamer());
}

void ItemPlayer::load(const Item &item)
{
    forgetItem();
    m_item = item;
    m_state.beginItem(item.paused);
    m_position.beginItem(item.speed);
    m_findings.clear();
    if (m_pipeline.prepare(m_video->output()))
        startPipeline();
    else
        fail(KelvoError::EngineFailed, QStringLiteral("the pipeline cannot be made"));
}

void ItemPlayer::startPipeline()
{
    m_state.beginLoading();
    m_video->beginItem();
    m_watch.begin(m_time.elapsed(),
        ErrorMapping::isRemote(m_item.uri) ? m_settings.networkStall : m_settings.localStall);
    m_watchTimer->start();
    m_pipeline->setUri(m_item.uri.toEncoded());
    // Always by way of Paused: only then the duration, the seeks and the speed asked for can be dealt with.
    const GstStateChangeReturn result = m_pipeline->setState(GST_STATE_PAUSED);
    m_state.setLive(result == GST_STATE_CHANGE_NO_PREROLL);
    if (result == GST_STATE_CHANGE_FAILURE)
        m_mailbox->post([this] { failUnlessReported(); });
    else if (result != GST_STATE_CHANGE_ASYNC)
        m_mailbox->post([this] { prerolled(); });
}

/// An output is gone and something that only keeps the time takes its place: playback goes on where it was.
void ItemPlayer::restart()
{
    const qint64 here = m_position.leavePipeline();
    if (!m_pipeline.renew(m_video->output())) {
        fail(KelvoError::EngineFailed, QStringLiteral("the pipeline cannot be made"));
        return;
    }
    m_position.resumeAt(here);
    startPipeline();
}

void ItemPlayer::unload()
{
    forgetItem();
    m_video->output().setShown(false);
    m_pipeline.release();
    m_video->output().forgetFrame();
    if (m_state.setOverridden(false))
        Q_EMIT policyOverridden(false);
}

void ItemPlayer::forgetItem()
{
    m_state.forgetItem();
    m_watchTimer->stop();
    m_position.forgetItem();
    m_video->endItem();
}

void ItemPlayer::shutDown()
{
    m_pipeline.shutDown();
    m_video->output().forgetFrame();
}

void ItemPlayer::pause()
{
    m_state.pause();
    applyState();
}

void ItemPlayer::resume()
{
    m_state.resume();
    m_watch.restart(m_time.elapsed());
    m_position.checkPausePoint();
    applyState();
}

void ItemPlayer::seek(int seconds, bool relative)
{
    m_position.seek(seconds, relative);
}

void ItemPlayer::setSpeed(double speed)
{
    m_position.setSpeed(speed);
}

void ItemPlayer::setPauseAt(uint seconds)
{
    m_position.setPauseAt(seconds * second);
}

void ItemPlayer::dropPauseAt()
{
    m_position.dropPauseAt();
}

void ItemPlayer::setVolume(int volume)
{
    m_pipeline.setVolume(volume);
    Q_EMIT volumeChanged(volume);
}

void ItemPlayer::placeVideo(uint window, const QRect &rectangle)
{
    if (m_video)
        m_video->place(window, rectangle);
}

void ItemPlayer::setVideoAutopaint(bool autopaint)
{
    if (m_video)
        m_video->output().setAutopaint(autopaint);
}

void ItemPlayer::setFrameOnPause(bool wanted)
{
    if (m_video)
        m_video->setTakesFrames(wanted);
}

void ItemPlayer::answerExactPosition(const KelvoAnswer &answer)
{
    answer.deliver({QString(KelvoRenderer::PropertyPosition), double(m_position.current()) / second});
}

void ItemPlayer::prerolled()
{
    if (!m_state.isLoading())
        return;
    m_state.prerolled();
    m_pipeline.claimVolume();
    m_position.begin();
    m_video->output().setShown(m_pipeline->hasVideo());
    m_position.checkPausePoint();
    applyState();
    // While the outputs start.
    tellAboutItem();
}

/// Brings the pipeline to where the want and the holds say it should be.
void ItemPlayer::applyState()
{
    if (const std::optional<bool> playing = m_state.order()) {
        m_position.stopClock();
        if (m_pipeline->setState(*playing ? GST_STATE_PLAYING : GST_STATE_PAUSED) == GST_STATE_CHANGE_FAILURE)
            m_mailbox->post([this] { failUnlessReported(); });
    }
    settle();
}

/// Reports the state once the pipeline is where it should be.
void ItemPlayer::settle()
{
    if (const std::optional<KelvoRenderer::State> state = m_state.news())
        report(*state);
    takeDueFrame();
}

void ItemPlayer::report(KelvoRenderer::State state)
{
    m_video->notePause(state == KelvoRenderer::Paused);
    Q_EMIT stateReached(m_item.epoch, state);
}

void ItemPlayer::look()
{
    PlaybackWatch::Sight sight;
    sight.position = m_position.note();
    sight.bufferPercent = m_state.bufferPercent();
    sight.isExpectedToMove = m_state.wantsToMove(m_position.isSeeking());
    sight.isLifeless
        = m_state.isLoading() && !ErrorMapping::isRemote(m_item.uri) && !m_pipeline->isStreaming();
    switch (m_watch.look(sight, m_time.elapsed())) {
    case PlaybackWatch::Verdict::Fine:
        return;
    case PlaybackWatch::Verdict::Dead:
        return fail(KelvoError::CorruptMedia, QStringLiteral("the file holds nothing that can be played"));
    case PlaybackWatch::Verdict::Stalled:
        return fail(KelvoError::Stalled,
            QStringLiteral("no progress for %1 seconds").arg(m_watch.stallLimit() / 1000.0));
    }
}

void ItemPlayer::endItem(bool progressed)
{
    m_state.end();
    m_watchTimer->stop();
    m_position.stopClock();
    Q_EMIT ended(m_item.epoch, progressed);
}

void ItemPlayer::fail(KelvoError::Code code, const QString &message)
{
    const bool progressed = m_position.current() > leastProgress;
    forgetItem();
    m_video->output().setShown(false);
    // After an error only a pipeline that was shut down completely can be relied on.
    shutDown();
    m_video->output().forgetCaps();
    Q_EMIT failed(m_item.epoch, code, message, progressed);
}

/// A state change was refused; the error message that usually says why was queued before this call.
void ItemPlayer::failUnlessReported()
{
    // One that served the item before may hold an output that broke meanwhile, of which nothing was heard any more.
    if (m_state.isLoading() && m_pipeline.isReused())
        restart();
    else if (m_state.phase() != PlayState::Phase::Idle)
        fail(KelvoError::EngineFailed, QStringLiteral("the pipeline refuses to start"));
}

void ItemPlayer::refuse(const QString &what)
{
    Q_EMIT troubled(m_item.epoch, KelvoError::NotSeekable, what);
}

void ItemPlayer::hear(GstMessage *message)
{
    if (m_state.isLoading() || m_state.isLoaded())
        m_messages.read(message, *m_pipeline.get());
}

void ItemPlayer::takeStateChange(bool playing)
{
    m_state.pipelineReached(playing);
    settle();
    if (playing)
        m_position.checkPausePoint();
}

void ItemPlayer::takeAsyncDone()
{
    if (m_state.isLoading()) {
        prerolled();
        return;
    }
    tellDuration();
    m_position.seekDone();
    takeDueFrame();
}

void ItemPlayer::takeEnd()
{
    // The end of what was playing before the seek: the seek counts.
    if (m_position.isSeeking() || !m_state.isLoaded())
        return;
    if (m_position.speed() < 0) {
        m_position.turnAround();
        return;
    }
    const qint64 reached = m_position.reachable();
    const std::optional<qint64> duration = m_pipeline->duration();
    if (duration && *duration - reached > shortOfEnd)
        Q_EMIT troubled(m_item.epoch, KelvoError::PrematureEnd,
            QStringLiteral("ended after %1 of %2 seconds").arg(inSeconds(reached), inSeconds(*duration)));
    endItem(reached > progress);
}

void ItemPlayer::takeFailure(PipelineFailure failure)
{
    failure.uri = m_item.uri;
    failure.notMedia = m_findings.isText();
    const QByteArray scheme = m_item.uri.scheme().toLatin1();
    failure.noHandler = !gst_uri_protocol_is_supported(GST_URI_SRC, scheme.constData());
    const KelvoError::Code code = ErrorMapping::codeOf(failure);
    OutputFallbacks::Answer answer;
    if (failure.fromAudioOutput)
        answer = m_pipeline.fallbacks().audioFailed();
    else if (failure.fromVideoOutput)
        answer = m_pipeline.fallbacks().videoFailed(m_video->output().choseAdaptor());
    if (answer.tell)
        Q_EMIT troubled(m_item.epoch, code, failure.text);
    if (answer.replace)
        restart();
    else
        fail(code, failure.text);
}

void ItemPlayer::takeMissingCodec(const QString &text)
{
    if (m_state.isLoading())
        m_findings.noteMissingCodec(text);
    else
        Q_EMIT troubled(m_item.epoch, KelvoError::PartlyPlayable, text);
}

void ItemPlayer::takeBuffering(int percent)
{
    if (!m_state.setBuffered(percent))
        return;
    Q_EMIT buffering(m_item.epoch, percent);
    applyState();
}

void ItemPlayer::takeOverride(bool overridden)
{
    if (!m_state.setOverridden(overridden))
        return;
    Q_EMIT policyOverridden(overridden);
    m_watch.restart(m_time.elapsed());
    applyState();
}

void ItemPlayer::takeClockLoss()
{
    m_pipeline->setState(GST_STATE_PAUSED);
    m_state.pipelinePaused();
    applyState();
}

void ItemPlayer::tellAboutItem()
{
    TagCollector &facts = m_findings.facts();
    if (m_pipeline->hasAudio()) {
        GstElement *output = m_pipeline->audioOutput();
        m_pipeline.fallbacks().audioPlays(AudioOutput::isSilent(output));
        facts.set(QStringLiteral("audio-output"), {AudioOutput::describe(output)});
    }
    if (m_pipeline->hasVideo()) {
        facts.set(QStringLiteral("video-output"), {m_video->output().describe()});
        m_video->noteColorKey();
    }
    tellDuration();
    if (!m_findings.missingCodec().isEmpty())
        Q_EMIT troubled(m_item.epoch, KelvoError::PartlyPlayable, m_findings.missingCodec());
}

void ItemPlayer::tellDuration()
{
    if (!m_state.isLoaded())
        return; // not known before
    if (const std::optional<qint64> duration = m_pipeline->duration())
        m_findings.facts().set(
            QStringLiteral("duration"), {int(std::lround(double(*duration) / GST_SECOND))});
    tellFacts();
}

/// Held back until the item is prepared: until then its streams still complete one another's facts.
void ItemPlayer::tellFacts()
{
    if (!m_state.isLoaded())
        return;
    for (const TagCollector::Fact &news : m_findings.facts().takeNews())
        Q_EMIT fact(m_item.epoch, news.key, news.values);
}

/// While paused a seek to where playback is makes the same picture again.
void ItemPlayer::redrawPaused()
{
    // A picture that is still to come may have been made before the window had its new size.
    if (m_state.isOnItsWay() || (m_state.isLoaded() && m_position.isSeeking()))
        m_video->redrawLater();
    else if (m_state.stands() && m_pipeline->hasVideo() && m_pipeline->isSeekable())
        m_position.seekOnTheSpot();
}

/// Once the pipeline stands still, the last picture that went into it is the one on the screen.
void ItemPlayer::takeDueFrame()
{
    if (!m_state.isLoaded() || m_state.isPlaying() || !m_position.isAtRest())
        return;
    if (const VideoFrame frame = m_video->takeDueFrame())
        Q_EMIT frameTaken(m_item.epoch, frame);
}
