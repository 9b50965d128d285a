// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QString>
#include <QtGlobal>

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
    WorkerPool(const QString &name, int maxThreads);
    /// Waits as waitForDone() does.
    ~WorkerPool();
    Q_DISABLE_COPY_MOVE(WorkerPool)

    void start(std::function<void()> work);
    /// Drops what has not begun.
    void clear();
    /// Waits for 5 s at most. False when work still runs then, which is left alone: see leaveRunning().
    bool waitForDone();

private:
    std::unique_ptr<QThreadPool> m_pool;
    bool m_leftAlone = false;
};
