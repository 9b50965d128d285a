// SPDX-License-Identifier: MIT
#pragma once

#include "DesktopIndex.h"
#include "FolderWatch.h"
#include "IndexRun.h"
#include "StoreWriter.h"

#include <vector>

/// Keeps the store equal to the desktop's own index. Worker thread.
class DesktopFollower
{
public:
    /// Neither is owned. The watch watches nothing: its wake() ends the pause between two passes.
    DesktopFollower(IndexRun &run, FolderWatch &pause);

    /// Returns when the run is stopped or the store has gone. False at once when there is no such index.
    bool follow(StoreWriter &writer);

private:
    void pass(StoreWriter &writer, const DesktopIndex &desktop);
    bool apply(StoreWriter &writer, std::vector<MediaItem> items, KelvoIndexReport *report);

    IndexRun &m_run;
    FolderWatch &m_pause;
};
