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

QByteArray plays(const StoreCursor &cursor, int count, int time)
{
    QByteArray text = " nie:usageCounter " + QByteArray::number(cursor.integer(count));
    if (cursor.text(time))
        text += QByteArray(" ; nie:contentAccessed \"") + cursor.text(time) + '"';
    return text;
}
} // namespace

bool PlayMemory::keep(StoreConnection &connection, const std::vector<KnownFile> &files, StoreError *error)
{
    QSet<quint64> songs;
    for (const KnownFile &file : files) {
        if (file.kind == MediaKind::Song)
            songs.insert(file.number);
    }
    if (songs.isEmpty())
        return true;
    std::vector<QByteArray> statements;
    StoreCursor cursor = connection.select("SELECT ?song ?url ?count ?time { " + inGraph
            + "?song a nmm:MusicPiece ; nie:url ?url ; nie:usageCounter ?count . FILTER (?count > 0) "
              "OPTIONAL { ?song "
              "nie:contentAccessed ?time } } }",
        {}, nullptr, error);
    while (cursor && cursor.next(error)) {
        const quint64 number = resourceNumber(cursor.text(0));
        if (songs.contains(number))
            statements.push_back("INSERT OR REPLACE { " + inGraph + memoryOf(number)
                + " a nfo:Bookmark ; nie:title " + Sparql::literal(QByteArray(cursor.text(1))) + " ;"
                + plays(cursor, 2, 3) + " } }");
    }
    cursor = StoreCursor();
    return !*error && (statements.empty() || connection.update(statements, error));
}

bool PlayMemory::giveBack(StoreConnection &connection, StoreError *error)
{
    std::vector<QByteArray> statements;
    StoreCursor cursor = connection.select("SELECT ?memory ?song ?count ?time { " + inGraph
            + "?memory a nfo:Bookmark ; nie:title ?url ; nie:usageCounter ?count . ?song nie:url ?url ; a "
              "nmm:MusicPiece . OPTIONAL { ?memory nie:contentAccessed ?time } } }",
        {}, nullptr, error);
    while (cursor && cursor.next(error)) {
        statements.push_back(
            "INSERT OR REPLACE { " + inGraph + Sparql::iri(cursor.text(1)) + plays(cursor, 2, 3) + " } }");
        statements.push_back(
            "DELETE DATA { " + inGraph + Sparql::iri(cursor.text(0)) + " a rdfs:Resource } }");
    }
    cursor = StoreCursor();
    return !*error && (statements.empty() || connection.update(statements, error));
}
