// SPDX-License-Identifier: MIT
#include "GlibHandles.h"
#include "PlaylistEntries.h"
#include "PlaylistParser.h"

#include <QDir>
#include <QTemporaryFile>
#include <QXmlStreamReader>

#include <totem-pl-parser.h>

namespace {
using PlaylistFile::Contents;
using PlaylistFile::Format;

struct Collection
{
    QUrl base;
    QByteArray title;
    QList<QUrl> entries;
    QList<QByteArray> titles;
    int seen = 0;
};

QByteArray titleOf(GHashTable *metadata)
{
    // Null means an empty text to QByteArray.
    const void *title = metadata ? g_hash_table_lookup(metadata, TOTEM_PL_PARSER_FIELD_TITLE) : nullptr;
    return static_cast<const char *>(title);
}

/// The list as the parser can take it: entries it would take as seen from its own copy.
QByteArray prepared(const QByteArray &text, Format format, const QUrl &base)
{
    using PlaylistEntries::Syntax;
    if (format == Format::Xspf)
        return text;
    return PlaylistEntries::withAbsoluteEntries(
        text, format == Format::Pls ? Syntax::Keys : Syntax::Lines, base);
}

void addEntry(TotemPlParser *, const char *entry, GHashTable *metadata, gpointer data)
{
    auto *collection = static_cast<Collection *>(data);
    ++collection->seen;
    const QUrl uri = PlaylistEntries::resolved(entry, collection->base);
    if (!uri.isValid() || uri == collection->base
        || collection->entries.count() >= PlaylistFile::maximumEntries)
        return;
    collection->entries.append(uri);
    collection->titles.append(titleOf(metadata));
}

void takeTitle(TotemPlParser *, const char *, GHashTable *metadata, gpointer data)
{
    static_cast<Collection *>(data)->title = titleOf(metadata);
}

QString suffixOf(Format format)
{
    switch (format) {
    case Format::Pls:
        return QStringLiteral(".pls");
    case Format::M3u:
        return QStringLiteral(".m3u");
    default:
        return QStringLiteral(".xspf");
    }
}

/// A copy of the list for the parser, which reads files only.
bool write(QTemporaryFile &file, const QByteArray &text)
{
    return file.open() && file.write(text) == text.size() && file.flush();
}

/// The parser takes broken XML for an empty list.
bool isWellFormed(const QByteArray &xml)
{
    QXmlStreamReader reader(xml);
    while (!reader.atEnd())
        reader.readNext();
    return !reader.hasError();
}

TotemPlParserResult run(const QString &path, Collection &collection)
{
    const GlibHandles::Object<TotemPlParser> parser(totem_pl_parser_new());
    g_object_set(parser.get(), "recurse", FALSE, "disable-unsafe", TRUE, nullptr);
    g_signal_connect(parser.get(), "entry-parsed", G_CALLBACK(addEntry), &collection);
    g_signal_connect(parser.get(), "playlist-started", G_CALLBACK(takeTitle), &collection);
    const QByteArray file = QUrl::fromLocalFile(path).toEncoded();
    const QByteArray base = collection.base.adjusted(QUrl::RemoveFilename).toEncoded();
    return totem_pl_parser_parse_with_base(parser.get(), file.constData(), base.constData(), FALSE);
}
} // namespace

PlaylistFile::Contents PlaylistParser::parse(const QByteArray &file, Format format, const QUrl &uri)
{
    // The parser does not know the mark.
    const bool marked = file.startsWith(PlaylistFile::byteOrderMark);
    const QByteArray text = marked ? file.mid(PlaylistFile::byteOrderMark.size()) : file;
    const QString name = uri.toDisplayString();
    if (text.trimmed().isEmpty())
        return Contents::unusable(KelvoError::EmptyPlaylist, name);
    QTemporaryFile copy(QDir::temp().filePath(QLatin1String("kelvo-XXXXXX") + suffixOf(format)));
    if (!write(copy, prepared(text, format, uri)))
        return Contents::unusable(KelvoError::EngineFailed, copy.errorString());
    Collection collection{uri, {}, {}, {}, 0};
    const TotemPlParserResult result = run(copy.fileName(), collection);
    if (!collection.entries.isEmpty())
        return {
            Contents::List, collection.entries, KelvoError::NoError, {}, collection.title, collection.titles};
    if (collection.seen > 0)
        return Contents::unusable(
            KelvoError::InvalidPlaylist, name + QLatin1String(" names nothing but itself"));
    const bool understood
        = result == TOTEM_PL_PARSER_RESULT_SUCCESS && (format != Format::Xspf || isWellFormed(text));
    Contents contents
        = Contents::unusable(understood ? KelvoError::EmptyPlaylist : KelvoError::InvalidPlaylist, name);
    contents.title = collection.title;
    return contents;
}
