// SPDX-License-Identifier: MIT
#pragma once

#include "TrackerTestCase.h"
#include "index/MediaItem.h"

#include <vector>

/// Base of tests of the indexer, and of those that fill the store by its parts: no plug-in is loaded.
class TrackerIndexCase : public TrackerTestCase
{
    Q_OBJECT
protected:
    /// Makes the store keep up to date with the media folder, once it is open.
    static void startIndexing();
    /// Has everything looked through again.
    static void indexAnew();
    /// Opens and indexes; waits until the first pass has ended.
    bool index();
    /// Writes songs into the open store without any files behind them.
    bool writeSongs(const std::vector<MediaItem> &items);
    static MediaItem song(int number);
};
