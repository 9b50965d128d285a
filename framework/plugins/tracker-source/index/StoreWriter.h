// SPDX-License-Identifier: MIT
#pragma once

#include "MediaItem.h"
#include "store/StoreConnection.h"

#include <QSet>

/// Writes what the indexer read into the store. Worker thread.
class StoreWriter
{
public:
    explicit StoreWriter(StoreConnection &connection);

    /// All files that the store holds, with their paths (URIs of other schemes as they are).
    std::vector<std::pair<QByteArray, KnownFile>> readKnown(StoreError *error);

    /// Takes the URIs of files that moved away, before others take their places.
    bool releaseUris(const std::vector<KnownFile> &files, StoreError *error);
    /// Writes all, each anew or in place of what was there; `written` tells which ones. An item that the store
    /// refuses is left out with a warning; false when nothing more can be written.
    bool write(const std::vector<MediaItem> &items, std::vector<bool> *written, StoreError *error);
    bool remove(const std::vector<KnownFile> &files, StoreError *error);
    /// After all changes of a pass: drops albums and artists without songs, sums up the playlists, marks favourites, gives
    /// songs that are back their play counts.
    bool tidyUp(StoreError *error);

private:
    using Statements = std::vector<QByteArray>;
    Statements statementsFor(const MediaItem &item);
    Statements songStatements(const MediaItem &item);
    // Each returns the resource, and adds what makes it when it was not written yet.
    QByteArray artist(const QString &name, Statements *statements);
    QByteArray album(const MediaItem &item, Statements *statements);
    QByteArray disc(const QByteArray &album, int number, Statements *statements);
    bool sumUpPlaylists(StoreError *error);

    StoreConnection &m_connection;
    /// Artists, albums and discs that were written; to write one again would only take time.
    QSet<QByteArray> m_present;
};
