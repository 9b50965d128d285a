// SPDX-License-Identifier: MIT
#include "ItemPlayer.h"

#include "AudioOutput.h"
#include "ErrorMapping.h"
#include "Mailbox.h"
#include "PauseClock.h"
#include "Playbin.h"
#include "RendererValues.h"
#include "VideoOutput.h"

#include <QTimer>

#include <algorithm>
#include <utility>

namespace {
constexpr int watchInterval = 500; // milliseconds
constexpr int deadLooks = 3;
constexpr int redrawDelay = 40; // milliseconds: windows are resized in many small steps
// An item that fails after this much has played: a list of such items may go round for ever.
constexpr qint64 leastProgress = GST_SECOND;

bool hasFactory(const char *name)
{
    GstElementFactory *factory = gst_element_factory_find(name);
    if (factory)
        gst_object_unref(factory);
    return factory != nullptr;
}
} // namespace

ItemPlayer::ItemPlayer(const EngineSettings &settings)
    : m_settings(settings)
    , m_mailbox(std::make_shared<Mailbox>(this))
    , m_pauseClock(std::make_unique<PauseClock>(m_mailbox))
    , m_watchTimer(new QTimer(this))
    , m_redrawTimer(new QTimer(this))
{
    m_redrawTimer->setSingleShot(true);
    m_redrawTimer->setInterval(redrawDelay);
    connect(m_redrawTimer, &QTimer::timeout, this, &ItemPlayer::redrawPaused);
    m_watchTimer->setInterval(
        std::clamp(std::min(settings.localStall, settings.networkStall) / 4, 10, watchInterval));
    connect(m_watchTimer, &QTimer::timeout, this, &ItemPlayer::watch);
    m_time.start();
}

ItemPlayer::~ItemPlayer()
{
    m_mailbox->close();
    m_pipeline.reset(); // before the window that it draws into
}

void ItemPlayer::initialise()
{
    m_video = std::make_unique<VideoOutput>(m_settings.videoSink);
    GError *problem = nullptr;
    const bool started = gst_init_check(nullptr, nullptr, &problem);
    const GstHandles::Error owner(problem);
    if (!started) {
        Q_EMIT initialised(
            problem ? QString::fromUtf8(problem->message) : QStringLiteral("GStreamer does not start"));
        return;
    }
    for (const char *name : {"playbin", "fakesink", "videoconvert", "videoscale"}) {
        if (!hasFactory(name)) {
            Q_EMIT initialised(QStringLiteral("GStreamer has no element \"%1\"").arg(QLatin1String(name)));
            return;
        }
    }
    Q_EMIT initialised({});
}

bool ItemPlayer::createPipeline()
{
    m_pipeline.reset();
    m_reused = false;
    m_mailbox->beginGeneration();
    const auto message = [this](GstMessage *arrived) {
        handle(arrived);
    };
    const auto volume = [this] {
        handleVolume();
    };
    m_pipeline
        = Playbin::create(m_silent ? AudioOutput::makeSilent() : AudioOutput::make(m_settings.audioSink),
            m_video->makeSink(m_blind), m_settings.networkTimeout,
            {m_mailbox, message, volume, m_video->windowId()});
    if (m_pipeline)
        m_pipeline->setVolume(RendererValues::linearVolume(m_volume));
    return m_pipeline != nullptr;
}

void ItemPlayer::load(const Item &item)
{
    forgetItem();
    // Whatever was lost may be back, as a sound server is that was started again.
    if (m_audioLost) {
        m_silent = false;
        m_pipeline.reset();
    }
    // Ready keeps the outputs open from one item to the next. A pipeline that cannot go there is beyond
    // repair.
    if (m_pipeline && m_pipeline->setState(GST_STATE_READY) == GST_STATE_CHANGE_FAILURE)
        m_pipeline.reset();
    m_mailbox->beginGeneration();
    m_item = item;
    m_wantPlaying = !item.paused;
    m_speed = item.speed;
    m_reported = KelvoRenderer::Transitioning;
    m_tags.clear();
    m_missingCodec.clear();
    m_notMedia = false;
    m_reused = true;
    if (!m_pipeline && !createPipeline()) {
        fail(KelvoError::EngineFailed, QStringLiteral("the pipeline cannot be made"));
        return;
    }
    startPipeline();
}

void ItemPlayer::startPipeline()
{
    m_phase = Phase::Loading;
    m_video->forgetFrame();
    m_pauseAcknowledged = false;
    m_frameDue = false;
    m_bufferHold = false;
    m_bufferPercent = 100;
    m_deadLooks = 0;
    m_pipelinePlaying = m_playingAsked = false;
    m_stallWatch.restart(m_time.elapsed());
    m_watchTimer->start();
    m_pipeline->setUri(m_item.uri.toEncoded());
    // Always by way of Paused: only then the duration, the seeks and the speed asked for can be dealt with.
    const GstStateChangeReturn result = m_pipeline->setState(GST_STATE_PAUSED);
    m_live = result == GST_STATE_CHANGE_NO_PREROLL;
    if (result == GST_STATE_CHANGE_FAILURE)
        m_mailbox->post([this] { failUnlessReported(); });
    else if (result != GST_STATE_CHANGE_ASYNC)
        m_mailbox->post([this] { prerolled(); });
}

void ItemPlayer::unload()
{
    forgetItem();
    m_video->setShown(false);
    shutDown();
    // The next start tries the outputs again.
    const bool wasSilent = std::exchange(m_silent, false);
    m_audioLost = false;
    if (std::exchange(m_blind, false) || wasSilent)
        m_pipeline.reset();
    if (std::exchange(m_policyOverride, false))
        Q_EMIT policyOverridden(false);
}

void ItemPlayer::forgetItem()
{
    m_phase = Phase::Idle;
    m_watchTimer->stop();
    m_pauseClock->disarm();
    m_seekWanted.reset();
    m_seekInFlight.reset();
    m_rateWanted = false;
    m_redrawTimer->stop();
    m_video->logStatistics();
}

void ItemPlayer::shutDown()
{
    if (m_pipeline && m_pipeline->setState(GST_STATE_NULL) == GST_STATE_CHANGE_FAILURE)
        m_pipeline.reset();
    m_mailbox->beginGeneration();
    m_video->forgetFrame();
}

void ItemPlayer::pause()
{
    m_wantPlaying = false;
    m_pauseAcknowledged = m_phase == Phase::Loading || m_bufferHold;
    applyState();
}

void ItemPlayer::resume()
{
    m_wantPlaying = true;
    m_pauseAcknowledged = false;
    m_stallWatch.restart(m_time.elapsed());
    checkPauseAt();
    applyState();
}

void ItemPlayer::prerolled()
{
    if (m_phase != Phase::Loading)
        return;
    m_phase = Phase::Loaded;
    noteProgress();
    m_rateWanted = m_rateWanted || m_speed != 1.0;
    if (m_seekWanted)
        seekTo(*std::exchange(m_seekWanted, std::nullopt));
    else
        issueSeek();
    m_video->setShown(m_pipeline->hasVideo());
    checkPauseAt();
    applyState();
    // While the outputs start.
    tellAboutItem();
}

void ItemPlayer::tellAboutItem()
{
    if (m_pipeline->hasAudio())
        noteAudio();
    noteVideo();
    tellDuration();
    if (!m_missingCodec.isEmpty())
        Q_EMIT troubled(m_item.epoch, KelvoError::PartlyPlayable, m_missingCodec);
}

void ItemPlayer::noteAudio()
{
    m_audioLost = m_audioLost && AudioOutput::isSilent(m_pipeline->audioOutput());
    m_tags.set(QStringLiteral("audio-output"), {AudioOutput::describe(m_pipeline->audioOutput())});
}

/// Brings the pipeline to where the want and the holds say it should be.
void ItemPlayer::applyState()
{
    if (m_phase == Phase::Loaded) {
        const bool playing = m_wantPlaying && !m_bufferHold && !m_policyOverride;
        if (playing != m_playingAsked) {
            m_playingAsked = playing;
            m_pauseClock->disarm();
            if (m_pipeline->setState(playing ? GST_STATE_PLAYING : GST_STATE_PAUSED)
                == GST_STATE_CHANGE_FAILURE)
                m_mailbox->post([this] { failUnlessReported(); });
        }
    }
    settle();
}

/// Reports the state once the pipeline is where it should be.
void ItemPlayer::settle()
{
    if (m_phase != Phase::Loading && m_phase != Phase::Loaded)
        return;
    const bool waiting = m_phase == Phase::Loading || m_bufferHold;
    if (!m_wantPlaying || (m_policyOverride && m_phase == Phase::Loaded)) {
        if (m_pauseAcknowledged || (m_phase == Phase::Loaded && !m_pipelinePlaying))
            report(KelvoRenderer::Paused);
    } else if (waiting) {
        report(KelvoRenderer::Transitioning);
    } else if (m_pipelinePlaying) {
        report(KelvoRenderer::Playing);
    }
    takeDueFrame();
}

void ItemPlayer::report(KelvoRenderer::State state)
{
    if (state == m_reported)
        return;
    m_reported = state;
    m_frameDue = state == KelvoRenderer::Paused && m_framesWanted;
    Q_EMIT stateReached(m_item.epoch, state);
}

/// Whether standing still would be wrong at the moment.
bool ItemPlayer::wantsToMove() const
{
    return m_phase == Phase::Loading
        || (m_phase == Phase::Loaded && (m_seekInFlight || (m_wantPlaying && !m_policyOverride)));
}

void ItemPlayer::watch()
{
    noteProgress();
    if (!wantsToMove()) {
        m_stallWatch.restart(m_time.elapsed());
        return;
    }
    const int limit = ErrorMapping::isRemote(m_item.uri) ? m_settings.networkStall : m_settings.localStall;
    if (isDead())
        fail(KelvoError::CorruptMedia, QStringLiteral("the file holds nothing that can be played"));
    else if (m_stallWatch.isStalled(m_time.elapsed(), position(), m_bufferPercent, limit))
        fail(KelvoError::Stalled, QStringLiteral("no progress for %1 seconds").arg(limit / 1000.0));
}

/// GStreamer drops the error of a demuxer that fails while it is still being connected. What is left is a pipeline
/// that neither prerolls nor fails: with a local file, one in which no thread streams any more.
bool ItemPlayer::isDead()
{
    const bool idle
        = m_phase == Phase::Loading && !ErrorMapping::isRemote(m_item.uri) && !m_pipeline->isStreaming();
    m_deadLooks = idle ? m_deadLooks + 1 : 0;
    return m_deadLooks >= deadLooks;
}

void ItemPlayer::endItem(bool progressed)
{
    m_phase = Phase::Ended;
    m_watchTimer->stop();
    m_pauseClock->disarm();
    Q_EMIT ended(m_item.epoch, progressed);
}

void ItemPlayer::fail(KelvoError::Code code, const QString &message)
{
    const bool progressed = position() > leastProgress;
    forgetItem();
    m_video->setShown(false);
    // After an error only a pipeline that was shut down completely can be relied on.
    shutDown();
    m_video->forgetCaps();
    Q_EMIT failed(m_item.epoch, code, message, progressed);
}

/// A state change was refused; the error message that usually says why was queued before this call.
void ItemPlayer::failUnlessReported()
{
    // One that served the item before may hold an output that broke meanwhile, of which nothing was heard any more.
    if (m_phase == Phase::Loading && m_reused)
        restart();
    else if (m_phase != Phase::Idle)
        fail(KelvoError::EngineFailed, QStringLiteral("the pipeline refuses to start"));
}

/// An output is gone and something that only keeps the time takes its place: playback goes on where it was.
void ItemPlayer::restart()
{
    const qint64 resumeAt = position();
    m_pauseClock->disarm();
    m_seekInFlight.reset();
    if (!createPipeline()) {
        fail(KelvoError::EngineFailed, QStringLiteral("the pipeline cannot be made"));
        return;
    }
    if (resumeAt > 0)
        m_seekWanted = resumeAt;
    startPipeline();
}
