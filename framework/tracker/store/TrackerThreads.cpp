// SPDX-License-Identifier: MIT
#include "TrackerThreads.h"

#include <QThreadPool>

#include <limits>

namespace {
QThreadPool &pool()
{
    static QThreadPool threads;
    static const bool prepared = [] {
        // Most of this work waits most of the time; a limit would let one wait for the other.
        threads.setMaxThreadCount(std::numeric_limits<int>::max());
        threads.setObjectName(QStringLiteral("kelvo-tracker"));
        return true;
    }();
    Q_UNUSED(prepared)
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
