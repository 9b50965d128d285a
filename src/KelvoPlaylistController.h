// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

class KelvoGUIMain;
class KelvoMainWindow;
class KelvoPlaylist;
class KelvoRegistry;
class KelvoShared;
class QAbstractItemModel;
class RowCopier;

/// Owns the choice of the current playlist: mirrors the registry's playlists into the window, follows the user's
/// choice, shows the current playlist's items and hands it to the current renderer. Its editing commands act on
/// the current playlist and do nothing without one. GUI thread only.
class KelvoPlaylistController : public QObject
{
    Q_OBJECT
public:
    /// Nothing is owned. The application object must have its renderer controller already.
    KelvoPlaylistController(KelvoGUIMain *guiMain, KelvoMainWindow *mainWindow, KelvoShared *shared);
    ~KelvoPlaylistController() override;

    /// Null when there is none, also after the playlist was deleted.
    KelvoPlaylist *currentPlaylist() const;
    /// Lists the registry's playlists and makes the first one current.
    void initPlaylists();
    /// Publishes a new playlist over the model, which is not owned; null gives it an empty model of its own. An
    /// empty name creates nothing. The new playlist does not become current.
    void createPlaylist(const QString &id, const QString &name, QAbstractItemModel *model);
    void showCurrentPlaylist();
    /// What the repeat action reads in this mode; empty for unknown modes.
    QString showRepeatActionName(int mode) const;

    /// Copies at once what addToPlaylist() has left. Commands that follow act on the whole list.
    void finishAppending();

public Q_SLOTS:
    void playlistAdded(const QString &uuid, const QString &name);
    void playlistRemoved(const QString &uuid, const QString &name);
    void playlistChanged(const QString &uuid);
    void playlistContentsChanged(uint from, uint remove, uint get);

    void createNewModelPlaylist();
    void createNewEmptyPlaylist();
    /// Copies the rows from..to of the model as display texts into the current playlist's own model. Of many rows
    /// the later ones come from the event loop; whoever deletes the model calls finishAppending() before.
    void addToPlaylist(const QAbstractItemModel &model, int from, int to);
    void deletePlaylist();
    void clearPlaylist();
    void removeCurrentItem();
    void removeSeveralItems();
    void shufflePlaylist();
    void repeatPlaylist();
    void sortPlaylistAtoZ();
    void sortPlaylistZtoA();
    void sortPlaylistShortToLong();
    void sortPlaylistLongToShort();
    void invokeGetPlaylistUris();
    void getUriCallback(uint metaId, const QStringList &metaKeys, const QStringList &metaValues);
    void getUriErrorCallback(uint metaId, const QString &error);
    void showLoadPlaylistDialog();
    void deletePersistentPlaylist();

private:
    void retire();
    void assignToCurrentRenderer();
    QString newPlaylistName() const;
    void sortPlaylist(const QString &key, int order);

    KelvoGUIMain *m_guiMain;
    KelvoRegistry *m_registry;
    QPointer<KelvoMainWindow> m_mainWindow;
    KelvoShared *m_shared;
    QPointer<KelvoPlaylist> m_currentPlaylist;
    RowCopier *m_rowCopier; ///< child
};
