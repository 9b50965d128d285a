// SPDX-License-Identifier: MIT
#pragma once

#include "HandOver.h"
#include "KelvoCoreGlobal.h"

#include <QMetaObject>
#include <QThread>

#include <chrono>
#include <memory>
#include <type_traits>
#include <utility>

/// A thread with an event loop and the one object that lives in it. GUI thread.
///
/// Destroying it lets the object finish what it is doing, deletes it on its own thread and ends that thread.
/// The destructor does not wait for that; the end of the application does.
class KELVO_CORE_EXPORT WorkerThread
{
public:
    /// Takes over the worker, which must have no parent.
    WorkerThread(std::unique_ptr<QObject> worker, const QString &name);
    ~WorkerThread();
    Q_DISABLE_COPY_MOVE(WorkerThread)

    /// The object, as the type that was given. Only for connections and for calls by post().
    template <typename Worker> Worker *worker() const { return static_cast<Worker *>(m_worker); }

    /// How long the end of the application waits for this thread; five seconds unless told otherwise.
    void setLongestEnd(std::chrono::milliseconds longest) { m_longestEnd = longest; }

    /// Runs the call on the worker's thread, after those asked for before.
    template <typename Call> void post(Call &&call)
    {
        QMetaObject::invokeMethod(
            m_worker, HandedCall<std::decay_t<Call>>(std::forward<Call>(call)), Qt::QueuedConnection);
    }

private:
    QObject *m_worker;
    std::unique_ptr<QThread> m_thread;
    std::chrono::milliseconds m_longestEnd = std::chrono::seconds(5);
};
