// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QModelIndex>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariant>

class KelvoBrowseController;
class KelvoGUIMain;
class KelvoMainWindow;
class KelvoPlaylistController;
class KelvoQueryController;
class KelvoRegistry;
class KelvoSource;
class KelvoThumbnailDownloader;
class QAbstractItemModel;

/// Stands behind the Query tab, the Browse tab and the Query menu: keeps the choice of sources, turns what the user
/// does into work for the query and the browse controller, hands results to the playlist controller, and asks sources
/// for their properties. Owns its helpers. GUI thread only.
class KelvoSourceController : public QObject
{
    Q_OBJECT
public:
    /// Neither is owned. The application object must have its playlist controller already.
    KelvoSourceController(KelvoGUIMain *guiMain, KelvoMainWindow *mainWindow);
    ~KelvoSourceController() override;

    /// The latest query's result, null before the first; not owned.
    QAbstractItemModel *queryModel() const;
    /// Asks the source whose properties are shown for the next property that it knows.
    void getNextSourceProperty();

public Q_SLOTS:
    void selectSources();
    void showSourceProperties();
    /// Starts to show the properties of the first source of this name.
    void invokeGetProperties(const QString &source);
    void invokeSignIn();
    void invokeSignOut();
    void search();
    /// Starts the chosen query; while it runs, calls it off; after its first rows, fetches the rest.
    void executeQuery();
    void extendQuery();
    void addQueryToPlaylist();
    void addBrowseToPlaylist();
    bool playableItemsInQueryModel();
    bool playableItemsInBrowseModel(int index);
    void executeBrowse();
    void clearBrowseResults();
    void browseResultItemActivated(const QModelIndex &index);
    void mediaArtsUpdatedSlot();
    void setNewQueryProperties(int firstBlockSize, int streamingBlockSize);
    void sourcePropertyCallback(QString &key, QVariant &value);
    void thumbnailReady(const QByteArray &array);

private:
    void forgetGoneSources(const QList<KelvoSource *> &existing);
    QList<bool> selectionFlags(const QList<KelvoSource *> &sources) const;
    QList<KelvoSource *> sourcesToQuery() const;
    void handleActivatedRow(int row);
    void signIn(bool in);

    KelvoGUIMain *m_guiMain;
    KelvoRegistry *m_registry;
    QPointer<KelvoMainWindow> m_mainWindow;
    KelvoQueryController *m_queryController;
    KelvoBrowseController *m_browseController;
    KelvoThumbnailDownloader *m_thumbnailDownloader;
    QList<QPointer<KelvoSource>> m_selectedSources; // in the registry's order
    bool m_sourcesSelected = false;
    bool m_waitingForMediaArts = false;
    bool m_activationBusy = false;
    int m_pendingActivatedRow = -1;
    QStringList m_propertyKeys;
    QString m_propertySourceUuid;
    int m_propertyIndex = -1;
    QPointer<KelvoPlaylistController> m_appendingTo; // may still be copying from the latest result
};
