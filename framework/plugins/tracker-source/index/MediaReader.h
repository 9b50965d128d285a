// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <memory>

struct MediaItem;

/// Reads what a song or video is: songs of known formats by a tag library, which is quick, the rest by the media
/// engine. A length that a file's headers only let guess is counted. One thread at a time.
class MediaReader
{
public:
    MediaReader();
    ~MediaReader();
    Q_DISABLE_COPY_MOVE(MediaReader)

    /// Fills in what is found; also tells songs from videos. False when the file is no medium that can be read.
    bool read(MediaItem *item);
    /// Any thread. What is being read, and all that follows, ends at once.
    void interrupt();

private:
    struct Private;
    std::unique_ptr<Private> d;
};
