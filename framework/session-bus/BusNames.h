// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QHash>
#include <QObject>

class QDBusMessage;

/// Tells which other processes own bus names of one kind, as they come and go.
///
/// A process is known by its unique name, however many names of the kind it owns. Never waits for the bus. Whoever
/// hears of a process may destroy this object.
class BusNames : public QObject
{
    Q_OBJECT
public:
    using Filter = bool (*)(const QString &name);

    /// Begins at once; what is there already is told from the event loop.
    /// @param isWanted  which well-known names count
    /// @param timeout   milliseconds that the bus has for each answer
    BusNames(const QDBusConnection &connection, Filter isWanted, int timeout, QObject *parent = nullptr);

Q_SIGNALS:
    /// A process has got its first name of the kind.
    void appeared(const QString &owner, const QString &name);
    /// A process has none of them any more. When a name goes from one process to another, this comes first.
    void vanished(const QString &owner);
    /// The bus does not tell who was there before; those who come later are told.
    void listingFailed(const QString &reason);
    /// The connection to the bus broke.
    void busLost();

private Q_SLOTS:
    // Takes the message, so that it gets it whatever its arguments are.
    void handleNameOwnerChanged(const QDBusMessage &message);

private:
    void listNames();
    void askOwner(const QString &name);
    void setOwner(const QString &name, const QString &owner);
    bool isOwner(const QString &process) const;

    QDBusConnection m_connection;
    const Filter m_isWanted;
    const int m_timeout;
    QHash<QString, QString> m_owners; // Unique names by well-known names.
};
