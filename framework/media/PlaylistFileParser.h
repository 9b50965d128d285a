// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistFile.h"

/// Reads local playlist files. Any thread; takes as long as PlaylistParser.
namespace PlaylistFileParser {
/// What PlaylistParser says of a local file, if it is a list at all. What cannot be read, or is no file, counts as none.
PlaylistFile::Contents parseFile(const QUrl &uri, PlaylistFile::Formats announced);
} // namespace PlaylistFileParser
