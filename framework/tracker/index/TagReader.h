// SPDX-License-Identifier: MIT
#pragma once

#include "MediaItem.h"

/// Reads the tags of an audio file (ID3v1, ID3v2, APE, Vorbis comments, MP4, ASF, RIFF INFO ...). False when the
/// file is of no format that is known here, or broken. Worker thread.
bool readTags(MediaItem *item);
