// SPDX-License-Identifier: MIT
// Media files as the indexer reads them. The first byte says what kind of file the name promises.
#include "FuzzSupport.h"
#include "index/TagReader.h"

#include <QFile>

namespace {
constexpr const char *suffixes[] = {"", ".mp3", ".ogg", ".flac", ".m4a", ".wav", ".wma", ".aiff", ".opus",
    ".ape", ".mpc", ".wv", ".tta", ".oga", ".spx", ".mod"};

void check(const QString &text)
{
    Fuzz::require(text.size() <= 1000);
    for (const QChar c : text)
        Fuzz::require(c.category() != QChar::Other_Control);
}
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const QString name = QLatin1String("medium") + QLatin1String(suffixes[data[0] % std::size(suffixes)]);
    MediaItem item;
    item.path = QFile::encodeName(Fuzz::file(Fuzz::bytes(data + 1, size - 1), name));
    LengthSource source = LengthSource::Headers;
    if (readTags(&item, &source)) {
        check(item.title);
        check(item.tags.album);
        check(item.tags.albumArtist);
        check(item.tags.genre);
        for (const QString &artist : item.tags.artists)
            check(artist);
        Fuzz::require(item.seconds >= 0);
    }
    return 0;
}
