// SPDX-License-Identifier: MIT
#include "PlainDatabase.h"

#include <QElapsedTimer>
#include <QHash>
#include <QVariant>

#include <sqlite3.h>

#define SONG_COLUMNS                                                                                         \
    "SELECT song.id, song.title, url, length, track, song.artist, artist.name, album, album.title, genre, "  \
    "year, "                                                                                                 \
    "EXISTS (SELECT 1 FROM mark WHERE mark.song = song.id), plays, added FROM song JOIN artist ON "          \
    "artist.id = "                                                                                           \
    "song.artist JOIN album ON album.id = album "
#define ALBUM_COLUMNS                                                                                        \
    "SELECT album.id, album.title, artist.id, artist.name, COUNT(song.id), SUM(length), COUNT(DISTINCT "     \
    "song.artist), "                                                                                         \
    "COUNT(song.id) FROM album JOIN artist ON artist.id = album.artist JOIN song ON song.album = album.id "

const char PlainQuery::allSongs[] = SONG_COLUMNS "ORDER BY song.title";
const char PlainQuery::flatSongs[] = "SELECT * FROM flat ORDER BY title";
const char PlainQuery::recentlyAdded[] = SONG_COLUMNS "ORDER BY added DESC, song.title LIMIT 500";
const char PlainQuery::neverPlayed[] = SONG_COLUMNS "WHERE plays = 0 ORDER BY song.title";
const char PlainQuery::mostPlayed[]
    = SONG_COLUMNS "WHERE plays > 0 ORDER BY plays DESC, song.title LIMIT 500";
const char PlainQuery::songsOfAlbum[] = SONG_COLUMNS "WHERE song.album = 5 ORDER BY track";
const char PlainQuery::allAlbums[] = ALBUM_COLUMNS "GROUP BY album.id ORDER BY album.title";
const char PlainQuery::albumsOfArtist[] = ALBUM_COLUMNS
    "WHERE album.id IN (SELECT album FROM song WHERE artist = 5) GROUP BY album.id ORDER BY album.title";
const char PlainQuery::allArtists[]
    = "SELECT artist.id, artist.name, COUNT(DISTINCT song.id), COUNT(DISTINCT album) "
      "FROM artist JOIN song ON song.artist = artist.id GROUP BY artist.id ORDER BY name";

namespace {
const char schema[] = "CREATE TABLE artist (id INTEGER PRIMARY KEY, name TEXT); CREATE TABLE album (id "
                      "INTEGER PRIMARY KEY, title TEXT, "
                      "artist INTEGER); CREATE TABLE mark (song INTEGER PRIMARY KEY); CREATE TABLE song (id "
                      "INTEGER PRIMARY KEY, title "
                      "TEXT, url TEXT UNIQUE, length INTEGER, track INTEGER, artist INTEGER, album INTEGER, "
                      "genre TEXT, year TEXT, plays "
                      "INTEGER, added INTEGER)";
const char indexes[]
    = "CREATE INDEX titles ON song (title); CREATE INDEX albums ON song (album); CREATE INDEX artists ON "
      "song (artist); CREATE TABLE flat (id INTEGER PRIMARY KEY, title TEXT, url TEXT, length INTEGER, track "
      "INTEGER, artist INTEGER, name TEXT, album INTEGER, album_title TEXT, genre TEXT, year TEXT, favorite "
      "INTEGER, plays INTEGER, added INTEGER); INSERT INTO flat " SONG_COLUMNS
      "; CREATE INDEX flat_titles ON flat (title); COMMIT; ANALYZE";

/// A prepared insertion; values are given column by column.
class Insertion
{
public:
    Insertion(sqlite3 *database, const char *text)
    {
        sqlite3_prepare_v2(database, text, -1, &m_statement, nullptr);
    }
    ~Insertion() { sqlite3_finalize(m_statement); }
    Q_DISABLE_COPY_MOVE(Insertion)

    void add(const QVector<QVariant> &values)
    {
        for (int i = 0; i < values.size(); ++i) {
            const QByteArray text = values[i].toString().toUtf8();
            if (values[i].typeId() == QMetaType::Int)
                sqlite3_bind_int(m_statement, i + 1, values[i].toInt());
            else
                sqlite3_bind_text(m_statement, i + 1, text.constData(), int(text.size()), SQLITE_TRANSIENT);
        }
        sqlite3_step(m_statement);
        sqlite3_reset(m_statement);
    }

private:
    sqlite3_stmt *m_statement = nullptr;
};
} // namespace

PlainDatabase::PlainDatabase(const QByteArray &path)
{
    sqlite3_open(path.constData(), &m_database);
}

PlainDatabase::~PlainDatabase()
{
    sqlite3_close(m_database);
}

bool PlainDatabase::fill(const std::vector<MediaItem> &items)
{
    sqlite3_exec(m_database, "BEGIN", nullptr, nullptr, nullptr);
    sqlite3_exec(m_database, schema, nullptr, nullptr, nullptr);
    Insertion artist(m_database, "INSERT INTO artist VALUES (?, ?)");
    Insertion album(m_database, "INSERT INTO album VALUES (?, ?, ?)");
    Insertion song(m_database, "INSERT INTO song VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    QHash<QString, int> artists;
    QHash<QString, int> albums;
    int number = 0;
    for (const MediaItem &item : items) {
        int &by = artists[item.tags.artists.first()];
        if (by == 0)
            artist.add({by = int(artists.size()), item.tags.artists.first()});
        int &on = albums[item.tags.album];
        if (on == 0)
            album.add({on = int(albums.size()), item.tags.album, by});
        // Every tenth song was played some times.
        const int plays = number % 10 == 0 ? number % 97 : 0;
        song.add({++number, item.title, QString::fromLatin1(item.uri), item.seconds, item.tags.track, by, on,
            item.tags.genre, QStringLiteral("%1-01-01T00:00:00Z").arg(item.tags.year), plays, 1'700'000'000});
    }
    return sqlite3_exec(m_database, indexes, nullptr, nullptr, nullptr) == SQLITE_OK;
}

PlainDatabase::Times PlainDatabase::read(const char *query, int firstBlock) const
{
    Times times;
    QElapsedTimer timer;
    timer.start();
    sqlite3_stmt *select = nullptr;
    sqlite3_prepare_v2(m_database, query, -1, &select, nullptr);
    const int columns = sqlite3_column_count(select);
    while (sqlite3_step(select) == SQLITE_ROW) {
        for (int column = 0; column < columns; ++column)
            sqlite3_column_text(select, column);
        if (++times.rows == firstBlock)
            times.first = double(timer.nsecsElapsed()) / 1e6;
    }
    times.all = double(timer.nsecsElapsed()) / 1e6;
    if (times.first == 0)
        times.first = times.all;
    sqlite3_finalize(select);
    return times;
}
