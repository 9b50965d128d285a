// SPDX-License-Identifier: MIT
#include "PlayMemory.h"

#include "store/Sparql.h"

#include <QSet>

#include <algorithm>

namespace {
const QByteArray inGraph = QByteArray("GRAPH <") + Sparql::musicGraph + "> { ";

// A bookmark, which no query of songs finds, with the song's URI for its title.
QByteArray memoryOf(quint64 song)
{
    return "<urn:kelvo:played:" + QByteArray::number(song) + '>';
}

struct Playings
{
    qint64 count = 0;
    QByteArray lastTime;

    void add(const Playings &others)
    {
        count += others.count;
        // Texts of one form: the later time is the greater one.
        lastTime = std::max(lastTime, others.lastTime);
    }
    QByteArray properties() const
    {
        return " nie:usageCounter " + QByteArray::number(count)
            + (lastTime.isEmpty() ? QByteArray() : " ; nie:contentAccessed \"" + lastTime + '"');
    }
};
struct PlayedSong
{
    QByteArray song;
    QByteArray uri;
    Playings playings;
};

std::vector<PlayedSong> playedSongs(const StoreConnection &connection, StoreError *error)
{
    std::vector<PlayedSong> songs;
    StoreCursor cursor = connection.select("SELECT ?song ?url ?count ?time { " + inGraph
            + "?song a nmm:MusicPiece ; nie:url ?url ; nie:usageCounter ?count . FILTER (?count > 0) "
              "OPTIONAL { ?song nie:contentAccessed ?time } } }",
        {}, nullptr, error);
    while (cursor && cursor.next(error))
        songs.push_back({cursor.text(0), cursor.text(1), {cursor.integer(2), cursor.text(3)}});
    return songs;
}
} // namespace

QHash<quint64, QByteArray> PlayMemory::of(
    const StoreConnection &connection, const std::vector<KnownFile> &files, StoreError *error)
{
    QSet<quint64> songs;
    for (const KnownFile &file : files) {
        if (file.kind == MediaKind::Song)
            songs.insert(file.number);
    }
    QHash<quint64, QByteArray> statements;
    if (songs.isEmpty())
        return statements;
    for (const PlayedSong &played : playedSongs(connection, error)) {
        const quint64 number = resourceNumber(played.song);
        if (songs.contains(number))
            statements.insert(number,
                "INSERT OR REPLACE { " + inGraph + memoryOf(number) + " a nfo:Bookmark ; nie:title "
                    + Sparql::literal(played.uri) + " ;" + played.playings.properties() + " } }");
    }
    return statements;
}

std::vector<QByteArray> PlayMemory::givingBack(const StoreConnection &connection, StoreError *error)
{
    std::vector<QByteArray> statements;
    QHash<QByteArray, Playings> kept; // by song
    StoreCursor cursor = connection.select("SELECT ?memory ?song ?count ?time { " + inGraph
            + "?memory a nfo:Bookmark ; nie:title ?url ; nie:usageCounter ?count . ?song nie:url ?url ; a "
              "nmm:MusicPiece . OPTIONAL { ?memory nie:contentAccessed ?time } } }",
        {}, nullptr, error);
    while (cursor && cursor.next(error)) {
        kept[cursor.text(1)].add({cursor.integer(2), cursor.text(3)});
        statements.push_back(
            "DELETE DATA { " + inGraph + Sparql::iri(cursor.text(0)) + " a rdfs:Resource } }");
    }
    cursor = StoreCursor();
    if (kept.isEmpty())
        return statements;
    // Those since it has come back. Asked for by the query above, the library answers with the kept ones again.
    for (const PlayedSong &played : playedSongs(connection, error)) {
        if (const auto playings = kept.find(played.song); playings != kept.end())
            playings->add(played.playings);
    }
    for (auto playings = kept.cbegin(); playings != kept.cend(); ++playings)
        statements.push_back(
            "INSERT OR REPLACE { " + inGraph + Sparql::iri(playings.key()) + playings->properties() + " } }");
    return statements;
}
