// SPDX-License-Identifier: MIT
#include "QueryCatalog.h"

#include "../KelvoTrackerModel.h"

#include <QFile>

#include <algorithm>

namespace {
using Column = CatalogQuery::Column;

const std::vector<Column> songColumns{
    {"songId", CellType::Number},
    {"songTitle", CellType::Text},
    {"songUri", CellType::Text},
    {"songLength", CellType::Amount},
    {"trackNumber", CellType::Amount},
    {"artistId", CellType::Number},
    {"artistName", CellType::SharedText, CatalogQuery::ArtistName},
    {"albumId", CellType::Number},
    {"albumName", CellType::SharedText, CatalogQuery::AlbumName},
    {"genre", CellType::SharedText},
    {"year", CellType::Year},
    {"favorited", CellType::Flag},
    {"usageCounter", CellType::Number},
    {"added", CellType::Date},
};
const std::vector<Column> albumColumns{
    {"albumId", CellType::Number},
    {"albumName", CellType::Text, CatalogQuery::AlbumName},
    {"artistId", CellType::Number},
    {"artistName", CellType::SharedText, CatalogQuery::ArtistName},
    {"albumTrackCount", CellType::Number},
    {"albumLength", CellType::Number},
    {"albumArtistCount", CellType::Number},
    {"albumSongs", CellType::Number},
};
const std::vector<Column> artistColumns{
    {"artistId", CellType::Number},
    {"artistName", CellType::Text, CatalogQuery::ArtistName},
    {"numberOfSongs", CellType::Number},
    {"numberOfAlbums", CellType::Number},
};
const std::vector<Column> playlistColumns{
    {"playlistId", CellType::Number},
    {"playlistName", CellType::Text},
    {"playlistUri", CellType::Text},
    {"playlistLength", CellType::Number},
    {"playlistTrackCount", CellType::Number},
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
} // namespace

std::vector<CellType> CatalogQuery::types() const
{
    std::vector<CellType> types;
    std::transform(columns.begin(), columns.end(), std::back_inserter(types),
        [](const Column &column) { return column.type; });
    return types;
}

CatalogQuery CatalogQuery::find(int type)
{
    for (const auto &entry : catalog) {
        if (entry.type == type)
            return {read(entry.file), entry.columns, entry.hasSubject};
    }
    return {};
}

// A shared library's resources are registered when it is loaded, so the file can always be opened.
QByteArray CatalogQuery::read(const char *name)
{
    QFile file(QStringLiteral(":/kelvo/tracker/queries/%1.rq").arg(QLatin1String(name)));
    const bool opened = file.open(QIODevice::ReadOnly);
    Q_ASSERT(opened);
    return opened ? file.readAll() : QByteArray();
}
