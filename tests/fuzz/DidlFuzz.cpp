// SPDX-License-Identifier: MIT
// Metadata that renderers and servers of the network give of an item.
#include "Didl.h"
#include "FuzzSupport.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::optional<Upnp::Track> track = Didl::parse(QString::fromUtf8(Fuzz::bytes(data, size)));
    if (!track)
        return 0;
    for (const QString &text :
        {track->title, track->artist, track->album, track->genre, track->cover, track->mimeType})
        Fuzz::require(Fuzz::isClean(text) && text.size() <= 4001);
    Fuzz::require(track->duration == -1 || (track->duration > 0 && track->duration <= 1e9));
    // What was read can be written, and read again.
    KelvoMediaInfo info(QStringLiteral("1"), QUrl(), track->title);
    info.setArtist(track->artist);
    info.setAlbum(track->album);
    Fuzz::require(Didl::parse(Didl::write(info, QStringLiteral("http://host/song.mp3"))).has_value());
    return 0;
}
