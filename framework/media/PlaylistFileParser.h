// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistFile.h"

/// Reads playlist files. Any thread; takes about a second for 100,000 entries.
namespace PlaylistFileParser {
/// The entries of a list that was found at `uri`, resolved against it. Lists within the list are entries like
/// any other. An entry that names the list itself is left out.
PlaylistFile::Contents parse(const QByteArray &file, PlaylistFile::Format format, const QUrl &uri);
/// The same of a local file, if it is a list at all. What cannot be read, or is no file, counts as none.
PlaylistFile::Contents parseFile(const QUrl &uri, PlaylistFile::Formats announced);
} // namespace PlaylistFileParser
