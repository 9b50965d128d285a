// SPDX-License-Identifier: MIT
#include "WorkerThread.h"

#include "KelvoMessageHandler.h"

#include <QCoreApplication>

namespace {
constexpr int longestWait = 5000; // milliseconds

/// Threads that are ending while nobody holds them any more. GUI thread.
QList<QThread *> &ending()
{
    static QList<QThread *> threads;
    return threads;
}

void waitAndDelete(QThread *thread)
{
    if (thread->wait(longestWait))
        delete thread;
    else // Destroying a running QThread would end the program on the spot.
        qCWarning(lcKelvo) << "Thread" << thread->objectName() << "does not end";
}

void waitForEnding()
{
    const QList<QThread *> threads = std::exchange(ending(), {});
    for (QThread *thread : threads)
        waitAndDelete(thread);
}

void letEnd(QThread *thread)
{
    if (!QCoreApplication::instance()) {
        waitAndDelete(thread);
        return;
    }
    if (ending().isEmpty())
        qAddPostRoutine(waitForEnding);
    ending().append(thread);
    const auto forget = [thread] {
        if (ending().removeOne(thread))
            thread->deleteLater();
    };
    QObject::connect(thread, &QThread::finished, QCoreApplication::instance(), forget, Qt::QueuedConnection);
}
} // namespace

WorkerThread::WorkerThread(std::unique_ptr<QObject> worker, const QString &name)
    : m_worker(worker.release())
    , m_thread(new QThread)
{
    m_thread->setObjectName(name);
    m_worker->moveToThread(m_thread);
    m_thread->start();
}

WorkerThread::~WorkerThread()
{
    letEnd(m_thread);
    post([worker = m_worker, thread = m_thread] {
        worker->deleteLater(); // done by the thread as its last act
        thread->quit();
    });
}
