// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"

#include <functional>

/// The worker threads of the tracker store: one for each piece of work that runs.
namespace TrackerThreads {

/// Any thread. Begins at once, on a thread of its own.
KELVO_TRACKER_EXPORT void run(std::function<void()> work);
/// Waits for all of it, but not without a limit (see WorkerPool); what runs must have been told to end.
void waitForAll();

} // namespace TrackerThreads
