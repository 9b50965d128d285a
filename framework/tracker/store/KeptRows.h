// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"

#include <QByteArray>

#include <vector>

/// What a row shows of a song, an album or an artist beside its title or name is kept with it as one text
/// (nie:generator), so that the queries of data/queries/kept need neither joins nor sums. And two charts keep the songs
/// that can be among the last added, the last played and the most played ones.
///
/// Who changes what a row shows brings it up to date in the same update. Sums and charts are brought up to date when a
/// pass of the indexer ends; while one is under way (the state is "untidy"), queries that use them find nothing, and are
/// asked in the form that needs none. So are those of a store whose rows were never kept.
namespace KeptRows {

/// Stands between the values of a row. Titles and names have none: control characters are taken out of them.
inline constexpr char separator = '\t';

/// Where the values are in what is kept.
enum SongField { Url, Length, Track, ArtistId, ArtistName, AlbumId, AlbumName, Genre, Year, Added };
enum AlbumField { Tracks, Total, Artists };
enum ArtistField { Songs, Albums };

/// The property with the text of a new song, to be written with it. `added` is a literal as of Sparql::now().
struct Song
{
    QByteArray uri;
    int length = 0;
    int track = 0;
    QByteArray artistId; ///< tracker:id(), which a resource has for as long as a song names it
    QByteArray artistName;
    QByteArray albumId;
    QByteArray albumName;
    QByteArray genre;
    QByteArray year; ///< four digits, or empty
};
KELVO_TRACKER_EXPORT QByteArray propertyOf(const Song &song, const QByteArray &added);

// Updates.
/// To follow a change of what the store says of a song; here and below "<iri>".
KELVO_TRACKER_EXPORT QByteArray renewSong(const QByteArray &song);
/// The songs with ids above the first and up to the second number, as far as something else is kept with them.
KELVO_TRACKER_EXPORT QByteArray renewSongs(qint64 above, qint64 upTo);
/// To follow a change of the length of a song on the album.
KELVO_TRACKER_EXPORT QByteArray renewAlbum(const QByteArray &album);
/// To go with the counting of a playing.
KELVO_TRACKER_EXPORT QByteArray noteAsPlayed(const QByteArray &song);
/// All albums, artists and charts.
KELVO_TRACKER_EXPORT std::vector<QByteArray> renewSums();

// What the store's state says, in resources that no query of music finds.
/// From the first change of a pass to the end of its tidying up.
KELVO_TRACKER_EXPORT QByteArray noteUntidy();
/// After all rows, sums and charts have been renewed: replaces the other note. A program that keeps no rows takes both away
/// when it has indexed, so that all are renewed afterwards.
KELVO_TRACKER_EXPORT std::vector<QByteArray> noteTidy();
/// Selects a text when no pass is under way, another one after each; nothing while one is, and when no rows are kept.
KELVO_TRACKER_EXPORT QByteArray tidyState();
/// Selects the ids of all resources (IRIs as they are), column by column.
KELVO_TRACKER_EXPORT QByteArray idsOf(const std::vector<QByteArray> &resources);
/// The greatest id of a song.
KELVO_TRACKER_EXPORT QByteArray lastSong();

} // namespace KeptRows
