// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"

#include <QAbstractTableModel>

#include <chrono>
#include <memory>

class KelvoTrackerModelFactory;

/// The result of a built-in query of the tracker store, as KelvoTrackerModelFactory::getModel() returns it.
///
/// The rows are those of the moment at which the query began, whatever changes meanwhile. They come from the event
/// loop: the first block by itself, the rest after fetchRest(). Behind those of the store come those of each library on
/// another machine that the user named (KELVO_TRACKER), library by library. Only when the store itself was replaced before, the
/// rows that are there are removed, all rows of the new store inserted, and error() says so. Column 0 is the integer id of the row's song, album, artist or playlist (valid
/// until the store is rebuilt; of another machine: for as long as the program runs; 0 for an entry of a playlist that is not in the store), column 1 the text that lists
/// show. Song and playlist results go on with the URI in column 2 and the duration in seconds in column 3. The
/// header texts (Qt::DisplayRole) name the columns:
///
/// | result | columns |
/// |---|---|
/// | songs | songId, songTitle, songUri, songLength, trackNumber, artistId, artistName, albumId, albumName, genre, year, favorited (bool), usageCounter, added (date and time) |
/// | albums | albumId, albumName, artistId, artistName, albumTrackCount, albumLength, albumArtistCount, albumSongs |
/// | artists | artistId, artistName, numberOfSongs, numberOfAlbums |
/// | playlists | playlistId, playlistName, playlistUri, playlistLength, playlistTrackCount |
///
/// Values that are not known are invalid; missing album and artist names show the factory's texts.
/// GUI thread. Destroying the model calls its query off at once.
class KELVO_TRACKER_EXPORT KelvoTrackerModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum QueryType {
        AllSongs = 0, ///< by title
        SongsOfAlbum = 1, ///< in track order
        RecentlyAddedSongs = 3, ///< the last one first, at most 500
        RecentlyPlayedSongs = 4, ///< the last one first, at most 500
        MostPlayedSongs = 5, ///< the most played one first, at most 500
        FavoriteSongs = 6,
        NeverPlayedSongs = 7,
        DownloadedSongs = 8,
        SongsOfPlaylist = 9, ///< in the playlist's order, with what is not in the store
        RelatedSongs = 14, ///< the other songs of a song's artists
        AllAlbums = 100,
        AlbumsOfArtist = 101,
        AllArtists = 200,
        AllPlaylists = 300,
    };
    Q_ENUM(QueryType)

    ~KelvoTrackerModel() override;

    /// Loads the rows that remain after the first block. Ends with completed() or error(), also when nothing
    /// remains. Before the first block is there, the rest follows it.
    void fetchRest();

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    /// All rows are there.
    void completed();
    /// The query failed; a text for the user. Rows that are there stay. After completed(): what became of a store that
    /// was damaged, and which libraries on other machines failed, and why. Nothing comes after it but by fetchRest().
    void error(QString message);

private:
    friend class KelvoTrackerModelFactory;
    KelvoTrackerModel(QueryType type, int firstBlock, int streamBlock, int id, const QString &unknownAlbum,
        const QString &unknownArtist, std::chrono::milliseconds idleTime);

    void startQuery(std::shared_ptr<class StoreSession> session);
    void queryAnew();

    struct Private;
    std::unique_ptr<Private> d;
};
