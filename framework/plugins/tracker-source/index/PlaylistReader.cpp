// SPDX-License-Identifier: MIT
#include "PlaylistReader.h"

#include "PlaylistEntries.h"
#include "TextRepair.h"
#include "store/FileUri.h"
#include "store/GObjectPtr.h"

#include <QDir>
#include <QFile>
#include <QTemporaryFile>

#include <memory>

#include <totem-pl-parser.h>
#include <unistd.h>

namespace {
constexpr qint64 maximumSize = 16 * 1024 * 1024;
constexpr size_t maximumEntries = 50'000;

QString textOf(GHashTable *metadata, const char *field)
{
    const auto *text = static_cast<const char *>(metadata ? g_hash_table_lookup(metadata, field) : nullptr);
    return text ? TextRepair::decode(text) : QString();
}

// The parser takes every relative entry for a file name. XSPF has URIs there, and some programs write them into other
// lists too: where no file has that name, the decoded one is meant.
QByteArray entryUri(const char *uri)
{
    const QByteArray path = FileUri::toPath(uri);
    if (path.contains('%') && ::access(path.constData(), F_OK) != 0) {
        const QByteArray decoded = QByteArray::fromPercentEncoding(path);
        if (::access(decoded.constData(), F_OK) == 0)
            return FileUri::fromPath(decoded);
    }
    return FileUri::canonical(uri);
}

void addEntry(TotemPlParser *, const char *uri, GHashTable *metadata, gpointer data)
{
    auto *item = static_cast<MediaItem *>(data);
    if (!uri || item->entries.size() >= maximumEntries)
        return;
    MediaItem::Entry entry{entryUri(uri), textOf(metadata, TOTEM_PL_PARSER_FIELD_TITLE)};
    if (entry.title.isEmpty())
        entry.title = TextRepair::fileName(entry.uri);
    item->entries.push_back(std::move(entry));
}

/// A copy of the list that the parser can take, where it cannot take the list itself: it takes Latin-1 names for those
/// of other files, and looks for ever for keys that are not spelled in the usual way.
std::unique_ptr<QTemporaryFile> readable(const QByteArray &path)
{
    using PlaylistEntries::Syntax;
    QFile file(QFile::decodeName(path));
    if (path.toLower().endsWith(".xspf") || !file.open(QIODevice::ReadOnly))
        return nullptr;
    const QByteArray text = file.read(maximumSize);
    const bool hasKeys = text.toLower().contains("[playlist]");
    if (!hasKeys && PlaylistEntries::isUtf8(text))
        return nullptr;
    auto copy = std::make_unique<QTemporaryFile>(
        QDir::temp().filePath(QLatin1String(hasKeys ? "kelvo-XXXXXX.pls" : "kelvo-XXXXXX.m3u")));
    const QByteArray made = PlaylistEntries::withAbsoluteEntries(
        text, hasKeys ? Syntax::Keys : Syntax::Lines, QUrl::fromEncoded(FileUri::fromPath(path)));
    return copy->open() && copy->write(made) == made.size() && copy->flush() ? std::move(copy) : nullptr;
}

void takeTitle(TotemPlParser *, const char *, GHashTable *metadata, gpointer data)
{
    auto *item = static_cast<MediaItem *>(data);
    if (const QString title = textOf(metadata, TOTEM_PL_PARSER_FIELD_TITLE); !title.isEmpty())
        item->title = title;
}
} // namespace

bool readPlaylist(MediaItem *item)
{
    // A playlist without a title is known by its file name without the suffix.
    if (const qsizetype dot = item->title.lastIndexOf(QLatin1Char('.')); dot > 0)
        item->title.truncate(dot);
    if (item->stamp.size > maximumSize)
        return false;
    const auto parser = GObjectPtr<TotemPlParser>::take(totem_pl_parser_new());
    // Without recursion nothing is fetched: entries stay entries, also those on the network.
    g_object_set(parser.get(), "recurse", FALSE, "debug", FALSE, nullptr);
    g_signal_connect(parser.get(), "entry-parsed", G_CALLBACK(addEntry), item);
    g_signal_connect(parser.get(), "playlist-started", G_CALLBACK(takeTitle), item);
    const std::unique_ptr<QTemporaryFile> copy = readable(FileUri::toPath(item->uri));
    const QByteArray uri = copy ? FileUri::fromPath(QFile::encodeName(copy->fileName())) : item->uri;
    const TotemPlParserResult result = totem_pl_parser_parse(parser.get(), uri.constData(), FALSE);
    return result == TOTEM_PL_PARSER_RESULT_SUCCESS || !item->entries.empty();
}
