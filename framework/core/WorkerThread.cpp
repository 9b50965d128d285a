// SPDX-License-Identifier: MIT
#include "WorkerThread.h"

#include "ThreadEnd.h"

WorkerThread::WorkerThread(std::unique_ptr<QObject> worker, const QString &name)
    : m_worker(worker.release())
    , m_thread(std::make_unique<QThread>())
{
    m_thread->setObjectName(name);
    m_worker->moveToThread(m_thread.get());
    m_thread->start();
}

WorkerThread::~WorkerThread()
{
    QThread *thread = m_thread.get();
    deleteWhenEnded(std::move(m_thread), m_longestEnd);
    post([worker = m_worker, thread] {
        worker->deleteLater(); // done by the thread as its last act
        thread->quit();
    });
}
