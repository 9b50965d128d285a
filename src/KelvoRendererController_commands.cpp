// SPDX-License-Identifier: MIT
#include "KelvoRendererController.h"

#include "KelvoMainWindow.h"

#include <QDebug>
#include <QTimer>

namespace {
constexpr int fastPositionInterval = 500; // ms, while positions move faster
constexpr int fastPlaybackDelay = 700; // ms that a seek button is held before fast playback starts
constexpr int seekStep = 10; // seconds
constexpr double fastSpeed = 2.0;
constexpr double normalSpeed = 1.0;
} // namespace

void KelvoRendererController::handlePlay()
{
    qDebug() << "KelvoRendererController::handlePlay";
    if (!m_currentRenderer)
        return;
    switch (int(m_currentState)) {
    case KelvoRenderer::Stopped:
        play();
        break;
    case KelvoRenderer::Playing:
    case KelvoRenderer::Transitioning:
        pause();
        m_positionTimer->stop();
        break;
    case KelvoRenderer::Paused:
        resume();
        break;
    default:
        break;
    }
}

void KelvoRendererController::play()
{
    qDebug() << "KelvoRendererController::play" << m_pendingPosition;
    if (m_currentRenderer)
        m_currentRenderer->play();
}

void KelvoRendererController::playUri(const QUrl &item, const QString &contentType)
{
    qDebug() << "KelvoRendererController::playUri";
    if (!m_currentRenderer)
        return;
    if (contentType.isEmpty())
        m_currentRenderer->playUri(item);
    else
        m_currentRenderer->playUriWithType(item, contentType);
}

void KelvoRendererController::pause()
{
    qDebug() << "KelvoRendererController::pause";
    if (m_currentRenderer)
        m_currentRenderer->pause();
}

void KelvoRendererController::pauseAt(uint seconds)
{
    qDebug() << "KelvoRendererController::pauseAt(" << seconds << ")";
    if (!m_currentRenderer)
        return;
    m_currentRenderer->pauseAt(seconds);
    m_pendingPosition = -1;
}

void KelvoRendererController::resume()
{
    qDebug() << "KelvoRendererController::resume";
    if (m_currentRenderer)
        m_currentRenderer->resume();
}

void KelvoRendererController::stop()
{
    qDebug() << "KelvoRendererController::stop";
    if (!m_currentRenderer)
        return;
    m_positionTimer->stop();
    m_currentRenderer->stop();
    m_mainWindow->showPlayButton();
    m_mainWindow->showPosition(0);
}

void KelvoRendererController::next()
{
    qDebug() << "KelvoRendererController::next";
    if (m_currentRenderer)
        m_currentRenderer->next();
}

void KelvoRendererController::prev()
{
    qDebug() << "KelvoRendererController::prev";
    if (m_currentRenderer)
        m_currentRenderer->previous();
}

void KelvoRendererController::goToIndex(uint index)
{
    qDebug() << "KelvoRendererController::goToIndex";
    if (m_currentRenderer)
        m_currentRenderer->gotoIndex(index);
}

void KelvoRendererController::seekBack()
{
    qDebug() << "void KelvoRendererController::seekBack()";
    if (!swallowSeekClick())
        seekBy(-seekStep);
}

void KelvoRendererController::seekForw()
{
    qDebug() << "void KelvoRendererController::seekForw()";
    if (!swallowSeekClick())
        seekBy(seekStep);
}

bool KelvoRendererController::swallowSeekClick()
{
    return std::exchange(m_fastPlayback.seekClickSwallowed, false);
}

void KelvoRendererController::seekBy(int seconds)
{
    if (!m_currentRenderer)
        return;
    m_currentRenderer->setPosition(seconds, KelvoRenderer::SeekRelative);
    invokeGetPosition();
}

void KelvoRendererController::seek(int position)
{
    qDebug() << "void KelvoRendererController::seek(int)";
    if (m_currentState == KelvoRenderer::Stopped)
        m_pendingPosition = position; // only ever logged
    if (m_currentRenderer)
        m_currentRenderer->setPosition(position, KelvoRenderer::SeekAbsolute);
}

void KelvoRendererController::startFastRewind()
{
    qDebug() << "void KelvoRendererController::startFastRewind()";
    if (armFastPlayback(SLOT(startFastRewind())))
        startFastPlayback(-fastSpeed);
}

void KelvoRendererController::startFastForward()
{
    qDebug() << "void KelvoRendererController::startFastForward()";
    if (armFastPlayback(SLOT(startFastForward())))
        startFastPlayback(fastSpeed);
}

bool KelvoRendererController::armFastPlayback(const char *slot)
{
    if (m_fastPlayback.armed)
        return true;
    m_fastPlayback.armed = true;
    QTimer::singleShot(fastPlaybackDelay, this, slot);
    return false;
}

void KelvoRendererController::startFastPlayback(double speed)
{
    m_fastPlayback.seekClickSwallowed = true;
    m_fastPlayback.active = true;
    m_positionTimer->setInterval(fastPositionInterval);
    setPlaybackSpeed(speed);
}

void KelvoRendererController::stopFastPlayback()
{
    qDebug() << "void KelvoRendererController::stopFastPlayback()";
    m_fastPlayback.armed = false;
    if (!m_fastPlayback.active)
        return;
    m_fastPlayback.active = false;
    m_positionTimer->setInterval(PositionInterval);
    setPlaybackSpeed(normalSpeed);
}

void KelvoRendererController::setPlaybackSpeed(double speed)
{
    if (m_currentRenderer)
        m_currentRenderer->setKelvoProperty(KelvoRenderer::PropertyPlaybackSpeed, speed);
}

void KelvoRendererController::videoScreenXIDChanged(uint xid)
{
    qDebug() << "KelvoRendererController::videoScreenXIDChanged, xid = " << xid;
    if (m_currentRenderer)
        m_currentRenderer->setKelvoProperty(KelvoRenderer::PropertyXid, xid);
}

void KelvoRendererController::adjustVolume()
{
    qDebug() << "KelvoRendererController::adjustVolume";
    m_mainWindow->showAdjustVolumeDialog(m_volume, m_currentRenderer);
}

void KelvoRendererController::showPauseFrame()
{
    qDebug() << "KelvoRendererController::showPauseFrame";
    if (m_currentRenderer)
        m_currentRenderer->setKelvoProperty(KelvoRenderer::PropertyCurrentFrameOnPause, !m_showPauseFrameOn);
}

void KelvoRendererController::setAutoAdvance(bool enabled)
{
    if (m_currentRenderer)
        m_currentRenderer->setKelvoProperty(KelvoRenderer::KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, enabled);
}

void KelvoRendererController::invokeGetPosition()
{
    if (m_currentRenderer)
        m_currentRenderer->getPosition(this, "rendererMediaPositionChanged(uint)");
}
