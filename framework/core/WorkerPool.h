// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QString>
#include <QtGlobal>

#include <chrono>
#include <functional>
#include <memory>

class QThreadPool;

/// Worker threads whose end nobody waits for without a limit. Any thread but for construction and destruction.
///
/// A QThreadPool waits in its destructor until its work is done, so work that hangs (a library that does not come
/// back, a disk that does not answer) would keep the program from ending.
class KELVO_CORE_EXPORT WorkerPool
{
public:
    /// @param name  what the log calls it
    /// @param longestEnd  how long waitForDone() waits
    WorkerPool(
        const QString &name, int maxThreads, std::chrono::milliseconds longestEnd = std::chrono::seconds(5));
    /// Waits as waitForDone() does.
    ~WorkerPool();
    Q_DISABLE_COPY_MOVE(WorkerPool)

    void start(std::function<void()> work);
    /// Drops what has not begun.
    void clear();
    /// False when work still runs after the longest wait, which is left alone then: see leaveRunning().
    bool waitForDone();

private:
    std::unique_ptr<QThreadPool> m_pool;
    const std::chrono::milliseconds m_longestEnd;
    bool m_leftAlone = false;
};
