// SPDX-License-Identifier: MIT
#include "PlaylistFileParser.h"

#include "KelvoMessageHandler.h"

#include <QDir>
#include <QStringDecoder>
#include <QTemporaryFile>
#include <QXmlStreamReader>

#include <memory>

#include <totem-pl-parser.h>

namespace {
using PlaylistFile::Contents;
using PlaylistFile::Format;

struct Unref
{
    void operator()(TotemPlParser *parser) const { g_object_unref(parser); }
};
using ParserHandle = std::unique_ptr<TotemPlParser, Unref>;

struct Collection
{
    QUrl base;
    QList<QUrl> entries;
    int seen = 0;
};

QString decoded(const QByteArray &text)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString result = utf8(text);
    return utf8.hasError() ? QString::fromLatin1(text) : result;
}

bool hasScheme(const QString &entry)
{
    const qsizetype colon = entry.indexOf(QLatin1String(":/"));
    return colon > 1 && !entry.left(colon).contains(QLatin1Char('/'));
}

/// An entry is a URI, or the plain path of a file as seen from the list.
QUrl resolved(const QString &entry, const QUrl &base)
{
    if (hasScheme(entry))
        return QUrl(entry);
    if (!base.isLocalFile())
        return base.resolved(QUrl(entry));
    const QDir folder = QFileInfo(base.toLocalFile()).dir();
    return QUrl::fromLocalFile(QDir::cleanPath(folder.absoluteFilePath(entry)));
}

/// Lines of an M3U list with their entries made absolute: the parser would take them as seen from its own
/// copy.
QByteArray withAbsoluteLines(const QByteArray &text, const QUrl &base)
{
    QByteArray result;
    result.reserve(text.size() * 2);
    for (const QByteArray &raw : text.split(text.contains('\n') ? '\n' : '\r')) {
        const QByteArray line = raw.trimmed();
        if (line.isEmpty() || line.startsWith('#'))
            result += line;
        else
            result += resolved(decoded(line), base).toEncoded();
        result += '\n';
    }
    return result;
}

void addEntry(TotemPlParser *, const char *entry, GHashTable *, gpointer data)
{
    auto *collection = static_cast<Collection *>(data);
    ++collection->seen;
    const QUrl uri = resolved(QString::fromUtf8(entry), collection->base);
    if (uri.isValid() && uri != collection->base
        && collection->entries.count() < PlaylistFile::maximumEntries)
        collection->entries.append(uri);
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
    const ParserHandle parser(totem_pl_parser_new());
    g_object_set(parser.get(), "recurse", FALSE, "disable-unsafe", TRUE, nullptr);
    g_signal_connect(parser.get(), "entry-parsed", G_CALLBACK(addEntry), &collection);
    const QByteArray file = QUrl::fromLocalFile(path).toEncoded();
    const QByteArray base = collection.base.adjusted(QUrl::RemoveFilename).toEncoded();
    return totem_pl_parser_parse_with_base(parser.get(), file.constData(), base.constData(), FALSE);
}
} // namespace

PlaylistFile::Contents PlaylistFileParser::parse(const QByteArray &file, Format format, const QUrl &uri)
{
    // The parser does not know the mark.
    const bool marked = file.startsWith(PlaylistFile::byteOrderMark);
    const QByteArray text = marked ? file.mid(PlaylistFile::byteOrderMark.size()) : file;
    const QString name = uri.toDisplayString();
    if (text.trimmed().isEmpty())
        return Contents::unusable(KelvoError::EmptyPlaylist, name);
    QTemporaryFile copy(QDir::temp().filePath(QLatin1String("kelvo-XXXXXX") + suffixOf(format)));
    if (!write(copy, format == Format::M3u ? withAbsoluteLines(text, uri) : text))
        return Contents::unusable(KelvoError::EngineFailed, copy.errorString());
    Collection collection{uri, {}, 0};
    const TotemPlParserResult result = run(copy.fileName(), collection);
    if (!collection.entries.isEmpty())
        return {Contents::List, collection.entries, KelvoError::NoError, {}};
    if (collection.seen > 0)
        return Contents::unusable(
            KelvoError::InvalidPlaylist, name + QLatin1String(" names nothing but itself"));
    const bool understood
        = result == TOTEM_PL_PARSER_RESULT_SUCCESS && (format != Format::Xspf || isWellFormed(text));
    return Contents::unusable(understood ? KelvoError::EmptyPlaylist : KelvoError::InvalidPlaylist, name);
}
