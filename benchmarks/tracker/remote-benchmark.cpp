// SPDX-License-Identifier: MIT
// remote-benchmark FOLDER ADDRESS COUNT [--growth]
// A library of COUNT songs on a server (a SPARQL endpoint at ADDRESS that serves a store of tracker-benchmark), beside an own
// one in FOLDER that is empty: how soon the first rows of the built-in queries are there, how long all songs take, and what a
// row costs here. With --growth: points of how some of it grows with COUNT.
#include "KelvoTrackerStore.h"
#include "Measurement.h"
#include "Reading.h"

#include <QCoreApplication>
#include <QDir>
#include <QLocale>

namespace {
using namespace Reading;
using Type = KelvoTrackerModel::QueryType;

struct Query
{
    const char *name;
    Type type;
};
// Those that ask for nothing of which only the server knows the number.
constexpr Query queries[] = {
    {"all songs", Type::AllSongs},
    {"recently added songs", Type::RecentlyAddedSongs},
    {"most played songs", Type::MostPlayedSongs},
    {"all albums", Type::AllAlbums},
    {"all artists", Type::AllArtists},
    {"favorite songs", Type::FavoriteSongs},
    {"never played songs", Type::NeverPlayedSongs},
    {"downloaded songs", Type::DownloadedSongs},
};

constexpr int mostRead = 100'000; // songs; the endpoint looks for every page from the beginning

bool measure(int count)
{
    OpenFactory factory;
    const std::string what = QLocale(QLocale::English).toString(count).toStdString() + " songs on a server: ";
    for (const Query &query : queries)
        Measurement::row(what + "first block of " + query.name, firstBlockOf(factory, query.type, 0), "ms",
            "", 0, "reported");
    if (count > mostRead)
        return true;
    std::unique_ptr<KelvoTrackerModel> songs;
    const Times all = readModel(factory, &songs);
    Measurement::row(what + "all rows in the model", all.all, "ms");
    Measurement::row("- longest stall of the event loop", all.longestStall, "ms", "", 0, "at most 8 ms");
    Measurement::row("- growth of the process by a row", all.residentPerRow, "bytes", "", 0, "at most 1200");
    return all.rows == count;
}

bool measureGrowth(int count)
{
    OpenFactory factory;
    Measurement::growth(
        "songs on a server: first 200 rows of all songs", count, firstBlockOf(factory, Type::AllSongs, 0));
    Measurement::growth(
        "songs on a server: first 200 rows of all albums", count, firstBlockOf(factory, Type::AllAlbums, 0));
    std::unique_ptr<KelvoTrackerModel> songs;
    const Times all = readModel(factory, &songs);
    Measurement::growth("songs on a server: all rows of all songs", count, all.all);
    return all.rows == count;
}
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc < 4)
        return 2;
    qputenv("XDG_DATA_HOME", QFile::encodeName(QDir(QFile::decodeName(argv[1])).absolutePath()));
    qputenv("KELVO_TRACKER", argv[2]);
    const int count = QByteArray(argv[3]).toInt();
    return (argc > 4 ? measureGrowth(count) : measure(count)) ? 0 : 1;
}
