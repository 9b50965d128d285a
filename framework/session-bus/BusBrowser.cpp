// SPDX-License-Identifier: MIT
#include "BusBrowser.h"

#include "KelvoMessageHandler.h"

BusBrowser::BusBrowser(const QDBusConnection &connection, int timeout, QObject *parent)
    : QObject(parent)
    , m_connection(connection)
    , m_timeout(timeout)
{
}

void BusBrowser::hear(const QString &path, const QString &interface, const QString &signal, const char *slot,
    const QString &firstArgument)
{
    // Without a service name: naming one makes QtDBus ask for its owner and wait for the answer.
    const QString anyone;
    const QStringList arguments = firstArgument.isEmpty() ? QStringList() : QStringList(firstArgument);
    m_connection.connect(anyone, path, interface, signal, arguments, QString(), this, slot);
}

void BusBrowser::browse(BusNames::Filter isWanted)
{
    const auto *names = new BusNames(m_connection, isWanted, m_timeout, this);
    connect(names, &BusNames::appeared, this, &BusBrowser::add);
    connect(names, &BusNames::vanished, this, &BusBrowser::drop);
    connect(names, &BusNames::busLost, this, &BusBrowser::busLost);
    connect(names, &BusNames::listingFailed, this, [](const QString &reason) {
        qCWarning(lcKelvo) << "The session bus does not tell who is there:" << reason;
    });
}
