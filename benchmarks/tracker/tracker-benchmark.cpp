// SPDX-License-Identifier: MIT
// tracker-benchmark FOLDER [[--growth | --fill] COUNT...]
// A store of COUNT songs (100,000 and 1,000,000), made once in FOLDER, and a plain SQLite database of the same shape
// beside it: how soon the first rows of every built-in query and of a search are there, how long all songs take, what the
// event loop notices of it, and what a row costs. With --growth: points of how some of it grows with COUNT. With --fill:
// only makes the stores.
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoTrackerModelFactory.h"
#include "KelvoTrackerStore.h"
#include "Measurement.h"
#include "PlainDatabase.h"
#include "Reading.h"
#include "index/StoreWriter.h"
#include "query/QueryCatalog.h"
#include "store/Sparql.h"
#include "store/StoreOpening.h"
#include "store/StoreSession.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocale>
#include <QStandardItemModel>

namespace {
using namespace Reading;
using Type = KelvoTrackerModel::QueryType;
constexpr int songsPerAlbum = 10;
constexpr int songsPerArtist = 40;
constexpr int entriesOfPlaylist = 100;
// As the plain database has it.
constexpr int playedEach = 10;
constexpr int favoriteEach = 100;
constexpr int downloadedEach = 100;

MediaItem song(int number, int count)
{
    MediaItem item;
    item.kind = MediaKind::Song;
    item.number = quint64(number) + 1;
    const int artist = number / songsPerArtist;
    const int album = number / songsPerAlbum;
    item.path = "/home/user/Music/Artist " + QByteArray::number(artist) + "/Album "
        + QByteArray::number(album) + '/' + QByteArray::number(number) + ".mp3";
    item.uri = "file://" + QByteArray(item.path).replace(' ', "%20");
    item.stamp = {item.number, 4'000'000, 1'700'000'000'000'000'000};
    item.title = QStringLiteral("A song with number %1")
                     .arg((qint64(number) * 7919) % count, 7, 10, QLatin1Char('0'));
    item.tags.artists = QStringList(QStringLiteral("Artist number %1").arg(artist));
    item.tags.album = QStringLiteral("Album number %1").arg(album);
    item.tags.genre = QStringLiteral("Rock");
    item.tags.year = 1960 + number % 60;
    item.tags.track = number % songsPerAlbum + 1;
    item.seconds = 180 + number % 100;
    item.mimeType = "audio/mpeg";
    item.isDownloaded = number % downloadedEach == 1;
    return item;
}

MediaItem playlist(const std::vector<MediaItem> &songs)
{
    MediaItem item;
    item.kind = MediaKind::Playlist;
    item.number = 1;
    item.path = "/home/user/Music/list.m3u";
    item.uri = "file://" + item.path;
    item.title = QStringLiteral("A list");
    const size_t step = std::max<size_t>(songs.size() / entriesOfPlaylist, 1);
    for (size_t i = 0; i < songs.size(); i += step)
        item.entries.push_back({songs[i].uri, songs[i].title});
    return item;
}

bool setPlaysAndMarks(StoreConnection &connection, int count, StoreError *error)
{
    std::vector<QByteArray> statements;
    for (int i = 0; i < count; i += playedEach) {
        const QByteArray subject = QByteArray("{ GRAPH <") + Sparql::musicGraph + "> { <"
            + resourceIri(MediaKind::Song, quint64(i) + 1) + "> ";
        if (i % 97)
            statements.push_back("INSERT OR REPLACE " + subject + "nie:usageCounter "
                + QByteArray::number(i % 97) + " ; nie:contentAccessed " + Sparql::now() + " } }");
        if (i % favoriteEach == 0)
            statements.push_back("INSERT DATA " + subject + "nao:hasTag <" + Sparql::favoriteTag + "> } }");
        if (statements.size() < 1000 && i + playedEach < count)
            continue;
        if (!connection.update(statements, error))
            return false;
        statements.clear();
    }
    return true;
}

bool fillStore(const std::vector<MediaItem> &items)
{
    StoreError error;
    const OpenedStore store = openStore(KelvoTrackerStore::instance()->folder(), &error);
    if (!store.connection)
        return false;
    StoreWriter writer(*store.connection);
    std::vector<bool> written;
    constexpr size_t perBatch = 1000;
    for (size_t first = 0; first < items.size() && !error; first += perBatch) {
        const auto begin = items.begin() + qsizetype(first);
        writer.write({begin, begin + qsizetype(std::min(perBatch, items.size() - first))}, &written, &error);
    }
    writer.write({playlist(items)}, &written, &error);
    return !error && setPlaysAndMarks(*store.connection, int(items.size()), &error) && writer.tidyUp(&error);
}

// What the model reads, without the model.
Times readBareCursor()
{
    Times times;
    StoreError error;
    const OpenedStore store = openStore(KelvoTrackerStore::instance()->folder(), &error);
    QElapsedTimer timer;
    timer.start();
    StoreCursor cursor = store.connection->select(CatalogQuery::read("kept/all-songs"), {}, nullptr, &error);
    for (; cursor && cursor.next(&error); ++times.rows) {
        for (int column = 0; column < cursor.columnCount(); ++column)
            cursor.text(column);
        if (times.rows == firstBlock)
            times.first = milliseconds(timer);
    }
    times.all = milliseconds(timer);
    return times;
}

/// The id in column 0 of the first row whose column 1 shows the text, of any when that is empty.
int idOf(KelvoTrackerModelFactory &factory, Type type, const QString &text)
{
    const std::unique_ptr<KelvoTrackerModel> model(factory.getModel(type, 0, 0));
    waitFor(model.get(), &KelvoTrackerModel::completed);
    for (int row = 0; row < model->rowCount(); ++row) {
        if (text.isEmpty() || model->index(row, 1).data().toString() == text)
            return model->index(row, 0).data().toInt();
    }
    return 0;
}

/// Milliseconds until the first songs with the word in any text are there, as a program asks for them.
double searchFor(const QByteArray &word)
{
    std::vector<double> times;
    StoreError error;
    const StoreSession::Entry store = KelvoTrackerStore::instance()->session()->enter([] {}, &error);
    for (int round = 0; round < rounds && store; ++round) {
        QElapsedTimer timer;
        timer.start();
        StoreCursor cursor = store.connection().select(QByteArray("SELECT ?song ?title ?url { GRAPH <")
                + Sparql::musicGraph + "> { ?song fts:match \"" + word
                + "\" ; a nmm:MusicPiece ; nie:title ?title ; nie:url ?url } }",
            {}, nullptr, &error);
        for (int row = 0; row < firstBlock && cursor && cursor.next(&error); ++row)
            cursor.text(1);
        times.push_back(milliseconds(timer));
    }
    return Measurement::median(times);
}

void measureFirstBlocks(
    KelvoTrackerModelFactory &factory, const PlainDatabase &plain, const std::string &what)
{
    // What the plain queries ask for by number.
    const int artist = idOf(factory, Type::AllArtists, QStringLiteral("Artist number 4"));
    const int album = idOf(factory, Type::AllAlbums, QStringLiteral("Album number 4"));
    const int list = idOf(factory, Type::AllPlaylists, QStringLiteral("A list"));
    const int played = idOf(factory, Type::MostPlayedSongs, {});
    const struct
    {
        const char *name;
        Type type;
        int id;
        const char *plain; ///< null: the plain database has nothing of it
    } queries[] = {
        {"all songs", Type::AllSongs, 0, PlainQuery::allSongs},
        {"recently added songs", Type::RecentlyAddedSongs, 0, PlainQuery::recentlyAdded},
        {"recently played songs", Type::RecentlyPlayedSongs, 0, nullptr},
        {"most played songs", Type::MostPlayedSongs, 0, PlainQuery::mostPlayed},
        {"all albums", Type::AllAlbums, 0, PlainQuery::allAlbums},
        {"all artists", Type::AllArtists, 0, PlainQuery::allArtists},
        {"all playlists", Type::AllPlaylists, 0, nullptr},
        {"favorite songs", Type::FavoriteSongs, 0, nullptr},
        {"never played songs", Type::NeverPlayedSongs, 0, PlainQuery::neverPlayed},
        {"downloaded songs", Type::DownloadedSongs, 0, nullptr},
        {"an artist's albums", Type::AlbumsOfArtist, artist, PlainQuery::albumsOfArtist},
        {"an album's songs", Type::SongsOfAlbum, album, PlainQuery::songsOfAlbum},
        {"a playlist's songs", Type::SongsOfPlaylist, list, nullptr},
        {"a song's related songs", Type::RelatedSongs, played, nullptr},
    };
    for (const auto &query : queries) {
        std::vector<double> reference{0};
        if (query.plain)
            reference.clear();
        for (int round = 0; round < rounds && query.plain; ++round)
            reference.push_back(plain.read(query.plain, firstBlock).first);
        Measurement::row(what + "first block of " + query.name, firstBlockOf(factory, query.type, query.id),
            "ms", query.plain ? "SQLite" : "", Measurement::median(reference), "at most 50 ms");
    }
    Measurement::row(what + "search for a word in every song, first rows", searchFor("song"), "ms", "", 0,
        "at most 50 ms");
    Measurement::row("- for a word in one song", searchFor("0000042"), "ms", "", 0, "at most 50 ms");
}

// As the console does it when a whole result is appended: row by row, as texts.
void measureAppending(const KelvoTrackerModel &songs, const std::string &what)
{
    QStandardItemModel rows;
    KelvoGeneralSourcePlaylist playlist(
        QStringLiteral("id"), QStringLiteral("name"), QStringLiteral("KelvoTrackerSource"));
    playlist.setUnderlyingModel(&rows);
    QElapsedTimer timer;
    timer.start();
    for (int row = 0; row < songs.rowCount(); ++row) {
        QList<QStandardItem *> items;
        for (int column = 0; column < songs.columnCount(); ++column)
            items.append(new QStandardItem(songs.index(row, column).data().toString()));
        rows.appendRow(items);
    }
    Measurement::row(what + "all rows appended to an empty playlist, in one go", milliseconds(timer), "ms");
}

bool prepare(const QString &place, int count)
{
    qputenv("XDG_DATA_HOME", QFile::encodeName(place));
    QFile complete(place + QLatin1String("/complete-3"));
    if (complete.exists())
        return true;
    QDir(place).removeRecursively();
    QDir().mkpath(place);
    std::vector<MediaItem> items;
    for (int i = 0; i < count; ++i)
        items.push_back(song(i, count));
    return fillStore(items)
        && PlainDatabase(QFile::encodeName(place + QLatin1String("/plain.db"))).fill(items)
        && complete.open(QIODevice::WriteOnly);
}

bool measure(const QString &folder, int count)
{
    const QString place = QStringLiteral("%1/%2").arg(folder).arg(count);
    if (!prepare(place, count))
        return false;
    readBareCursor(); // both caches are warm from here on
    const Times bare = readBareCursor();
    const PlainDatabase plain(QFile::encodeName(place + QLatin1String("/plain.db")));
    OpenFactory factory;
    for (const char *query : {PlainQuery::allSongs, PlainQuery::flatSongs})
        plain.read(query, firstBlock); // its caches, too
    std::unique_ptr<KelvoTrackerModel> songs;
    const Times model = readModel(factory, &songs);
    const PlainDatabase::Times raw = plain.read(PlainQuery::allSongs, firstBlock);
    const PlainDatabase::Times flat = plain.read(PlainQuery::flatSongs, firstBlock);
    const std::string what = QLocale(QLocale::English).toString(count).toStdString() + " songs: ";
    using Measurement::row;
    row(what + "first 200 rows of all songs", model.first, "ms", "SQLite", raw.first, "at most 50 ms");
    row(what + "all rows in the model", model.all, "ms", "SQLite, one table", flat.all, "at most 2");
    row("- the same", model.all, "ms", "SQLite, three tables", raw.all);
    row("- the same", model.all, "ms", "bare cursor", bare.all, "at most 1.05");
    row("- the bare cursor", bare.all, "ms", "SQLite, one table", flat.all);
    row("- longest stall of the event loop", model.longestStall, "ms", "", 0, "at most 8 ms");
    row("- most work between two turns of it", model.mostWork, "ms", "", 0, "at most 8 ms");
    row("- growth of the process by a row", model.residentPerRow, "bytes", "", 0, "at most 1200");
    measureFirstBlocks(factory, plain, what);
    if (count <= 100'000)
        measureAppending(*songs, what);
    return model.rows == count && raw.rows == count && flat.rows == count && bare.rows == count;
}

/// What is worth a curve; without the references, which tell nothing of growth.
bool measureGrowth(const QString &folder, int count)
{
    if (!prepare(QStringLiteral("%1/%2").arg(folder).arg(count), count))
        return false;
    readBareCursor(); // the caches are warm from here on
    OpenFactory factory;
    using Measurement::growth;
    growth("songs: first 200 rows of all songs", count, firstBlockOf(factory, Type::AllSongs, 0));
    growth("songs: first 200 rows of all albums", count, firstBlockOf(factory, Type::AllAlbums, 0));
    growth("songs: search, a word in every song, 200 rows", count, searchFor("song"));
    growth("songs: search, a word in one song", count, searchFor("0000042"));
    std::vector<double> all;
    int rows = count;
    for (int round = 0; round < 3 && rows == count; ++round) {
        std::unique_ptr<KelvoTrackerModel> songs;
        const Times times = readModel(factory, &songs);
        all.push_back(times.all);
        rows = times.rows;
    }
    growth("songs: all rows of all songs", count, Measurement::median(all));
    return rows == count;
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc < 2)
        return 2;
    const QString folder = QDir(QFile::decodeName(argv[1])).absolutePath();
    std::vector<int> counts = Measurement::growthSizes(argc, argv, 2);
    const bool isGrowth = !counts.empty();
    const bool isFilling = argc > 2 && QByteArray(argv[2]) == "--fill";
    for (int i = isFilling ? 3 : 2; i < argc && !isGrowth; ++i)
        counts.push_back(QByteArray(argv[i]).toInt());
    if (isFilling) {
        return std::all_of(counts.begin(), counts.end(),
                   [&](int count) { return prepare(QStringLiteral("%1/%2").arg(folder).arg(count), count); })
            ? 0
            : 1;
    }
    if (counts.empty())
        counts = {100'000, 1'000'000};
    for (const int count : counts) {
        if (!(isGrowth ? measureGrowth(folder, count) : measure(folder, count)))
            return 1;
        // The store of the next size lies elsewhere.
        if (KelvoTrackerStore::instance()->state() != KelvoTrackerStore::Closed)
            waitFor(KelvoTrackerStore::instance(), &KelvoTrackerStore::closed);
    }
    return 0;
}
