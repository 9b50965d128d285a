// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerStore.h"
#include "StoreWriter.h"

#include <functional>
#include <vector>

/// Items on their way into the store, which takes many together much faster than each alone. Worker thread.
class ItemBatch
{
public:
    using Written = std::function<void(const MediaItem &)>;

    /// @param report   counts what was written; it and the writer must outlive the batch
    /// @param written  called for each item that the store has taken
    ItemBatch(StoreWriter &writer, KelvoIndexReport &report, Written written = {});

    /// The item, until the next one is added.
    MediaItem &add(MediaItem item);
    bool isFull() const;
    /// Writes what has come. False and *error when nothing more can be written.
    bool write(StoreError *error);

private:
    StoreWriter &m_writer;
    KelvoIndexReport &m_report;
    const Written m_written;
    std::vector<MediaItem> m_items;
};
