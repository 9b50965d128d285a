// SPDX-License-Identifier: MIT
#include "MediaReader.h"

#include "MediaDiscoverer.h"
#include "MediaItem.h"
#include "StreamLength.h"
#include "TagReader.h"

#include <optional>

struct MediaReader::Private
{
    MediaDiscoverer discoverer;
    StreamLength length;
};

MediaReader::MediaReader()
    : d(std::make_unique<Private>())
{
}

MediaReader::~MediaReader() = default;

bool MediaReader::read(MediaItem *item)
{
    LengthSource source = LengthSource::Headers;
    if (item->kind != MediaKind::Song || !readTags(item, &source)) {
        bool estimated = false;
        if (!d->discoverer.read(item, &estimated))
            return false;
        // Of what is only sound, going through it is cheap; a film is read by its headers, where it has some.
        if (estimated || item->kind == MediaKind::Song)
            source = LengthSource::Frames;
    }
    if (source == LengthSource::Headers)
        return true;
    const auto way = source == LengthSource::Frames ? StreamLength::Parsing : StreamLength::Decoding;
    if (const qint64 milliseconds = d->length.count(item->path, way)) {
        item->setLength(milliseconds);
        item->isLengthCounted = true;
    }
    return true;
}

void MediaReader::interrupt()
{
    d->length.interrupt();
    d->discoverer.interrupt();
}
