// SPDX-License-Identifier: MIT
#include "ItemPlayer.h"

#include "Playbin.h"
#include "VideoOutput.h"

#include <QTimer>

void ItemPlayer::placeVideo(uint window, const QRect &rectangle)
{
    if (m_video && m_video->place(window, rectangle))
        m_redrawTimer->start();
}

void ItemPlayer::setVideoAutopaint(bool autopaint)
{
    if (m_video)
        m_video->setAutopaint(autopaint);
}

void ItemPlayer::setFrameOnPause(bool wanted)
{
    m_framesWanted = wanted;
    if (m_video)
        m_video->setKeepsFrames(wanted);
}

/// While playing the next picture has the new size. While paused there is no next one: a seek to where playback is
/// makes the same picture again.
void ItemPlayer::redrawPaused()
{
    const bool stands = m_phase == Phase::Loaded && !m_pipelinePlaying && !m_playingAsked;
    if (!stands || !m_pipeline->hasVideo() || !m_pipeline->isSeekable())
        return;
    if (m_seekInFlight) {
        // Its picture may have been made before the window had its new size.
        m_redrawTimer->start();
        return;
    }
    m_rateWanted = true;
    issueSeek();
}

void ItemPlayer::noteVideo()
{
    if (!m_pipeline->hasVideo())
        return;
    m_tags.set(QStringLiteral("video-output"), {m_video->describe()});
    const uint key = m_video->colorKey();
    if (key != m_colorKey)
        Q_EMIT colorKeyChanged(key);
    m_colorKey = key;
}

/// Once the pipeline stands still, the last picture that went into it is the one on the screen.
void ItemPlayer::takeDueFrame()
{
    if (!m_frameDue || m_phase != Phase::Loaded || m_pipelinePlaying || m_seekInFlight || m_seekWanted)
        return;
    m_frameDue = false;
    if (VideoFrame frame = m_video->frame())
        Q_EMIT frameTaken(m_item.epoch, std::move(frame));
}
