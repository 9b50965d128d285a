// SPDX-License-Identifier: MIT
#include "KelvoPlaylistController.h"

#include "KelvoGUIMain.h"
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoMainWindow.h"
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "KelvoRendererController.h"
#include "KelvoShared.h"
#include "RowCopier.h"

#include <QDebug>
#include <QStandardItemModel>

namespace {
const auto trackerSourceUuid = QStringLiteral("KelvoTrackerSource");
} // namespace

KelvoPlaylistController::KelvoPlaylistController(
    KelvoGUIMain *guiMain, KelvoMainWindow *mainWindow, KelvoShared *shared)
    : m_guiMain(guiMain)
    , m_registry(KelvoRegistry::instance())
    , m_mainWindow(mainWindow)
    , m_shared(shared)
    , m_rowCopier(new RowCopier(this))
{
    qDebug() << "KelvoPlaylistController::KelvoPlaylistController";
    initPlaylists();
    connect(m_registry, SIGNAL(playlistAdded(QString, QString)), this, SLOT(playlistAdded(QString, QString)));
    connect(
        m_registry, SIGNAL(playlistRemoved(QString, QString)), this, SLOT(playlistRemoved(QString, QString)));
    m_mainWindow->connectPlaylistSignals(this);
    // Each row that is appended is announced and shown by itself.
    connect(m_rowCopier, &RowCopier::aboutToAppend, m_mainWindow,
        [this] { m_mainWindow->holdPlaylistView(true); });
    connect(
        m_rowCopier, &RowCopier::appended, m_mainWindow, [this] { m_mainWindow->holdPlaylistView(false); });
    connect(m_mainWindow, &QObject::destroyed, this, &KelvoPlaylistController::retire);
}

KelvoPlaylistController::~KelvoPlaylistController()
{
    qDebug() << "KelvoPlaylistController::~KelvoPlaylistController";
}

void KelvoPlaylistController::retire()
{
    // The window goes first when the program ends; what the framework still reports has nobody to show it to.
    disconnect(m_registry, nullptr, this, nullptr);
    const QList<KelvoPlaylist *> playlists = m_registry->allPlaylists();
    for (KelvoPlaylist *playlist : playlists)
        disconnect(playlist, nullptr, this, nullptr);
}

KelvoPlaylist *KelvoPlaylistController::currentPlaylist() const
{
    qDebug() << "KelvoPlaylistController::currentPlaylist";
    return m_currentPlaylist;
}

void KelvoPlaylistController::initPlaylists()
{
    qDebug() << "KelvoPlaylistController::initPlaylists";
    const QList<KelvoPlaylist *> playlists = m_registry->allPlaylists();
    for (qsizetype i = 0; i < playlists.size(); ++i) {
        Q_ASSERT(playlists.at(i));
        playlistAdded(playlists.at(i)->uuid(), playlists.at(i)->name());
    }
    m_currentPlaylist = playlists.isEmpty() ? nullptr : playlists.first();
    if (m_currentPlaylist)
        qDebug() << "Playlist (id=" << m_currentPlaylist->uuid() << ") set as current";
    else
        qDebug() << "No current playlist set";
    showCurrentPlaylist();
    assignToCurrentRenderer();
}

void KelvoPlaylistController::assignToCurrentRenderer()
{
    KelvoRenderer *renderer = m_guiMain->renderers()->currentRenderer();
    if (renderer && m_currentPlaylist)
        renderer->assignPlaylist(m_currentPlaylist);
}

void KelvoPlaylistController::playlistAdded(const QString &uuid, const QString &name)
{
    qDebug() << "KelvoPlaylistController::playlistAdded" << uuid << name;
    const KelvoPlaylist *playlist = m_registry->findPlaylistByUuid(uuid);
    const bool connected = playlist
        && connect(playlist, SIGNAL(contentsChanged(uint, uint, uint)), this,
            SLOT(playlistContentsChanged(uint, uint, uint)));
    if (connected)
        m_mainWindow->showPlaylistName(uuid, name, true);
    else
        qDebug() << "Not able to connect to playlist " << uuid << ", " << name << " contentsChanged signal.";
}

void KelvoPlaylistController::playlistRemoved(const QString &uuid, const QString &name)
{
    qDebug() << "KelvoPlaylistController::playlistRemoved" << uuid;
    m_mainWindow->showPlaylistName(uuid, name, false);
}

void KelvoPlaylistController::playlistChanged(const QString &uuid)
{
    qDebug() << "KelvoPlaylistController::playlistChanged" << uuid;
    m_currentPlaylist = m_registry->findPlaylistByUuid(uuid);
    if (!m_currentPlaylist) {
        qDebug() << "No current playlist set";
        return;
    }
    qDebug() << "Playlist (id=" << m_currentPlaylist->uuid() << ") set as current";
    showCurrentPlaylist();
    assignToCurrentRenderer();
}

void KelvoPlaylistController::playlistContentsChanged(uint from, uint remove, uint get)
{
    Q_UNUSED(from)
    Q_UNUSED(remove)
    Q_UNUSED(get)
    qDebug() << "KelvoPlaylistController::playlistContentsChanged";
    if (sender() && sender() == m_currentPlaylist)
        showCurrentPlaylist();
}

void KelvoPlaylistController::showCurrentPlaylist()
{
    qDebug() << "KelvoPlaylistController::showCurrentPlaylist";
    const int index = m_mainWindow->getCurrentPlaylistIndex();
    m_mainWindow->clearPlaylist();
    if (!m_currentPlaylist)
        return;
    m_mainWindow->showPlaylist(m_currentPlaylist->itemModel());
    m_mainWindow->showShuffled(m_currentPlaylist->isShuffled());
    m_mainWindow->showRepeated(showRepeatActionName(m_currentPlaylist->repeatMode()));
    if (index != -1)
        m_mainWindow->updateCurrentPlaylistIndex(index);
}

void KelvoPlaylistController::createPlaylist(
    const QString &id, const QString &name, QAbstractItemModel *model)
{
    qDebug() << "KelvoPlaylistController::createPlaylist (id=" << id << " name=" << name << ")";
    if (name.isEmpty())
        return;
    auto *playlist = new KelvoGeneralSourcePlaylist(id, name, trackerSourceUuid);
    playlist->setUnderlyingModel(model ? model : new QStandardItemModel(playlist));
    if (!m_shared->publishPlaylist(playlist))
        delete playlist;
}
