// SPDX-License-Identifier: MIT
// The sealed file in which another process hands over a playlist, and what is taken of it. The first two bytes are the
// number of items that it is said to hold, and the items of a slice.
#include "FuzzSupport.h"
#include "ItemFileReader.h"
#include "ItemIntake.h"

#include <QSet>

#include <limits>

#include <sys/mman.h>
#include <unistd.h>

namespace {
QDBusUnixFileDescriptor sealedFile(const uint8_t *data, size_t size)
{
    QDBusUnixFileDescriptor file;
    file.giveFileDescriptor(memfd_create("fuzz", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    Fuzz::require(write(file.fileDescriptor(), data, size) == ssize_t(size));
    Fuzz::require(fcntl(file.fileDescriptor(), F_ADD_SEALS, PlaylistProtocol::fileSeals) == 0);
    return file;
}

void check(const SharedItems &items, QSet<QString> *ids)
{
    for (const SharedItem &item : items) {
        Fuzz::require(!item.id.isEmpty() && !ids->contains(item.id));
        Fuzz::require(item.title.size() <= PlaylistProtocol::maxTextCharacters);
        Fuzz::require(item.duration >= -1 && item.duration <= std::numeric_limits<int>::max());
        ids->insert(item.id);
    }
}
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    const uint count = data[0];
    const qsizetype slice = 1 + data[1] % 16;
    QString reason;
    const auto reader = ItemFileReader::open(sealedFile(data + 2, size - 2), count, &reason);
    Fuzz::require(reader ? reason.isEmpty() : !reason.isEmpty());
    if (!reader)
        return 0;
    ItemIntake intake;
    intake.expect(count);
    QSet<QString> ids;
    while (!reader->atEnd()) {
        std::optional<SharedItems> items = reader->read(slice);
        if (!items)
            return 0;
        Fuzz::require(items->size() <= slice);
        Fuzz::require(intake.take(*items));
        check(*items, &ids);
    }
    Fuzz::require(intake.count() == qsizetype(count));
    return 0;
}
