// SPDX-License-Identifier: MIT
#include "KelvoPlaylistController.h"

#include "KelvoGUIMain.h"
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoMainWindow.h"
#include "KelvoRegistry.h"
#include "KelvoShared.h"
#include "KelvoSourceController.h"
#include "RowCopier.h"

#include <QDebug>
#include <QStandardItemModel>

namespace {
/// The model that rows can be appended to; null for playlists over a query result and other kinds.
QStandardItemModel *ownModel(KelvoPlaylist *playlist)
{
    auto *modelBacked = qobject_cast<KelvoGeneralSourcePlaylist *>(playlist);
    return modelBacked ? qobject_cast<QStandardItemModel *>(modelBacked->underlyingModel()) : nullptr;
}

int nextRepeatMode(int mode)
{
    switch (mode) {
    case KelvoPlaylist::RepeatOff:
        return KelvoPlaylist::RepeatAll;
    case KelvoPlaylist::RepeatOne:
        return KelvoPlaylist::RepeatOff;
    case KelvoPlaylist::RepeatAll:
        return KelvoPlaylist::RepeatOne;
    default:
        return mode;
    }
}
} // namespace

QString KelvoPlaylistController::newPlaylistName() const
{
    // The count may repeat a name after a deletion; names need not be unique.
    return QStringLiteral("pl%1").arg(m_registry->allPlaylists().size() + 1);
}

void KelvoPlaylistController::createNewModelPlaylist()
{
    qDebug() << "KelvoPlaylistController::createNewModelPlaylist";
    const QString id = KelvoPlaylist::getNewPlaylistId();
    const QString name = newPlaylistName();
    if (!m_guiMain->sources()->playableItemsInQueryModel()) {
        qDebug() << "Playlist will be created only of playable items!";
        return;
    }
    qDebug() << "Showing create playlist dialog disabled until VKB works!";
    createPlaylist(id, name, m_guiMain->sources()->queryModel());
}

void KelvoPlaylistController::createNewEmptyPlaylist()
{
    qDebug() << "KelvoPlaylistController::createNewEmptyPlaylist";
    const QString id = KelvoPlaylist::getNewPlaylistId();
    QString name = newPlaylistName();
    if (m_mainWindow->showCreatePlaylistDialog(name))
        createPlaylist(id, name, nullptr);
}

void KelvoPlaylistController::addToPlaylist(const QAbstractItemModel &model, int from, int to)
{
    qDebug() << "KelvoPlaylistController::addToPlaylist" << from << to;
    QStandardItemModel *target = ownModel(m_currentPlaylist);
    if (!target) {
        qWarning()
            << "void KelvoPlaylistController::addToPlaylist(const QAbstractItemModel&, int, int)"
            << "playlist is not KelvoGeneralSourcePlaylist or underlying model is not QStandardItemModel";
        m_mainWindow->showRendererErrorLog(0, QStringLiteral("Playlist or its model has wrong type."));
        return;
    }
    m_rowCopier->copy(model, from, to, target);
}

void KelvoPlaylistController::finishAppending()
{
    m_rowCopier->finish();
}

void KelvoPlaylistController::deletePlaylist()
{
    qDebug() << "KelvoPlaylistController::deletePlaylist";
    if (!m_currentPlaylist)
        return;
    const QString uuid = m_currentPlaylist->uuid();
    qDebug() << "Deleting current playlist, id=" << uuid;
    m_shared->unPublishPlaylist(uuid);
}

void KelvoPlaylistController::clearPlaylist()
{
    qDebug() << "KelvoPlaylistController::clearPlaylist";
    finishAppending();
    if (m_currentPlaylist)
        m_currentPlaylist->clear();
}

void KelvoPlaylistController::removeCurrentItem()
{
    qDebug() << "KelvoPlaylistController::removeCurrentItem";
    finishAppending();
    if (m_currentPlaylist)
        m_currentPlaylist->removeItem(uint(m_mainWindow->getCurrentPlaylistIndex()));
}

void KelvoPlaylistController::removeSeveralItems()
{
    qDebug() << "KelvoPlaylistController::removeSeveralItems";
    if (!m_currentPlaylist)
        return;
    int from = m_mainWindow->firstSelectedPlaylistIndex();
    int to = m_mainWindow->lastSelectedPlaylistIndex();
    if (from < 0 || to < 0)
        return;
    if (to < from)
        std::swap(from, to);
    finishAppending(); // Not before: the selection would be gone.
    m_currentPlaylist->removeItems(uint(from), uint(to));
}

void KelvoPlaylistController::shufflePlaylist()
{
    qDebug() << "KelvoPlaylistController::shufflePlaylist";
    finishAppending();
    if (!m_currentPlaylist)
        return;
    if (m_currentPlaylist->isShuffled())
        m_currentPlaylist->unshuffle();
    else
        m_currentPlaylist->shuffle();
    m_mainWindow->showShuffled(m_currentPlaylist->isShuffled());
}

void KelvoPlaylistController::repeatPlaylist()
{
    qDebug() << "KelvoPlaylistController::repeatPlaylist";
    if (!m_currentPlaylist)
        return;
    const int mode = nextRepeatMode(m_currentPlaylist->repeatMode());
    m_currentPlaylist->setRepeatMode(mode);
    m_mainWindow->showRepeated(showRepeatActionName(mode));
}

QString KelvoPlaylistController::showRepeatActionName(int mode) const
{
    qDebug() << "KelvoPlaylistController::showRepeatActionName()";
    switch (mode) {
    case KelvoPlaylist::RepeatAll:
        return QStringLiteral("Repeat all");
    case KelvoPlaylist::RepeatOff:
        return QStringLiteral("Repeat off");
    case KelvoPlaylist::RepeatOne:
        return QStringLiteral("Repeat one");
    default:
        return {};
    }
}

void KelvoPlaylistController::sortPlaylistAtoZ()
{
    sortPlaylist(KelvoPlaylist::SortKeyTitle, KelvoPlaylist::TitleAscending);
}

void KelvoPlaylistController::sortPlaylistZtoA()
{
    sortPlaylist(KelvoPlaylist::SortKeyTitle, KelvoPlaylist::TitleDescending);
}

void KelvoPlaylistController::sortPlaylistShortToLong()
{
    sortPlaylist(KelvoPlaylist::SortKeyDuration, KelvoPlaylist::DurationAscending);
}

void KelvoPlaylistController::sortPlaylistLongToShort()
{
    sortPlaylist(KelvoPlaylist::SortKeyDuration, KelvoPlaylist::DurationDescending);
}

void KelvoPlaylistController::sortPlaylist(const QString &key, int order)
{
    finishAppending();
    if (!m_currentPlaylist)
        return;
    m_currentPlaylist->sort(key, order);
    m_mainWindow->showShuffled(m_currentPlaylist->isShuffled());
}

void KelvoPlaylistController::invokeGetPlaylistUris()
{
    qDebug() << "KelvoPlaylistController::invokeGetPlaylistUris";
    // The place where the items' URIs would be asked for; the answers have their two slots below, but no request
    // is made.
    if (m_currentPlaylist)
        static_cast<void>(qMax(0, m_currentPlaylist->count()));
}

void KelvoPlaylistController::getUriCallback(
    uint metaId, const QStringList &metaKeys, const QStringList &metaValues)
{
    Q_UNUSED(metaId)
    Q_UNUSED(metaKeys)
    qDebug() << "KelvoPlaylistController::getUriCallback";
    Q_ASSERT(!metaValues.isEmpty());
    m_mainWindow->addUriToPlayUriDialog(metaValues.first());
}

void KelvoPlaylistController::getUriErrorCallback(uint metaId, const QString &error)
{
    Q_UNUSED(metaId)
    qDebug() << "KelvoPlaylistController::getUriErrorCallback";
    qWarning() << "KelvoPlaylistController::getUriErrorCallback error" << error;
}

void KelvoPlaylistController::showLoadPlaylistDialog()
{
    qDebug() << "KelvoPlaylistController::showLoadPlaylistDialog";
}

void KelvoPlaylistController::deletePersistentPlaylist()
{
    qDebug() << "void KelvoPlaylistController::deletePersistentPlaylist()";
}
