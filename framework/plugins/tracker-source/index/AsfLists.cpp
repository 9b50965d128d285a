// SPDX-License-Identifier: MIT
#include "AsfLists.h"

#include <algorithm>

namespace {
constexpr unsigned guidSize = 16;
constexpr unsigned countAt = guidSize + 8; // behind the object's size
constexpr unsigned listHead = countAt + 2;
constexpr long long mostLookedAt = 1024L * 1024;
constexpr long long leastLookedAt = 64L * 1024; // whatever the header says of its size

const char headerGuid[] = "\x30\x26\xb2\x75\x8e\x66\xcf\x11\xa6\xd9\x00\xaa\x00\x62\xce\x6c";

struct List
{
    const char *guid;
    long entrySize; ///< of one without name and value, bytes
};
const List tagLists[] = {
    // Extended content description: length of the name, type, length of the value.
    {"\x40\xa4\xd0\xd2\x07\xe3\xd2\x11\x97\xf0\x00\xa0\xc9\x5e\xa8\x50", 6},
    // Metadata, and metadata library: language, stream, length of the name, type, length of the value.
    {"\xea\xcb\xf8\xc5\xaf\x5b\x77\x48\x84\x67\xaa\x8c\x44\xfa\x4c\xca", 12},
    {"\x94\x1c\x23\x44\x98\x94\xd1\x49\xa1\x41\x1d\x13\x4e\x45\x70\x54", 12},
};

bool claimsTooMuch(const List &list, const TagLib::ByteVector &header, long fileSize)
{
    const TagLib::ByteVector guid(list.guid, guidSize);
    for (int at = header.find(guid); at >= 0; at = header.find(guid, unsigned(at) + 1)) {
        if (unsigned(at) + listHead > header.size())
            return false;
        const long count = header.toUShort(unsigned(at) + countAt, false);
        if (count * list.entrySize > fileSize - at - long(listHead))
            return true;
    }
    return false;
}
} // namespace

/// Objects are found by their GUIDs wherever they are: what they say of their sizes may be wrong.
bool AsfLists::claimTooMuch(TagLib::IOStream *file)
{
    file->seek(0);
    TagLib::ByteVector header = file->readBlock(countAt);
    bool doClaim = false;
    if (header.size() == countAt && header.startsWith(TagLib::ByteVector(headerGuid, guidSize))) {
        const long long size = std::clamp(header.toLongLong(guidSize, false), leastLookedAt, mostLookedAt);
        header.append(file->readBlock(static_cast<unsigned long>(size) - countAt));
        doClaim = std::any_of(std::begin(tagLists), std::end(tagLists),
            [&](const List &list) { return claimsTooMuch(list, header, file->length()); });
    }
    file->seek(0);
    return doClaim;
}
