// SPDX-License-Identifier: MIT
#include "PlaylistReader.h"

#include "PlaylistFileParser.h"
#include "TextRepair.h"
#include "store/FileUri.h"

#include <algorithm>

namespace {
using PlaylistFile::Contents;

/// What the store takes of one list, which is far less than what can be played: it writes a list as one, and the time
/// for that grows faster than the list. 5,000 entries take half a second of processor time, 50,000 take 20.
constexpr qsizetype maximumEntries = 50'000;

MediaItem::Entry entryOf(const QUrl &url, const QByteArray &title)
{
    MediaItem::Entry entry{FileUri::canonical(url.toEncoded()), TextRepair::decode(title)};
    if (entry.title.isEmpty())
        entry.title = TextRepair::fileName(entry.uri);
    return entry;
}
} // namespace

bool readPlaylist(MediaItem *item)
{
    const QUrl uri = QUrl::fromEncoded(item->uri);
    const Contents contents = PlaylistFileParser::parseFile(uri, PlaylistFile::announced(uri, {}));
    // A playlist without a title is known by its file name without the suffix.
    if (const qsizetype dot = item->title.lastIndexOf(QLatin1Char('.')); dot > 0)
        item->title.truncate(dot);
    if (const QString title = TextRepair::decode(contents.title); !title.isEmpty())
        item->title = title;
    const qsizetype count = std::min(contents.entries.size(), maximumEntries);
    for (qsizetype i = 0; i < count; ++i)
        item->entries.push_back(entryOf(contents.entries.at(i), contents.titles.at(i)));
    return contents.kind == Contents::List || contents.code == KelvoError::EmptyPlaylist;
}
