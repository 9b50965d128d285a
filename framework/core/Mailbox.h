// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"

#include <QtGlobal>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

class QObject;

/// What other threads hold instead of an object, which may be destroyed at any time: it queues calls to the object's
/// thread for as long as the object takes part, and drops those that belong to a generation of work that is over.
class KELVO_CORE_EXPORT Mailbox
{
public:
    explicit Mailbox(QObject *receiver);
    ~Mailbox();
    Q_DISABLE_COPY_MOVE(Mailbox)

    /// Any thread. The call runs on the receiver's thread, from the event loop, unless a new generation has begun or the
    /// receiver is destroyed by then. False when nobody is there to receive: the call is dropped.
    bool post(std::function<void()> call);

    /// Receiver's thread: from now on nothing arrives that was posted before.
    void beginGeneration() { ++*m_generation; }
    /// Receiver's thread, before it is destroyed. What was posted and has not arrived is left to Qt, which drops it
    /// with the receiver.
    void close();

private:
    /// Shared with the calls under way, which may outlive this object.
    using Generation = std::atomic<quint64>;

    std::mutex m_mutex;
    QObject *m_receiver;
    const std::shared_ptr<Generation> m_generation;
};
