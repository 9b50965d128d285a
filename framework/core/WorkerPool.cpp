// SPDX-License-Identifier: MIT
#include "WorkerPool.h"

#include "ThreadEnd.h"

#include <QThreadPool>

namespace {
constexpr int workerWait = 5000; // milliseconds
} // namespace

WorkerPool::WorkerPool(const QString &name, int maxThreads)
    : m_pool(std::make_unique<QThreadPool>())
{
    m_pool->setObjectName(name);
    m_pool->setMaxThreadCount(maxThreads);
    // A thread that has nothing to do goes at once. Kept for later, it would be ended by the end of the program, which
    // does not see its very last steps: what they free would look lost.
    m_pool->setExpiryTimeout(0);
}

WorkerPool::~WorkerPool()
{
    if (!waitForDone())
        static_cast<void>(m_pool.release()); // its destructor would wait
}

void WorkerPool::start(std::function<void()> work)
{
    m_pool->start(std::move(work));
}

void WorkerPool::clear()
{
    m_pool->clear();
}

bool WorkerPool::waitForDone()
{
    if (m_leftAlone || m_pool->waitForDone(workerWait))
        return !m_leftAlone;
    m_leftAlone = true;
    leaveRunning(m_pool->objectName());
    return false;
}
