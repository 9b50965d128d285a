// SPDX-License-Identifier: MIT
#pragma once

#include "BusNames.h"

#include <QDBusConnection>
#include <QObject>

/// Finds the processes of one kind on the session bus, as they come and go, and hears their signals: what whoever shows
/// them has in common. GUI thread; never waits for the bus or for another process.
class BusBrowser : public QObject
{
    Q_OBJECT
Q_SIGNALS:
    /// The connection to the bus broke.
    void busLost();

protected:
    /// @param timeout  milliseconds that each call may take
    BusBrowser(const QDBusConnection &connection, int timeout, QObject *parent);

    /// Calls the slot for each signal of this kind, whoever sends it: who did is checked on arrival.
    /// @param path  where it comes from; empty: anywhere
    /// @param firstArgument  what its first argument must be; empty: anything
    /// @param slot  SLOT(...) of this object; one that takes the message gets it whatever its arguments are
    void hear(const QString &path, const QString &interface, const QString &signal, const char *slot,
        const QString &firstArgument = {});
    /// Begins to call add() and drop(). Called after hear(), so that nothing that comes meanwhile is missed.
    void browse(BusNames::Filter isWanted);

    const QDBusConnection &connection() const { return m_connection; }
    int timeout() const { return m_timeout; }

    /// A process has come. @param owner  its unique name  @param name  its first name of the kind
    virtual void add(const QString &owner, const QString &name) = 0;
    /// A process has gone; also one that add() did not take.
    virtual void drop(const QString &owner) = 0;

private:
    QDBusConnection m_connection;
    const int m_timeout;
};
