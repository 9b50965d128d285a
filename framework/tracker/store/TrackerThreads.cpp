// SPDX-License-Identifier: MIT
#include "TrackerThreads.h"

#include "WorkerPool.h"

#include <limits>

namespace {
WorkerPool &pool()
{
    // Most of this work waits most of the time; a limit would let one wait for the other.
    static WorkerPool threads(QStringLiteral("kelvo-tracker"), std::numeric_limits<int>::max());
    return threads;
}
} // namespace

void TrackerThreads::run(std::function<void()> work)
{
    pool().start(std::move(work));
}

void TrackerThreads::waitForAll()
{
    pool().waitForDone();
}
