// SPDX-License-Identifier: MIT
#pragma once

#include <QMutex>

#include <atomic>
#include <functional>

class QObject;

/// What callbacks on foreign threads hold instead of an object: it queues calls to the object's thread for as
/// long as the object takes part, and drops those that belong to a generation of work that is over.
class Mailbox
{
public:
    explicit Mailbox(QObject *receiver);
    Q_DISABLE_COPY_MOVE(Mailbox)

    /// Any thread. The call runs on the receiver's thread, unless a new generation has begun by then.
    void post(std::function<void()> call);

    /// Receiver's thread: from now on nothing arrives that was posted before.
    void beginGeneration() { ++m_generation; }
    /// Receiver's thread, before it is destroyed.
    void close();

private:
    QMutex m_mutex;
    QObject *m_receiver;
    std::atomic<quint64> m_generation = 0;
};
