// SPDX-License-Identifier: MIT
#pragma once

#include "Mailbox.h"
#include "WorkerThread.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

/// Where the calls of other processes come in: on a thread of its own, as anybody may call, and faster than they can be
/// served. What makes no sense, or is too much, is refused there; the rest waits for the GUI thread, which takes one call
/// after the other as it finds time. GUI thread.
class CallGate
{
public:
    /// Answers for the tree of objects below PlaylistProtocol::rootPath on this connection.
    /// @param isWaiting  called from the event loop: there is something to take
    CallGate(const QDBusConnection &connection, std::function<void()> isWaiting);
    /// What waits is not answered any more.
    ~CallGate();
    Q_DISABLE_COPY_MOVE(CallGate)

    /// The names of the objects below the root, as who looks around is told.
    void setChildren(const QStringList &names);
    /// The call that has waited longest, with arguments as the description of its interface has them.
    std::optional<QDBusMessage> take();

private:
    class Queue;
    class Door;

    QDBusConnection m_connection;
    const std::shared_ptr<Queue> m_queue;
    QObject m_receiver;
    const std::shared_ptr<Mailbox> m_mailbox;
    std::unique_ptr<WorkerThread> m_thread;
};
