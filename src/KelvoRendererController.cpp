// SPDX-License-Identifier: MIT
#include "KelvoRendererController.h"

#include "KelvoGUIMain.h"
#include "KelvoMainWindow.h"
#include "KelvoPlaylistController.h"
#include "KelvoRegistry.h"

#include <QDebug>
#include <QEvent>
#include <QTimer>

KelvoRendererController::KelvoRendererController(KelvoGUIMain *application, KelvoMainWindow *mainWindow)
    : m_application(application)
    , m_registry(KelvoRegistry::instance())
    , m_mainWindow(mainWindow)
    , m_positionTimer(new QTimer(this))
{
    qDebug() << "KelvoRendererController::KelvoRendererController (" << this << ")";
    m_positionTimer->setInterval(PositionInterval);
    connect(m_positionTimer, SIGNAL(timeout()), this, SLOT(invokeGetPosition()));
    initRenderers();
    connect(m_registry, SIGNAL(rendererAdded(QString, QString)), this, SLOT(rendererAdded(QString, QString)));
    connect(
        m_registry, SIGNAL(rendererRemoved(QString, QString)), this, SLOT(rendererRemoved(QString, QString)));
    m_mainWindow->connectRendererSignals(this);
    m_mainWindow->watchVideoRectangle(this);
    connect(m_mainWindow, &QObject::destroyed, this, &KelvoRendererController::retire);
}

KelvoRendererController::~KelvoRendererController()
{
    qDebug() << "KelvoRendererController::~KelvoRendererController";
}

void KelvoRendererController::retire()
{
    // The window goes first when the program ends; what renderers still report has nobody to show it to.
    m_positionTimer->stop();
    m_currentRenderer = nullptr;
    disconnect(m_registry, nullptr, this, nullptr);
    const QList<KelvoRenderer *> renderers = m_registry->renderers();
    for (KelvoRenderer *renderer : renderers)
        disconnect(renderer, nullptr, this, nullptr);
}

KelvoRenderer *KelvoRendererController::currentRenderer() const
{
    qDebug() << "KelvoRendererController::currentRenderer";
    return m_currentRenderer;
}

void KelvoRendererController::setStartUri(
    const QUrl &uri, const QString &contentType, const QString &rendererName)
{
    qDebug() << "KelvoRendererController::setStartUri";
    m_start.uri = uri;
    m_start.contentType = contentType;
    m_start.rendererName = rendererName;
}

void KelvoRendererController::initRenderers()
{
    qDebug() << "KelvoRendererController::initRenderers";
    const QList<KelvoRenderer *> renderers = m_registry->renderers();
    for (KelvoRenderer *renderer : renderers)
        listRenderer(renderer, renderer->name());
    if (renderers.isEmpty())
        return;
    m_currentRenderer = renderers.first();
    connectRendererSignals(m_currentRenderer);
    m_currentRenderer->getStatus(this, "rendererStatusChanged(QString, uint, int, QString)");
    setUpVideoOutput(m_currentRenderer);
    getRendererProperties(m_currentRenderer);
}

void KelvoRendererController::listRenderer(KelvoRenderer *renderer, const QString &name)
{
    // Unnamed renderers are told by how many there are, not by their place: several can show the same text.
    const QString displayName
        = name.isEmpty() ? QStringLiteral("empty %1").arg(m_registry->renderers().size()) : name;
    m_mainWindow->showRendererName(displayName, renderer->uuid(), true);
    connect(renderer, SIGNAL(nameChanged(QString)), this, SLOT(rendererNameChanged(QString)));
}

void KelvoRendererController::rendererAdded(const QString &uuid, const QString &name)
{
    qDebug() << "KelvoRendererController::rendererAdded" << uuid << name;
    KelvoRenderer *renderer = m_registry->findRendererByUuid(uuid);
    if (!renderer)
        return;
    listRenderer(renderer, name);
    // Kept for the next renderer of that name. Without a start URI an unnamed renderer must not match.
    if (!m_start.uri.isEmpty() && name == m_start.rendererName)
        renderer->playUriWithType(m_start.uri, m_start.contentType);
}

void KelvoRendererController::rendererRemoved(const QString &uuid, const QString &name)
{
    qDebug() << "KelvoRendererController::rendererRemoved " << name << uuid;
    if (m_currentRenderer && m_currentRenderer->uuid() == uuid)
        m_currentRenderer = nullptr;
    m_mainWindow->showRendererName(name, uuid, false);
    // The one that played may have gone without a word, and nobody will ask for its position any more.
    if (!m_currentRenderer && m_currentState != KelvoRenderer::Stopped)
        rendererStateChanged(KelvoRenderer::Stopped);
}

void KelvoRendererController::rendererChanged(const QString &uuid)
{
    qDebug() << "KelvoRendererController::rendererChanged " << uuid;
    KelvoRenderer *renderer = m_registry->findRendererByUuid(uuid);
    if (m_currentRenderer) {
        stop();
        // Its connection to the window stays, so its end of playback is still announced.
        disconnect(m_currentRenderer, nullptr, this, nullptr);
    }
    rendererStateChanged(KelvoRenderer::Stopped);
    m_currentRenderer = renderer;
    if (!m_currentRenderer)
        return;
    connectRendererSignals(m_currentRenderer);
    getRendererProperties(m_currentRenderer);
    setUpVideoOutput(m_currentRenderer);
    if (KelvoPlaylist *playlist = currentPlaylist())
        m_currentRenderer->assignPlaylist(playlist);
}

KelvoPlaylist *KelvoRendererController::currentPlaylist() const
{
    const KelvoPlaylistController *playlists = m_application->playlists();
    return playlists ? playlists->currentPlaylist() : nullptr;
}

void KelvoRendererController::setUpVideoOutput(KelvoRenderer *renderer)
{
    renderer->setKelvoProperty(KelvoRenderer::PropertyXid, m_mainWindow->getVideoXID());
    renderer->setKelvoProperty(KelvoRenderer::PropertyAutopaint, false);
}

// clang-format off: sender above receiver
void KelvoRendererController::connectRendererSignals(KelvoRenderer *renderer)
{
    qDebug() << "KelvoRendererController::connectRendererSignals";
    connect(renderer, SIGNAL(stateChanged(KelvoRenderer::State)), this,
        SLOT(rendererStateChanged(KelvoRenderer::State)));
    connect(renderer, SIGNAL(mediaChanged(int, KelvoContent)), this,
        SLOT(rendererMediaChanged(int, KelvoContent)));
    connect(renderer, SIGNAL(playbackCompleted()), m_mainWindow, SLOT(showPlaybackCompletedDialog()));
    connect(renderer, SIGNAL(playlistChanged(KelvoPlaylist *)), this,
        SLOT(rendererPlaylistChanged(KelvoPlaylist *)));
    connect(renderer, SIGNAL(metadataChanged(QString, QList<QVariant>)), this,
        SLOT(rendererMediaMetadataChanged(QString, QList<QVariant>)));
    connect(renderer, SIGNAL(kelvoPropertyChanged(QString, QVariant)), this,
        SLOT(rendererPropertyChanged(QString, QVariant)));
    connect(renderer, SIGNAL(bufferingInfo(float)), this, SLOT(rendererBuffering(float)));
    connect(renderer, SIGNAL(scanningInfo(float)), this, SLOT(rendererScanning(float)));
    connect(renderer, SIGNAL(error(KelvoError)), this, SLOT(rendederOperationFailed(KelvoError)));
}
// clang-format on

void KelvoRendererController::getRendererProperties(KelvoRenderer *renderer)
{
    qDebug() << "KelvoRendererController::getRendererProperties";
    renderer->kelvoProperty(KelvoRenderer::PropertyVolume, this, "rendererPropertyChanged(QString,QVariant)");
    renderer->kelvoProperty(
        KelvoRenderer::PropertyCurrentFrameOnPause, this, "rendererPropertyChanged(QString,QVariant)");
}

bool KelvoRendererController::eventFilter(QObject *watched, QEvent *event)
{
    // Renderers place their picture by themselves, so they must hear when its place changes.
    if (event->type() == QEvent::Move || event->type() == QEvent::Resize)
        sendVideoRectangle();
    return QObject::eventFilter(watched, event);
}
