// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistFile.h"

/// Reads the text of playlist files: TotemPlaylistParser.cpp in a build with the library for that, otherwise
/// NoPlaylistParser.cpp, which understands none. Any thread but the GUI thread; takes about a second for 100,000 entries, and
/// loads the library for the first one.
namespace PlaylistParser {
/// The entries of a list that was found at `uri`, resolved against it. Lists within the list are entries like
/// any other. An entry that names the list itself is left out.
PlaylistFile::Contents parse(const QByteArray &file, PlaylistFile::Format format, const QUrl &uri);
} // namespace PlaylistParser
