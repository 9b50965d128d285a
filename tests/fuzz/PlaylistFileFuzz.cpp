// SPDX-License-Identifier: MIT
// Playlist files, found on this computer or in the network. The first byte says which, and what announced the list: its
// content type or nothing.
#include "FuzzSupport.h"
#include "PlaylistFile.h"
#include "PlaylistParser.h"

namespace {
using namespace PlaylistFile;

const QUrl places[] = {QUrl(QStringLiteral("file:///nowhere/a%20folder/list")),
    QUrl(QStringLiteral("http://host/folder/list?a=b")), QUrl(QStringLiteral("file:///list"))};

void check(const Contents &contents, const QUrl &place)
{
    if (contents.kind != Contents::List) {
        Fuzz::require(contents.entries.isEmpty());
        return;
    }
    Fuzz::require(!contents.entries.isEmpty() && contents.entries.size() == contents.titles.size());
    for (const QUrl &entry : contents.entries)
        Fuzz::require(entry.isValid() && entry != place
            && (place.isLocalFile() || entry.scheme() != QLatin1String("file")));
}
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const QUrl place = places[data[0] / 8 % std::size(places)];
    const QByteArray text = Fuzz::bytes(data + 1, size - 1);
    const Format format = recognised(text.left(headSize), Formats::fromInt(data[0] % 8));
    if (format != Format::None)
        check(PlaylistParser::parse(text, format, place), place);
    return 0;
}
