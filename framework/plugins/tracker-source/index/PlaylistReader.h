// SPDX-License-Identifier: MIT
#pragma once

#include "MediaItem.h"

/// Reads a playlist file (.m3u, .m3u8, .pls, .xspf): title and entries. Lists within lists are entries. False when it
/// cannot be understood or is unreasonably large. Worker thread.
bool readPlaylist(MediaItem *item);
