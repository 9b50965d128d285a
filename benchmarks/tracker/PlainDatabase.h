// SPDX-License-Identifier: MIT
#pragma once

#include "index/MediaItem.h"

#include <QByteArray>

struct sqlite3;

/// The songs of a benchmark's store in plain SQLite tables with the indexes that its queries need: what the store's
/// own layers are measured against.
class PlainDatabase
{
public:
    explicit PlainDatabase(const QByteArray &path);
    ~PlainDatabase();
    Q_DISABLE_COPY_MOVE(PlainDatabase)

    bool fill(const std::vector<MediaItem> &items);

    struct Times
    {
        double first = 0; ///< milliseconds to the last row of the first block, or to the end
        double all = 0; ///< milliseconds
        int rows = 0;
    };
    /// Reads every column of every row.
    Times read(const char *query, int firstBlock) const;

private:
    sqlite3 *m_database = nullptr;
};

/// The built-in queries in terms of these tables, with the same columns.
namespace PlainQuery {
extern const char allSongs[];
extern const char flatSongs[]; ///< with all columns in one table
extern const char recentlyAdded[];
extern const char neverPlayed[];
extern const char mostPlayed[];
extern const char songsOfAlbum[];
extern const char allAlbums[];
extern const char albumsOfArtist[];
extern const char allArtists[];
} // namespace PlainQuery
