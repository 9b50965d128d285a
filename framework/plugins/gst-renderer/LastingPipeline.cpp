// SPDX-License-Identifier: MIT
#include "LastingPipeline.h"

#include "AudioOutput.h"
#include "Mailbox.h"
#include "Playbin.h"
#include "RendererValues.h"
#include "VideoOutput.h"

LastingPipeline::LastingPipeline(
    const EngineSettings &settings, std::shared_ptr<Mailbox> mailbox, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_mailbox(std::move(mailbox))
{
}

LastingPipeline::~LastingPipeline() = default;

bool LastingPipeline::prepare(VideoOutput &video)
{
    if (m_fallbacks.retryAudio())
        m_playbin.reset();
    // Ready keeps the outputs open. A pipeline that cannot go there is beyond repair.
    if (m_playbin && m_playbin->setState(GST_STATE_READY) == GST_STATE_CHANGE_FAILURE)
        m_playbin.reset();
    m_mailbox->beginGeneration();
    m_isReused = true;
    m_hasStream = false;
    if (!m_playbin)
        return renew(video);
    // A sound server gives each stream the loudest volume unless it is told another one, and each item is a stream.
    m_playbin->setVolume(RendererValues::linearVolume(m_volume));
    return true;
}

bool LastingPipeline::renew(VideoOutput &video)
{
    m_playbin.reset();
    m_isReused = false;
    m_hasStream = false;
    m_mailbox->beginGeneration();
    const auto message = [this](GstMessage *arrived) {
        Q_EMIT messageArrived(arrived);
    };
    const auto volume = [this] {
        readVolume();
    };
    m_playbin = Playbin::create(
        m_fallbacks.isSilent() ? AudioOutput::makeSilent() : AudioOutput::make(m_settings.audioSink),
        video.makeSink(m_fallbacks.pictures()), m_settings.networkTimeout,
        {m_mailbox, message, volume, video.windowId()});
    if (m_playbin)
        m_playbin->setVolume(RendererValues::linearVolume(m_volume));
    return m_playbin != nullptr;
}

void LastingPipeline::shutDown()
{
    if (m_playbin && m_playbin->setState(GST_STATE_NULL) == GST_STATE_CHANGE_FAILURE)
        m_playbin.reset();
    m_mailbox->beginGeneration();
}

void LastingPipeline::release()
{
    shutDown();
    if (m_fallbacks.retryAll())
        m_playbin.reset();
}

void LastingPipeline::setVolume(int volume)
{
    m_volume = volume;
    if (m_playbin)
        m_playbin->setVolume(RendererValues::linearVolume(volume));
}

void LastingPipeline::claimVolume()
{
    m_hasStream = true;
    m_playbin->setVolume(RendererValues::linearVolume(m_volume));
}

void LastingPipeline::readVolume()
{
    if (!m_playbin || !m_hasStream)
        return;
    const int volume = RendererValues::cubicVolume(m_playbin->volume());
    if (volume == m_volume)
        return;
    m_volume = volume;
    Q_EMIT volumeMoved(volume);
}
