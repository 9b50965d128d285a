// SPDX-License-Identifier: MIT
#include "BusNames.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QPointer>

#include <algorithm>

namespace {
const auto busService = QStringLiteral("org.freedesktop.DBus");
const auto busPath = QStringLiteral("/org/freedesktop/DBus");

QDBusMessage busCall(const QString &member)
{
    return QDBusMessage::createMethodCall(busService, busPath, busService, member);
}
} // namespace

BusNames::BusNames(const QDBusConnection &connection, Filter isWanted, int timeout, QObject *parent)
    : QObject(parent)
    , m_connection(connection)
    , m_isWanted(isWanted)
    , m_timeout(timeout)
{
    // Without a service name: naming one makes QtDBus ask for its owner and wait for the answer. Who sent a
    // signal is checked on arrival.
    const QString anyone;
    m_connection.connect(anyone, busPath, busService, QStringLiteral("NameOwnerChanged"), this,
        SLOT(handleNameOwnerChanged(QDBusMessage)));
    m_connection.connect(anyone, QStringLiteral("/org/freedesktop/DBus/Local"),
        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
        SIGNAL(busLost()));
    // Last, so that nobody who comes meanwhile is missed.
    listNames();
}

void BusNames::listNames()
{
    auto *watcher = new QDBusPendingCallWatcher(
        m_connection.asyncCall(busCall(QStringLiteral("ListNames")), m_timeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QStringList> reply = *watcher;
        if (reply.isError()) {
            Q_EMIT listingFailed(reply.error().message());
            return;
        }
        const QStringList names = reply.value();
        for (const QString &name : names) {
            if (m_isWanted(name))
                askOwner(name);
        }
    });
}

void BusNames::askOwner(const QString &name)
{
    QDBusMessage call = busCall(QStringLiteral("GetNameOwner"));
    call << name;
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(call, m_timeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, name] {
        watcher->deleteLater();
        const QDBusPendingReply<QString> reply = *watcher;
        if (!reply.isError()) // Else it has gone meanwhile.
            setOwner(name, reply.value());
    });
}

void BusNames::handleNameOwnerChanged(const QDBusMessage &message)
{
    // Anybody can send a signal of this name.
    if (message.service() != busService || message.signature() != u"sss")
        return;
    const QString name = message.arguments().at(0).toString();
    if (m_isWanted(name))
        setOwner(name, message.arguments().at(2).toString());
}

void BusNames::setOwner(const QString &name, const QString &owner)
{
    // This process itself is none of the others.
    const QString now = owner == m_connection.baseService() ? QString() : owner;
    const QString before = m_owners.value(name);
    if (now == before)
        return;
    m_owners.remove(name);
    const bool comes = !now.isEmpty() && !isOwner(now);
    const bool goes = !before.isEmpty() && !isOwner(before);
    if (!now.isEmpty())
        m_owners.insert(name, now);
    const QPointer<BusNames> self(this);
    if (goes)
        Q_EMIT vanished(before);
    if (comes && self)
        Q_EMIT appeared(now, name);
}

bool BusNames::isOwner(const QString &process) const
{
    return std::find(m_owners.cbegin(), m_owners.cend(), process) != m_owners.cend();
}
