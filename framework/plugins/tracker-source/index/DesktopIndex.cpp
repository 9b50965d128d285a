// SPDX-License-Identifier: MIT
#include "DesktopIndex.h"

#include "TextRepair.h"
#include "query/QueryCatalog.h"
#include "store/FileUri.h"

#include <QDateTime>
#include <QSet>

#include <algorithm>

namespace {
// The columns that the three queries share, then those of songs.
enum Column {
    Url,
    Size,
    Modified,
    Title,
    Length,
    MimeType,
    Track,
    Artist,
    Album,
    AlbumArtist,
    Genre,
    Year,
    Disc
};

QString textAt(const StoreCursor &cursor, int column)
{
    const char *text = cursor.text(column);
    return text ? TextRepair::tidy(QString::fromUtf8(text)) : QString();
}

// Numbers come as texts over the bus.
int numberAt(const StoreCursor &cursor, int column)
{
    const char *text = cursor.text(column);
    return text ? int(std::clamp<qint64>(qint64(QByteArray(text).toDouble()), 0, INT32_MAX)) : 0;
}

MediaItem commonOf(const StoreCursor &cursor, MediaKind kind)
{
    MediaItem item;
    item.kind = kind;
    item.uri = FileUri::canonical(cursor.text(Url));
    item.path = FileUri::toPath(item.uri);
    item.stamp.size = QByteArray(cursor.text(Size)).toLongLong();
    item.stamp.modified
        = QDateTime::fromString(textAt(cursor, Modified), Qt::ISODate).toMSecsSinceEpoch() * 1'000'000;
    item.title = textAt(cursor, Title);
    if (item.title.isEmpty())
        item.title = TextRepair::fileName(item.uri);
    item.seconds = numberAt(cursor, Length);
    item.mimeType = textAt(cursor, MimeType).toLatin1();
    item.isReadable = true;
    return item;
}

void addSongColumns(const StoreCursor &cursor, MediaItem *item)
{
    item->tags.track = numberAt(cursor, Track);
    item->tags.artists = QStringList(textAt(cursor, Artist));
    item->tags.artists.removeAll(QString());
    item->tags.album = textAt(cursor, Album);
    item->tags.albumArtist = textAt(cursor, AlbumArtist);
    item->tags.genre = textAt(cursor, Genre);
    item->tags.year = textAt(cursor, Year).left(4).toInt();
    item->tags.disc = numberAt(cursor, Disc);
}
} // namespace

DesktopIndex::DesktopIndex(std::shared_ptr<StoreConnection> connection)
    : m_connection(std::move(connection))
{
}

std::vector<MediaItem> DesktopIndex::read(const StoreCancellation &cancellation, StoreError *error) const
{
    static const struct
    {
        MediaKind kind;
        const char *query;
    } kinds[] = {{MediaKind::Song, "desktop-songs"}, {MediaKind::Video, "desktop-videos"},
        {MediaKind::Playlist, "desktop-playlists"}};
    std::vector<MediaItem> items;
    QSet<QByteArray> uris;
    for (const auto &[kind, query] : kinds) {
        StoreCursor cursor = m_connection->select(CatalogQuery::read(query), {}, &cancellation, error);
        while (cursor && cursor.next(error)) {
            MediaItem item = commonOf(cursor, kind);
            if (item.path.isEmpty() || uris.contains(item.uri))
                continue;
            uris.insert(item.uri);
            if (kind == MediaKind::Song)
                addSongColumns(cursor, &item);
            items.push_back(std::move(item));
        }
        if (*error)
            return {};
    }
    return items;
}
