// SPDX-License-Identifier: MIT
#include "KeptRows.h"

#include "Sparql.h"

#include <QByteArrayList>

namespace {
const QByteArray graph = QByteArray("GRAPH <") + Sparql::musicGraph + "> { ";
const QByteArray with = QByteArray("WITH <") + Sparql::musicGraph + "> ";
// Named by what it was made for; older programs take the whole resource away after each pass.
const QByteArray state("<urn:kelvo:untidy>");
const QByteArray playedChart("<urn:kelvo:chart:played>");
const QByteArray addedChart("<urn:kelvo:chart:added>");

// Sets ?new where it differs, so that what stays as it is costs no writing.
QByteArray renew(const QByteArray &subject, const QByteArray &pattern)
{
    return "INSERT OR REPLACE { " + graph + subject + " nie:generator ?new } } WHERE { " + graph + pattern
        + " OPTIONAL { " + subject + " nie:generator ?old } FILTER (!BOUND(?old) || ?old != ?new) } }";
}

// The values of a row as one text.
QByteArray rowOf(const QByteArrayList &values)
{
    return "CONCAT(" + values.join(", \"\\t\", ") + ") AS ?new";
}

QByteArray renewSongsWhere(const QByteArray &song, const QByteArray &condition)
{
    const QByteArray row = rowOf({"?url", "STR(?length)", "STR(?track)", "STR(tracker:id(?artist))",
        "?artistName", "STR(tracker:id(?album))", "?albumName", "?genre",
        "COALESCE(SUBSTR(STR(?year), 1, 4), \"\")", "STR(?added)"});
    return renew(song,
        song + " a nmm:MusicPiece ; nie:url ?url ; nfo:duration ?length ; nmm:trackNumber ?track ; "
            + "nmm:artist ?artist ; nmm:musicAlbum ?album ; nfo:genre ?genre ; nie:created ?added . "
            + "?artist nmm:artistName ?artistName . ?album nie:title ?albumName . OPTIONAL { " + song
            + " nie:contentCreated ?year } BIND (" + row + ')' + condition);
}

QByteArray renewAlbums(const QByteArray &which)
{
    const QByteArray row
        = rowOf({"STR(COUNT(?song))", "STR(SUM(?length))", "STR(COUNT(DISTINCT ?performer))"});
    return renew("?album",
        "{ SELECT ?album (" + row + ") { " + which
            + " ?song nmm:musicAlbum ?album ; nfo:duration ?length ; nmm:artist ?performer } GROUP BY "
              "?album }");
}

QByteArray renewArtists()
{
    const QByteArray row = rowOf({"STR(COUNT(DISTINCT ?song))", "STR(COUNT(DISTINCT ?album))"});
    return renew("?artist",
        "{ SELECT ?artist (" + row
            + ") { ?artist a nmm:Artist . ?song nmm:performer ?artist ; nmm:musicAlbum ?album } GROUP BY "
              "?artist }");
}

QByteArray forget(const QByteArray &subject, const QByteArray &property, const QByteArray &condition = {})
{
    const QByteArray pattern = subject + ' ' + property + " ?o";
    return with + "DELETE { " + pattern + " } WHERE { " + pattern + condition + " }";
}

// As many as the queries show, by the same order. Others that are in it do no harm.
QByteArray fill(const QByteArray &chart, const QByteArray &pattern, const QByteArray &order)
{
    const QByteArray entry = chart + " nie:hasLogicalPart ?song";
    return "INSERT { " + graph + chart + " a nie:InformationElement . " + entry
        + " } } WHERE { { SELECT ?song { " + graph + "?song a nmm:MusicPiece ; " + pattern + " } } ORDER BY "
        + order + " LIMIT 500 } FILTER NOT EXISTS { " + graph + entry + " } } }";
}

// Empties a chart in which too many others are.
QByteArray trim(const QByteArray &chart)
{
    return forget(chart, "nie:hasLogicalPart",
        " . { SELECT (COUNT(?entry) AS ?entries) { " + graph + chart
            + " nie:hasLogicalPart ?entry } } } FILTER (?entries > 2000)");
}
} // namespace

QByteArray KeptRows::propertyOf(const Song &song, const QByteArray &added)
{
    const QByteArrayList values{song.uri, QByteArray::number(song.length), QByteArray::number(song.track),
        song.artistId, song.artistName, song.albumId, song.albumName, song.genre, song.year,
        added.mid(1, added.size() - 2)};
    return "nie:generator " + Sparql::literal(values.join(separator));
}

QByteArray KeptRows::renewSong(const QByteArray &song)
{
    return renewSongsWhere(song, {});
}

QByteArray KeptRows::renewSongs(qint64 above, qint64 upTo)
{
    return renewSongsWhere("?song",
        " FILTER (tracker:id(?song) > " + QByteArray::number(above)
            + " && tracker:id(?song) <= " + QByteArray::number(upTo) + ')');
}

// Asked for by one of its songs, the library adds up all songs that there are.
QByteArray KeptRows::renewAlbum(const QByteArray &album)
{
    return renewAlbums("?album a nmm:MusicAlbum . FILTER (?album = " + album + ')');
}

QByteArray KeptRows::noteAsPlayed(const QByteArray &song)
{
    return "INSERT DATA { " + graph + playedChart + " a nie:InformationElement ; nie:hasLogicalPart " + song
        + " } }";
}

std::vector<QByteArray> KeptRows::renewSums()
{
    return {
        forget("?artist", "nie:generator",
            " . ?artist a nmm:Artist . FILTER NOT EXISTS { ?song nmm:performer ?artist }"),
        renewAlbums("?album a nmm:MusicAlbum ."),
        renewArtists(),
        trim(playedChart),
        // The titles are optional so that songs are not gone through in their order.
        fill(playedChart, "nie:usageCounter ?plays . FILTER (?plays > 0) OPTIONAL { ?song nie:title ?title }",
            "DESC(?plays) ?title"),
        fill(playedChart, "nie:contentAccessed ?accessed", "DESC(?accessed)"),
        trim(addedChart),
        fill(addedChart, "nie:title ?title ; nie:created ?added", "DESC(?added) ?title"),
    };
}

QByteArray KeptRows::noteUntidy()
{
    return "INSERT DATA { " + graph + state + " a nie:InformationElement } }";
}

std::vector<QByteArray> KeptRows::noteTidy()
{
    return {"DELETE DATA { " + graph + state + " a rdfs:Resource } }",
        "INSERT DATA { " + graph + state + " a nie:DataObject ; nie:created " + Sparql::now() + " } }"};
}

QByteArray KeptRows::tidyState()
{
    return "SELECT ?time { " + graph + state + " a nie:DataObject ; nie:created ?time . FILTER NOT EXISTS { "
        + state + " a nie:InformationElement } } }";
}

QByteArray KeptRows::idsOf(const std::vector<QByteArray> &resources)
{
    QByteArray text("SELECT");
    for (const QByteArray &resource : resources)
        text += " tracker:id(" + Sparql::iri(resource) + ')';
    return text + " {}";
}

QByteArray KeptRows::lastSong()
{
    return "SELECT (MAX(tracker:id(?song)) AS ?last) { " + graph + "?song a nmm:MusicPiece } }";
}
