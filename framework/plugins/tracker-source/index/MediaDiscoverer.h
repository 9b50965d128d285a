// SPDX-License-Identifier: MIT
#pragma once

#include "MediaItem.h"

#include <atomic>
#include <memory>

/// Looks into videos, and into everything that the tag reader does not know, by means of the media engine.
/// One worker thread; only interrupt() may be called from others.
class MediaDiscoverer
{
public:
    MediaDiscoverer();
    ~MediaDiscoverer();
    Q_DISABLE_COPY_MOVE(MediaDiscoverer)

    /// Fills in what the file says. A video without pictures becomes a song. False when it cannot be understood, or
    /// takes too long.
    /// @param estimated  the length is a guess: nothing in the file tells it
    bool read(MediaItem *item, bool *estimated);
    /// Ends a read() that runs, and all later ones.
    void interrupt();

private:
    struct Private;
    std::unique_ptr<Private> d;
};
