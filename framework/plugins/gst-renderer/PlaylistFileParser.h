// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistFile.h"

namespace PlaylistFileParser {
/// The entries of a list that was found at `uri`, resolved against it. Lists within the list are entries like
/// any other. An entry that names the list itself is left out. Any thread; takes about a second for 100,000
/// entries.
PlaylistFile::Contents parse(const QByteArray &file, PlaylistFile::Format format, const QUrl &uri);
} // namespace PlaylistFileParser
