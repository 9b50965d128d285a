// SPDX-License-Identifier: MIT
#pragma once

#include "MediaItem.h"

/// What tells the length of a file for sure.
enum class LengthSource {
    Headers, ///< as it was read
    Frames, ///< their number: the headers only let guess
    Decoding, ///< the headers say nothing
};

/// Reads the tags of an audio file (ID3v1, ID3v2, APE, Vorbis comments, MP4, ASF, RIFF INFO ...) and its length. False
/// when the file is of no format that is known here, or broken. Worker thread.
bool readTags(MediaItem *item, LengthSource *source);
