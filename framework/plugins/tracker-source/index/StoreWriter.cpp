// SPDX-License-Identifier: MIT
#include "StoreWriter.h"

#include "KelvoMessageHandler.h"
#include "PlayMemory.h"
#include "TextRepair.h"
#include "store/FileUri.h"
#include "store/KeptRows.h"
#include "store/Sparql.h"

#include <QCryptographicHash>

using Sparql::iri;
using Sparql::literal;

namespace {
const QByteArray graph = QByteArray("GRAPH <") + Sparql::musicGraph + '>';
const QByteArray with = QByteArray("WITH <") + Sparql::musicGraph + "> ";
constexpr size_t entriesPerStatement = 500;
// Songs are renewed in so many steps that a program which ends need not wait.
constexpr qint64 idsPerStep = 20'000;
constexpr size_t idsPerQuery = 100;

QByteArray hashed(const char *kind, const QString &first, const QString &second = {})
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    hash.addData(first.toUtf8());
    hash.addData(QByteArray(1, '\0'));
    hash.addData(second.toUtf8());
    return QByteArray("urn:kelvo:") + kind + ':' + hash.result().left(12).toHex();
}

QByteArray insert(const QByteArray &triples)
{
    return "INSERT DATA { " + graph + " { " + triples + " } }";
}

QByteArray clear(const QByteArray &subject, const char *property)
{
    const QByteArray pattern = subject + ' ' + property + " ?o";
    return with + "DELETE { " + pattern + " } WHERE { " + pattern + " }";
}

// Ends the version of a file that was moved and has not been read at its new place.
const QByteArray moved(":moved");

// What a file has whatever it holds.
QByteArray commonProperties(const MediaItem &item)
{
    QByteArray text = " ; nie:title " + literal(item.title) + " ; nie:url " + literal(item.uri)
        + " ; nie:version " + literal(item.stamp.toText());
    if (!item.mimeType.isEmpty())
        text += " ; nie:mimeType " + literal(item.mimeType);
    return text;
}

// Four digits; empty when it is not known.
QByteArray yearOf(const MediaItem &item)
{
    const int year = item.tags.year;
    return year >= 1 && year <= 9999 ? QByteArray::number(year).rightJustified(4, '0') : QByteArray();
}

QByteArray videoStatement(const MediaItem &item)
{
    const QByteArray subject = iri(resourceIri(MediaKind::Video, item.number));
    QByteArray text = "INSERT OR REPLACE { " + subject + " a nmm:Video , nfo:FileDataObject"
        + commonProperties(item) + " ; nfo:fileName " + literal(TextRepair::fileName(item.uri))
        + " ; nfo:fileSize " + QByteArray::number(item.stamp.size);
    if (item.seconds > 0)
        text += " ; nfo:duration " + QByteArray::number(item.seconds);
    if (item.isNew)
        text += " ; nie:created " + Sparql::now();
    return text + " }";
}

std::vector<QByteArray> removal(MediaKind kind, quint64 number)
{
    const QByteArray subject = iri(resourceIri(kind, number));
    const QByteArray triple = subject + " a rdfs:Resource";
    if (kind == MediaKind::Video)
        return {"DELETE DATA { " + triple + " }"};
    std::vector<QByteArray> statements;
    if (kind == MediaKind::Playlist) {
        // What is a favourite by standing in this list is none without it.
        statements.push_back(with + "DELETE { ?song nao:hasTag <" + Sparql::favoriteTag + "> } WHERE { "
            + subject
            + " nie:title ?title ; nfo:hasMediaFileListEntry ?entry . FILTER (LCASE(?title) IN "
              "(\"favorites\", "
              "\"favourites\")) ?entry nfo:entryUrl ?url . ?song nie:url ?url }");
        statements.push_back(with + "DELETE { ?entry a rdfs:Resource } WHERE { " + subject
            + " nfo:hasMediaFileListEntry ?entry }");
    }
    statements.push_back("DELETE DATA { " + graph + " { " + triple + " } }");
    return statements;
}

std::vector<QByteArray> playlistStatements(const MediaItem &item)
{
    const QByteArray name = resourceIri(MediaKind::Playlist, item.number);
    const QByteArray subject = iri(name);
    std::vector<QByteArray> statements;
    if (!item.isNew)
        statements = removal(MediaKind::Playlist, item.number);
    statements.push_back(insert(subject + " a nmm:Playlist , nie:DataObject" + commonProperties(item)
        + " ; nfo:entryCounter " + QByteArray::number(item.entries.size())
        + " ; nfo:listDuration 0 ; nie:created " + Sparql::now()));
    for (size_t first = 0; first < item.entries.size(); first += entriesPerStatement) {
        QByteArray triples;
        for (size_t i = first; i < std::min(first + entriesPerStatement, item.entries.size()); ++i) {
            const QByteArray position = QByteArray::number(i);
            const QByteArray entry = iri(name + ':' + position);
            triples += subject + " nfo:hasMediaFileListEntry " + entry + " . " + entry
                + " a nfo:MediaFileListEntry ; nfo:listPosition " + position + " ; nfo:entryUrl "
                + literal(item.entries[i].uri) + " ; rdfs:label " + literal(item.entries[i].title) + " . ";
        }
        statements.push_back(insert(triples));
    }
    return statements;
}
} // namespace

StoreWriter::StoreWriter(StoreConnection &connection, std::function<bool()> isStopped)
    : m_connection(connection)
    , m_isStopped(std::move(isStopped))
{
}

std::vector<std::pair<QByteArray, KnownFile>> StoreWriter::readKnown(StoreError *error)
{
    static const struct
    {
        MediaKind kind;
        const char *type;
    } kinds[] = {{MediaKind::Song, "nmm:MusicPiece"}, {MediaKind::Video, "nmm:Video"},
        {MediaKind::Playlist, "nmm:Playlist"}};
    std::vector<std::pair<QByteArray, KnownFile>> files;
    for (const auto &[kind, type] : kinds) {
        const QByteArray pattern = QByteArray("{ ?s a ") + type + " ; nie:url ?url ; nie:version ?version }";
        StoreCursor cursor = m_connection.select("SELECT ?s ?url ?version "
                + (kind == MediaKind::Video ? pattern : "{ " + graph + ' ' + pattern + " }"),
            {}, nullptr, error);
        while (cursor && cursor.next(error)) {
            // Each graph is a file of its own, and the names of resources are in yet another: when the power goes in
            // the wrong moment they can differ.
            if (!cursor.text(0)) {
                *error = {
                    StoreError::Damaged, QStringLiteral("The tracker store is damaged: a song has no name")};
                return {};
            }
            const QByteArray path = FileUri::toPath(cursor.text(1));
            files.emplace_back(path.isEmpty() ? QByteArray(cursor.text(1)) : path,
                KnownFile{{}, FileStamp::fromText(cursor.text(2)), resourceNumber(cursor.text(0)), kind,
                    !QByteArray(cursor.text(2)).endsWith(moved)});
        }
        if (*error)
            return {};
    }
    return files;
}

// Together with the note that they are to be tidied up after.
bool StoreWriter::change(Statements statements, StoreError *error)
{
    if (!isUntidy(error))
        statements.push_back(KeptRows::noteUntidy());
    if (*error || !m_connection.update(statements, error))
        return false;
    m_untidy = true;
    return true;
}

bool StoreWriter::isUntidy(StoreError *error)
{
    if (!m_untidy) {
        const bool found = m_connection.selectOne(KeptRows::tidyState(), error).isEmpty();
        if (found && !*error)
            m_lastDoubtful = m_connection.selectOne(KeptRows::lastSong(), error).toLongLong();
        if (*error)
            return false;
        m_untidy = found;
    }
    return *m_untidy;
}

bool StoreWriter::move(const std::vector<Move> &moves, StoreError *error)
{
    Statements statements;
    // All old ones go first: one file's new place may have been another one's.
    for (const Move &move : moves) {
        const QByteArray pattern = iri(resourceIri(move.file.kind, move.file.number)) + " nie:url ?url";
        statements.push_back((move.file.kind == MediaKind::Video ? QByteArray() : with) + "DELETE { "
            + pattern + " } WHERE { " + pattern + " }");
    }
    for (const Move &move : moves) {
        const QByteArray triples = "{ " + iri(resourceIri(move.file.kind, move.file.number)) + " nie:url "
            + literal(FileUri::fromPath(move.path)) + " ; nie:version "
            + literal(move.file.stamp.toText() + moved) + " }";
        statements.push_back("INSERT OR REPLACE "
            + (move.file.kind == MediaKind::Video ? triples : "{ " + graph + ' ' + triples + " }"));
        if (move.file.kind == MediaKind::Song)
            statements.push_back(KeptRows::renewSong(iri(resourceIri(move.file.kind, move.file.number))));
    }
    return statements.empty() || change(std::move(statements), error);
}

bool StoreWriter::write(const std::vector<MediaItem> &items, std::vector<bool> *written, StoreError *error)
{
    written->assign(items.size(), true);
    if (!writeNamed(items, error))
        return false;
    std::vector<QByteArray> all;
    for (const MediaItem &item : items) {
        for (QByteArray &statement : statementsFor(item))
            all.push_back(std::move(statement));
    }
    if (change(std::move(all), error))
        return true;
    // One bad statement refuses all: then each item by itself.
    m_present.clear();
    m_ids.clear();
    for (size_t i = 0; i < items.size() && !error->needsRebuilding() && error->kind != StoreError::NoSpace;
         ++i) {
        *error = {};
        (*written)[i] = change(statementsFor(items[i]), error);
        if (!(*written)[i])
            qCWarning(lcKelvo).noquote()
                << "The tracker store refuses" << items[i].uri << ':' << error->message;
    }
    const bool goesOn = !error->needsRebuilding() && error->kind != StoreError::NoSpace;
    if (goesOn)
        *error = {};
    return goesOn;
}

bool StoreWriter::writeNamed(const std::vector<MediaItem> &items, StoreError *error)
{
    Statements statements;
    std::vector<QByteArray> unknown;
    for (const MediaItem &item : items) {
        if (item.kind != MediaKind::Song || !item.isNew)
            continue;
        for (const QByteArray &resource :
            {artist(item.tags.artists.value(0), &statements), album(item, &statements)}) {
            if (!m_ids.contains(resource)) {
                m_ids.insert(resource, {});
                unknown.push_back(resource);
            }
        }
    }
    if ((statements.empty() || change(std::move(statements), error)) && readIds(unknown, error))
        return true;
    // Then they come with the songs.
    qCWarning(lcKelvo).noquote() << "The tracker store refuses artists or albums:" << error->message;
    m_present.clear();
    m_ids.clear();
    const bool goesOn = !error->needsRebuilding() && error->kind != StoreError::NoSpace;
    if (goesOn)
        *error = {};
    return goesOn;
}

bool StoreWriter::readIds(const std::vector<QByteArray> &resources, StoreError *error)
{
    for (size_t first = 0; first < resources.size() && !*error; first += idsPerQuery) {
        const auto begin = resources.begin() + qsizetype(first);
        const std::vector<QByteArray> some(
            begin, begin + qsizetype(std::min(idsPerQuery, resources.size() - first)));
        StoreCursor cursor = m_connection.select(KeptRows::idsOf(some), {}, nullptr, error);
        if (!cursor || !cursor.next(error))
            continue;
        for (int column = 0; column < cursor.columnCount(); ++column) {
            if (cursor.integer(column) > 0)
                m_ids.insert(some[size_t(column)], QByteArray::number(cursor.integer(column)));
        }
    }
    return !*error;
}

bool StoreWriter::remove(const std::vector<KnownFile> &files, StoreError *error)
{
    constexpr size_t perBatch = 500;
    Statements statements;
    QHash<quint64, QByteArray> memories = PlayMemory::of(m_connection, files, error);
    if (*error)
        return false;
    for (size_t i = 0; i < files.size(); ++i) {
        // A song goes together with what is kept of it: counts are in one place at any moment.
        if (const QByteArray memory = memories.take(files[i].number); !memory.isEmpty())
            statements.push_back(memory);
        for (QByteArray &statement : removal(files[i].kind, files[i].number))
            statements.push_back(std::move(statement));
        if (statements.size() < perBatch && i + 1 < files.size())
            continue;
        if (!change(std::exchange(statements, {}), error))
            return false;
    }
    return true;
}

std::vector<QByteArray> StoreWriter::statementsFor(const MediaItem &item)
{
    switch (item.kind) {
    case MediaKind::Song:
        return songStatements(item);
    case MediaKind::Video:
        return {videoStatement(item)};
    case MediaKind::Playlist:
        return playlistStatements(item);
    case MediaKind::Ignored:
        break;
    }
    return {};
}

QByteArray StoreWriter::artist(const QString &name, std::vector<QByteArray> *statements)
{
    if (name.isEmpty())
        return Sparql::unknownArtist;
    QByteArray resource = hashed("artist", name);
    if (!m_present.contains(resource)) {
        m_present.insert(resource);
        statements->push_back(insert('<' + resource + "> a nmm:Artist ; nmm:artistName " + literal(name)));
    }
    return resource;
}

// Albums of one name are one album when their artist is the same: the album artist or, without that tag, the song's.
QByteArray StoreWriter::album(const MediaItem &item, std::vector<QByteArray> *statements)
{
    if (item.tags.album.isEmpty())
        return Sparql::unknownAlbum;
    QString owner = item.tags.albumArtist;
    if (owner.isEmpty() && !item.tags.isCompilation)
        owner = item.tags.artists.value(0);
    QByteArray resource = hashed("album", item.tags.album, owner);
    if (!m_present.contains(resource)) {
        m_present.insert(resource);
        const QByteArray by = artist(owner, statements);
        statements->push_back(insert('<' + resource + "> a nmm:MusicAlbum ; nie:title "
            + literal(item.tags.album) + " ; nmm:albumArtist <" + by + '>'));
    }
    return resource;
}

QByteArray StoreWriter::disc(const QByteArray &album, int number, std::vector<QByteArray> *statements)
{
    QByteArray resource = album + ":disc" + QByteArray::number(number);
    if (!m_present.contains(resource)) {
        m_present.insert(resource);
        statements->push_back(
            insert('<' + resource + "> a nmm:MusicAlbumDisc ; nmm:setNumber " + QByteArray::number(number)));
    }
    return resource;
}

QByteArray StoreWriter::keptProperty(
    const MediaItem &item, const QByteArray &artist, const QByteArray &album, const QByteArray &added) const
{
    const QByteArray artistId = m_ids.value(artist);
    const QByteArray albumId = m_ids.value(album);
    if (artistId.isEmpty() || albumId.isEmpty())
        return {};
    return KeptRows::propertyOf(
        {item.uri, item.seconds, item.tags.track, artistId, item.tags.artists.value(0).toUtf8(), albumId,
            item.tags.album.toUtf8(), item.tags.genre.toUtf8(), yearOf(item)},
        added);
}

std::vector<QByteArray> StoreWriter::songStatements(const MediaItem &item)
{
    std::vector<QByteArray> statements;
    const QByteArray subject = iri(resourceIri(MediaKind::Song, item.number));
    const QByteArray mainArtist = artist(item.tags.artists.value(0), &statements);
    const QByteArray onAlbum = album(item, &statements);
    QByteArray text = subject + " a nmm:MusicPiece , nie:DataObject" + commonProperties(item)
        + " ; nie:byteSize " + QByteArray::number(item.stamp.size) + " ; nfo:duration "
        + QByteArray::number(item.seconds) + " ; nmm:trackNumber " + QByteArray::number(item.tags.track)
        + " ; nfo:genre " + literal(item.tags.genre) + " ; nmm:artist <" + mainArtist + "> ; nmm:musicAlbum <"
        + onAlbum + "> ; nmm:performer <" + mainArtist + '>';
    for (const QString &name : item.tags.artists.mid(1))
        text += " , <" + artist(name, &statements) + '>';
    if (const QByteArray year = yearOf(item); !year.isEmpty())
        text += " ; nie:contentCreated \"" + year + "-01-01T00:00:00Z\"";
    if (item.tags.disc > 0)
        text += " ; nmm:musicAlbumDisc <" + disc(onAlbum, item.tags.disc, &statements) + '>';
    if (item.isDownloaded)
        text += QByteArray(" ; nao:hasTag <") + Sparql::downloadedTag + '>';
    if (item.isNew) {
        // One statement for each song: the library loses properties of some songs in larger ones.
        const QByteArray added = Sparql::now();
        text += " ; nie:usageCounter 0 ; nie:created " + added;
        const QByteArray kept = keptProperty(item, mainArtist, onAlbum, added);
        statements.push_back(insert(kept.isEmpty() ? text : text + " ; " + kept));
        if (kept.isEmpty())
            statements.push_back(KeptRows::renewSong(subject));
        return statements;
    }
    for (const char *property : {"nmm:performer", "nie:contentCreated", "nmm:musicAlbumDisc"})
        statements.push_back(clear(subject, property));
    statements.push_back("INSERT OR REPLACE { " + graph + " { " + text + " } }");
    statements.push_back(KeptRows::renewSong(subject));
    return statements;
}

bool StoreWriter::tidyUp(StoreError *error)
{
    const auto withoutUse = [](const char *type, const char *use) {
        return with + "DELETE { ?x a rdfs:Resource } WHERE { ?x a " + type + " . FILTER NOT EXISTS { " + use
            + " } }";
    };
    const std::vector<QByteArray> statements{
        withoutUse("nmm:MusicPiece", "?x nie:url ?url"),
        withoutUse("nmm:MusicAlbum", "?song nmm:musicAlbum ?x"),
        withoutUse("nmm:MusicAlbumDisc", "?song nmm:musicAlbumDisc ?x"),
        // As one condition: of two the library tries the second one first, which goes through all albums for each artist.
        with
            + "DELETE { ?x a rdfs:Resource } WHERE { ?x a nmm:Artist . FILTER (NOT EXISTS { ?song "
              "nmm:performer "
              "?x } && NOT EXISTS { ?album nmm:albumArtist ?x }) }",
        with + "INSERT { ?song nao:hasTag <" + Sparql::favoriteTag
            + "> } WHERE { ?list a nmm:Playlist ; nie:title ?title ; nfo:hasMediaFileListEntry ?entry . "
              "FILTER "
              "(LCASE(?title) IN (\"favorites\", \"favourites\")) ?entry nfo:entryUrl ?url . ?song nie:url "
              "?url ; a "
              "nmm:MusicPiece }",
        insert(QByteArray("<") + Sparql::unknownArtist + "> a nmm:Artist ; nmm:artistName \"\" . <"
            + Sparql::unknownAlbum + "> a nmm:MusicAlbum ; nie:title \"\" ; nmm:albumArtist <"
            + Sparql::unknownArtist + '>'),
    };
    m_present.clear();
    m_ids.clear();
    isUntidy(error); // what of it is doubtful, if that is not known yet
    if (*error || !m_connection.update(statements, error) || !sumUpPlaylists(error) || !renewSongs(error))
        return false;
    if (isStopped())
        return true;
    Statements last = PlayMemory::givingBack(m_connection, error);
    for (const Statements &more : {KeptRows::renewSums(), KeptRows::noteTidy()})
        last.insert(last.end(), more.begin(), more.end());
    if (*error || !m_connection.update(last, error))
        return false;
    m_untidy = false;
    return true;
}

bool StoreWriter::renewSongs(StoreError *error)
{
    for (qint64 id = 0; id < m_lastDoubtful; id += idsPerStep) {
        if (isStopped())
            return true;
        if (!m_connection.update({KeptRows::renewSongs(id, id + idsPerStep)}, error))
            return false;
    }
    m_lastDoubtful = 0;
    return true;
}

bool StoreWriter::sumUpPlaylists(StoreError *error)
{
    std::vector<QByteArray> statements;
    StoreCursor cursor = m_connection.select("SELECT ?list (SUM(?length) AS ?sum) { " + graph
            + " { ?list a nmm:Playlist ; nfo:hasMediaFileListEntry ?entry . ?entry nfo:entryUrl ?url . ?song "
              "nie:url "
              "?url ; nfo:duration ?length } } GROUP BY ?list",
        {}, nullptr, error);
    while (cursor && cursor.next(error))
        statements.push_back("INSERT OR REPLACE { " + graph + " { " + iri(cursor.text(0))
            + " nfo:listDuration " + QByteArray::number(cursor.integer(1)) + " } }");
    cursor = StoreCursor();
    return !*error && (statements.empty() || m_connection.update(statements, error));
}
