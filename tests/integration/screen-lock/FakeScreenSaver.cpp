// SPDX-License-Identifier: MIT
#include "FakeScreenSaver.h"

#include <QDBusConnectionInterface>

FakeScreenSaver::FakeScreenSaver(const QString &connectionName, Manner manner)
    : m_connection(
        QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), connectionName))
    , m_connectionName(connectionName)
    , m_manner(manner)
{
    if (!m_connection.registerObject(
            QStringLiteral("/org/freedesktop/ScreenSaver"), this, QDBusConnection::ExportAllSlots)
        || !m_connection.registerService(QStringLiteral("org.freedesktop.ScreenSaver")))
        qFatal("no screen saver on the bus");
}

FakeScreenSaver::~FakeScreenSaver()
{
    m_connection.unregisterObject(QStringLiteral("/org/freedesktop/ScreenSaver"));
    QDBusConnection::disconnectFromBus(m_connectionName);
}

uint FakeScreenSaver::Inhibit(const QString &application, const QString &reason)
{
    m_asked.append(QStringLiteral("Inhibit(%1)").arg(application));
    if (m_manner == Refuses || reason.isEmpty()) {
        sendErrorReply(QDBusError::AccessDenied);
        return 0;
    }
    if (m_manner == Answers)
        return makeCookie();
    setDelayedReply(true);
    m_waiting.append(message());
    return 0;
}

void FakeScreenSaver::UnInhibit(uint cookie)
{
    m_asked.append(QStringLiteral("UnInhibit(%1)").arg(cookie));
    m_held.removeAll(cookie);
}

void FakeScreenSaver::answer()
{
    m_connection.send(m_waiting.takeFirst().createReply(makeCookie()));
}

uint FakeScreenSaver::makeCookie()
{
    m_held.append(++m_lastCookie);
    return m_lastCookie;
}
