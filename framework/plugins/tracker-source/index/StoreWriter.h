// SPDX-License-Identifier: MIT
#pragma once

#include "MediaItem.h"
#include "store/StoreConnection.h"

#include <QHash>
#include <QSet>

#include <functional>
#include <optional>

/// Writes what the indexer read into the store. Worker thread.
class StoreWriter
{
public:
    /// `isStopped`: what takes long may be left to the next time; null: never.
    explicit StoreWriter(StoreConnection &connection, std::function<bool()> isStopped = {});

    /// All files that the store holds, with their paths (URIs of other schemes as they are).
    std::vector<std::pair<QByteArray, KnownFile>> readKnown(StoreError *error);

    /// A file and the path that it has now.
    struct Move
    {
        KnownFile file;
        QByteArray path;
    };
    /// Gives files that were moved their new URIs, all or none. What else the store says of them waits until they are
    /// written again (KnownFile::isCurrent).
    bool move(const std::vector<Move> &moves, StoreError *error);
    /// Writes all, each anew or in place of what was there; `written` tells which ones. An item that the store
    /// refuses is left out with a warning; false when nothing more can be written.
    bool write(const std::vector<MediaItem> &items, std::vector<bool> *written, StoreError *error);
    bool remove(const std::vector<KnownFile> &files, StoreError *error);
    /// Whether tidyUp() has not followed all that was written, in this or an earlier process: it may have been killed. So
    /// is a store in which no rows are kept yet (see KeptRows).
    bool isUntidy(StoreError *error);
    /// After all changes of a pass: drops albums and artists without songs, sums up the playlists, marks favourites,
    /// gives songs that are back their play counts, and renews what is kept for queries.
    bool tidyUp(StoreError *error);

private:
    using Statements = std::vector<QByteArray>;
    bool change(Statements statements, StoreError *error);
    /// The artists and albums of new songs come before these, so that their ids can be kept with the songs. False when
    /// nothing more can be written.
    bool writeNamed(const std::vector<MediaItem> &items, StoreError *error);
    bool readIds(const std::vector<QByteArray> &resources, StoreError *error);
    Statements statementsFor(const MediaItem &item);
    Statements songStatements(const MediaItem &item);
    /// The row that is kept with a new song; empty when it has to be made of what the store says.
    QByteArray keptProperty(const MediaItem &item, const QByteArray &artist, const QByteArray &album,
        const QByteArray &added) const;
    // Each returns the resource, and adds what makes it when it was not written yet.
    QByteArray artist(const QString &name, Statements *statements);
    QByteArray album(const MediaItem &item, Statements *statements);
    QByteArray disc(const QByteArray &album, int number, Statements *statements);
    bool sumUpPlaylists(StoreError *error);
    bool renewSongs(StoreError *error);
    bool isStopped() const { return m_isStopped && m_isStopped(); }

    StoreConnection &m_connection;
    const std::function<bool()> m_isStopped;
    /// Artists, albums and discs that were written; to write one again would only take time.
    QSet<QByteArray> m_present;
    /// Of the artists and albums that songs name.
    QHash<QByteArray, QByteArray> m_ids;
    std::optional<bool> m_untidy; ///< none: only the store knows
    /// Up to the song with this id, what is kept with songs may be of another process, which was killed or keeps none.
    qint64 m_lastDoubtful = 0;
};
