// SPDX-License-Identifier: MIT
#include "WorkerPool.h"

#include "HandOver.h"
#include "ThreadEnd.h"

#include <QThreadPool>

WorkerPool::WorkerPool(const QString &name, int maxThreads, std::chrono::milliseconds longestEnd)
    : m_pool(std::make_unique<QThreadPool>())
    , m_longestEnd(longestEnd)
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
    // The pool is but a name here: it may be gone when work that was left alone ends.
    m_pool->start(HandedCall([work = std::move(work), pool = m_pool.get()] {
        work();
        HandOver::given(pool);
    }));
}

void WorkerPool::clear()
{
    m_pool->clear();
}

bool WorkerPool::waitForDone()
{
    if (m_leftAlone)
        return false;
    if (m_pool->waitForDone(int(m_longestEnd.count()))) {
        HandOver::taken(m_pool.get());
        return true;
    }
    m_leftAlone = true;
    leaveRunning(m_pool->objectName());
    return false;
}
