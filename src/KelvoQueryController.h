// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerModel.h"

#include <QList>
#include <QModelIndex>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <memory>

class KelvoMainWindow;
class KelvoSource;
class KelvoTrackerModelFactory;
class QAbstractItemModel;
class QSparqlConnection;

/// Runs the built-in queries of the Query tab against the tracker store, goes one level deeper into a result, fetches
/// the rest of a long one, and applies new block sizes. Made and used by KelvoSourceController only. GUI thread only.
///
/// Results are not owned: one that query() replaces lives on, since a playlist may stand on it; only extendQuery()
/// deletes the one it replaces.
class KelvoQueryController : public QObject
{
    Q_OBJECT
public:
    /// What the rows of the latest result are.
    enum QueryKind { Artists, Albums, Playlists, Songs, Videos, NoKind };
    /// How far the latest query is.
    enum QueryState {
        Idle,
        Running, ///< no rows yet
        FirstRows, ///< the first block is shown, more may be fetched
    };

    KelvoQueryController(QObject *parent, KelvoMainWindow *mainWindow);
    ~KelvoQueryController() override;

    /// Starts the built-in query with this index of the window's list. The sources make no difference: the tracker
    /// answers all queries. Null, and nothing changed but the kind, for an unknown index.
    QAbstractItemModel *query(const QList<KelvoSource *> &sources, int queryIndex);
    /// Starts the query of what belongs to a row of the latest result: an artist's albums, the songs of an album or
    /// playlist, the songs related to a song. Null, and nothing changed, when the rows have nothing below them.
    QAbstractItemModel *extendQuery(const QList<KelvoSource *> &sources, int row);
    /// The place of a search by conditions; answers null, and nothing calls it.
    QAbstractItemModel *search(const QList<KelvoSource *> &sources, const QString &term, int item);
    /// Asks for the rows that remain after the first block.
    void fetchRest();
    /// Whether the rows are containers, artists or albums. Rows of the other kinds that can be extended count as
    /// playable all the same.
    bool latestQueryExtendable() const;
    QAbstractItemModel *queryModel() const;
    /// Running queries go on: the place where they would be called off.
    void cancelOngoingQuery();
    int queryState() const;

public Q_SLOTS:
    /// Rows; 0 means no limit. The first block's size counts from the next query on.
    void setNewQueryProperties(int firstBlockSize, int streamingBlockSize);
    void modelUpdatedSlot();
    void rowsUpdated(int row, int count, const QModelIndex &parent);
    void queryErrorSlot(const QString &message);
    void subjectsAdded(const QStringList &subjects);
    void subjectsRemoved(const QStringList &subjects);
    void subjectsChanged(const QStringList &subjects);
    void refreshModelSlot();
    void handleFirstResults();

private:
    void retire();
    void unfollowResult();
    void createFactory(const QString &unknownAlbum, const QString &unknownArtist, int streamingBlockSize);
    void showOpening(bool opened);
    KelvoTrackerModel *trackerModel(KelvoTrackerModel::QueryType type, int id);
    QAbstractItemModel *videoModel();
    int idAt(int row, int column) const;
    int songIdColumn() const;
    QAbstractItemModel *startQuery();
    void subjectsCameOrWent(const char *what, const QStringList &subjects);

    QPointer<QAbstractItemModel> m_model;
    std::unique_ptr<KelvoTrackerModelFactory> m_factory;
    int m_queryKind = NoKind;
    QPointer<KelvoMainWindow> m_mainWindow;
    int m_queryState = Idle;
    QTimer m_refreshTimer;
    int m_streamBlockSize;
    int m_firstBlockSize;
    std::unique_ptr<QSparqlConnection> m_sparqlConnection;
    bool m_openingFailed = false; // and the window says why
};
