// SPDX-License-Identifier: MIT
#include "QueryCatalog.h"

#include "../KelvoTrackerModel.h"
#include "../store/KeptRows.h"

#include <QFile>

#include <algorithm>
#include <map>

namespace {
using Column = CatalogQuery::Column;

constexpr auto none = CatalogQuery::NoPlaceholder;

constexpr CellSource column(int index)
{
    return {CellSource::Column, index};
}

constexpr CellSource kept(int index)
{
    return {CellSource::Kept, index};
}

const std::vector<Column> songColumns{
    {"songId", CellType::Number, none, column(0)},
    {"songTitle", CellType::Text, none, column(1)},
    {"songUri", CellType::Text, none, kept(KeptRows::Url)},
    {"songLength", CellType::Amount, none, kept(KeptRows::Length)},
    {"trackNumber", CellType::Amount, none, kept(KeptRows::Track)},
    {"artistId", CellType::Number, none, kept(KeptRows::ArtistId)},
    {"artistName", CellType::SharedText, CatalogQuery::ArtistName, kept(KeptRows::ArtistName)},
    {"albumId", CellType::Number, none, kept(KeptRows::AlbumId)},
    {"albumName", CellType::SharedText, CatalogQuery::AlbumName, kept(KeptRows::AlbumName)},
    {"genre", CellType::SharedText, none, kept(KeptRows::Genre)},
    {"year", CellType::Year, none, kept(KeptRows::Year)},
    {"favorited", CellType::Flag, none, column(2)},
    {"usageCounter", CellType::Number, none, column(3)},
    {"added", CellType::Date, none, kept(KeptRows::Added)},
};
const std::vector<Column> albumColumns{
    {"albumId", CellType::Number, none, column(0)},
    {"albumName", CellType::Text, CatalogQuery::AlbumName, column(1)},
    {"artistId", CellType::Number, none, column(2)},
    {"artistName", CellType::SharedText, CatalogQuery::ArtistName, column(3)},
    {"albumTrackCount", CellType::Number, none, kept(KeptRows::Tracks)},
    {"albumLength", CellType::Number, none, kept(KeptRows::Total)},
    {"albumArtistCount", CellType::Number, none, kept(KeptRows::Artists)},
    {"albumSongs", CellType::Number, none, kept(KeptRows::Tracks)},
};
const std::vector<Column> artistColumns{
    {"artistId", CellType::Number, none, column(0)},
    {"artistName", CellType::Text, CatalogQuery::ArtistName, column(1)},
    {"numberOfSongs", CellType::Number, none, kept(KeptRows::Songs)},
    {"numberOfAlbums", CellType::Number, none, kept(KeptRows::Albums)},
};
const std::vector<Column> playlistColumns{
    {"playlistId", CellType::Number, none, column(0)},
    {"playlistName", CellType::Text, none, column(1)},
    {"playlistUri", CellType::Text, none, column(2)},
    {"playlistLength", CellType::Number, none, column(3)},
    {"playlistTrackCount", CellType::Number, none, column(4)},
};

const struct
{
    int type;
    const char *file;
    const std::vector<Column> &columns;
    bool hasSubject;
} catalog[] = {
    {KelvoTrackerModel::AllSongs, "all-songs", songColumns, false},
    {KelvoTrackerModel::SongsOfAlbum, "songs-of-album", songColumns, true},
    {KelvoTrackerModel::RecentlyAddedSongs, "recently-added-songs", songColumns, false},
    {KelvoTrackerModel::RecentlyPlayedSongs, "recently-played-songs", songColumns, false},
    {KelvoTrackerModel::MostPlayedSongs, "most-played-songs", songColumns, false},
    {KelvoTrackerModel::FavoriteSongs, "favorite-songs", songColumns, false},
    {KelvoTrackerModel::NeverPlayedSongs, "never-played-songs", songColumns, false},
    {KelvoTrackerModel::DownloadedSongs, "downloaded-songs", songColumns, false},
    {KelvoTrackerModel::SongsOfPlaylist, "songs-of-playlist", songColumns, true},
    {KelvoTrackerModel::RelatedSongs, "related-songs", songColumns, true},
    {KelvoTrackerModel::AllAlbums, "all-albums", albumColumns, false},
    {KelvoTrackerModel::AlbumsOfArtist, "albums-of-artist", albumColumns, true},
    {KelvoTrackerModel::AllArtists, "all-artists", artistColumns, false},
    {KelvoTrackerModel::AllPlaylists, "all-playlists", playlistColumns, false},
};

std::map<int, CatalogQuery> readAll()
{
    std::map<int, CatalogQuery> queries;
    for (const auto &entry : catalog) {
        queries[entry.type] = {CatalogQuery::read(entry.file),
            CatalogQuery::read(QByteArray("kept/").append(entry.file)), entry.columns, entry.hasSubject};
    }
    return queries;
}
} // namespace

std::vector<CellType> CatalogQuery::types() const
{
    std::vector<CellType> types;
    std::transform(columns.begin(), columns.end(), std::back_inserter(types),
        [](const Column &column) { return column.type; });
    return types;
}

std::vector<CellSource> CatalogQuery::sources() const
{
    std::vector<CellSource> sources;
    std::transform(columns.begin(), columns.end(), std::back_inserter(sources),
        [](const Column &column) { return column.source; });
    return sources;
}

const CatalogQuery &CatalogQuery::find(int type)
{
    static const std::map<int, CatalogQuery> queries = readAll();
    static const CatalogQuery unknown;
    const auto found = queries.find(type);
    return found == queries.end() ? unknown : found->second;
}

// A shared library's resources are registered when it is loaded, so the file can always be opened.
QByteArray CatalogQuery::read(const char *name)
{
    QFile file(QStringLiteral(":/kelvo/tracker/queries/%1.rq").arg(QLatin1String(name)));
    const bool opened = file.open(QIODevice::ReadOnly);
    Q_ASSERT(opened);
    return opened ? file.readAll() : QByteArray();
}
