// SPDX-License-Identifier: MIT
#pragma once

#include "WireTypes.h"

#include <QDBusUnixFileDescriptor>

/// Files of items, right and wrong ones, as the tests know them, apart from the product.
namespace RogueFiles {
inline constexpr int allSeals = 0xf; // seal, shrink, grow and write

/// The bytes of a file.
QByteArray packed(const WireItems &items);
/// A file in memory.
QDBusUnixFileDescriptor inMemory(const QByteArray &bytes, int seals = allSeals);
/// One without bytes in it, of any size.
QDBusUnixFileDescriptor hollow(qint64 size);
/// A folder, device or file by its path.
QDBusUnixFileDescriptor onDisk(const char *path);
/// The end of a pipe that can be read.
QDBusUnixFileDescriptor endOfPipe();

/// How many descriptors this process has open.
qsizetype openDescriptors();
} // namespace RogueFiles
