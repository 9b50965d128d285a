// SPDX-License-Identifier: MIT
#include "MediaItem.h"

#include <algorithm>

QByteArray FileStamp::toText() const
{
    return QByteArray::number(inode) + ':' + QByteArray::number(size) + ':' + QByteArray::number(modified);
}

FileStamp FileStamp::fromText(const QByteArray &text)
{
    const QList<QByteArray> parts = text.split(':');
    return {parts.value(0).toULongLong(), parts.value(1).toLongLong(), parts.value(2).toLongLong()};
}

QByteArray resourceIri(MediaKind kind, quint64 number)
{
    const char *name = kind == MediaKind::Song ? "song" : kind == MediaKind::Video ? "video" : "playlist";
    return QByteArray("urn:kelvo:") + name + ':' + QByteArray::number(number, 16);
}

quint64 resourceNumber(const QByteArray &iri)
{
    return iri.mid(iri.lastIndexOf(':') + 1).toULongLong(nullptr, 16);
}

void MediaItem::setLength(qint64 length)
{
    constexpr qint64 second = 1000;
    milliseconds = std::max<qint64>(0, length);
    // Short as it may be, what has a length does not count as unknown.
    seconds
        = milliseconds > 0 ? int(std::clamp<qint64>((milliseconds + second / 2) / second, 1, INT32_MAX)) : 0;
}
