// SPDX-License-Identifier: MIT
#pragma once

/// Which of several decoders GStreamer takes. Any thread; GStreamer has been started.
namespace DecoderRanks {
/// Of decoders of one rank it takes the first by name: of MP3 libav's, for which eighty libraries are loaded, a third of the
/// time and the memory that a song needs to play. From now on it is mpg123's, unless somebody has given them other ranks
/// (GST_PLUGIN_FEATURE_RANK).
void preferSmallDecoders();
} // namespace DecoderRanks
