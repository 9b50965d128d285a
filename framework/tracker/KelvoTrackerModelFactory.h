// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerModel.h"

#include <QObject>

#include <chrono>

/// Makes the results of the built-in queries of the tracker store. GUI thread.
///
/// The factory holds the process's tracker store open (see KelvoTrackerStore). Its models live on without it.
class KELVO_TRACKER_EXPORT KelvoTrackerModelFactory : public QObject
{
    Q_OBJECT
public:
    /// @param unknownAlbum, unknownArtist  shown where an album or artist has no name
    /// @param streamingBlockSize  rows of each block after the first; 0: no limit
    /// @param idleTime  how long a result keeps the store's cursor open for a rest that nobody asks for; then the rest waits
    ///                  in memory
    KelvoTrackerModelFactory(const QString &unknownAlbum, const QString &unknownArtist,
        int streamingBlockSize, QObject *parent = nullptr,
        std::chrono::milliseconds idleTime = std::chrono::seconds(30));
    ~KelvoTrackerModelFactory() override;

    /// While true, no store is opened: for the start of a program that has something else to do first. After two seconds one
    /// is opened all the same. What needs the store waits for it.
    static void holdBack(bool isHeldBack);

    /// Opens the store where it is not open yet. Answers, from the event loop, with initCompleted().
    void init();

    /// Why the last init() ended with false; a text for the user, empty otherwise.
    QString errorText() const;

    /// Starts a query and returns its result at once; rows, completed() and error() follow from the event loop.
    /// Never null: an unknown type, or a store that is not open, is reported by the model's error().
    /// @param firstBlockSize  rows that come by themselves; 0: no limit, all of them
    /// @param id  the album, artist, playlist or song of a follow-up query; 0 for the others
    /// The caller owns the model.
    KelvoTrackerModel *getModel(KelvoTrackerModel::QueryType type, int firstBlockSize, int id);

Q_SIGNALS:
    /// Whether queries can be answered. Once for each init().
    void initCompleted(bool ok);

private:
    const QString m_unknownAlbum;
    const QString m_unknownArtist;
    const int m_streamingBlockSize;
    const std::chrono::milliseconds m_idleTime;
    bool m_waiting = false;
};
