// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include <memory>

class QDBusConnection;

/// Makes the connection to the bus in a thread of its own, because that waits for the other end.
///
/// Exactly one of the two signals comes, from the event loop. Destroying the object calls the attempt off.
class BusConnector : public QObject
{
    Q_OBJECT
public:
    /// @param connectionName  that Qt is to know the connection by
    /// @param timeout  milliseconds that the other end has to show that it is alive
    BusConnector(
        const QString &address, const QString &connectionName, int timeout, QObject *parent = nullptr);
    ~BusConnector() override;

    void start();

Q_SIGNALS:
    void connected(const QDBusConnection &connection);
    void failed(const QString &reason);

private:
    class Thread;
    void report();

    std::unique_ptr<Thread> m_thread;
};
