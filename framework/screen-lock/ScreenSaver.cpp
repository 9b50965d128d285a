// SPDX-License-Identifier: MIT
#include "ScreenSaver.h"

#include "BusAddress.h"
#include "BusConnector.h"
#include "BusNames.h"
#include "KelvoMessageHandler.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <limits>
#include <utility>

namespace {
constexpr int busTimeout = 5000; // milliseconds
// An answer that nobody waits for any more would leave an inhibition that nobody can give back.
constexpr int noTimeout = std::numeric_limits<int>::max();
const auto busName = QStringLiteral("kelvo-screen-lock");
const auto serviceName = QStringLiteral("org.freedesktop.ScreenSaver");
const auto objectPath = QStringLiteral("/org/freedesktop/ScreenSaver");

bool isScreenSaver(const QString &name)
{
    return name == serviceName;
}
} // namespace

ScreenSaver::ScreenSaver(QObject *parent)
    : QObject(parent)
{
}

ScreenSaver::~ScreenSaver()
{
    giveBack();
    forgetService();
    m_names.reset();
    m_connector.reset();
    QDBusConnection::disconnectFromBus(busName);
}

void ScreenSaver::setInhibited(bool inhibited)
{
    if (std::exchange(m_isInhibited, inhibited) == inhibited)
        return;
    if (!inhibited)
        giveBack();
    else if (m_names)
        ask();
    else if (!m_connector)
        connectToBus();
}

void ScreenSaver::connectToBus()
{
    const QString address = BusAddress::ofSession();
    if (!BusAddress::mayListen(address))
        return;
    m_connector = std::make_unique<BusConnector>(address, busName, busTimeout);
    connect(m_connector.get(), &BusConnector::connected, this, &ScreenSaver::findServices);
    // With the next video it is tried again.
    connect(m_connector.get(), &BusConnector::failed, this, [this] { m_connector.release()->deleteLater(); });
    m_connector->start();
}

/// Called by what it deletes.
void ScreenSaver::leaveBus()
{
    forgetService();
    if (m_names)
        m_names.release()->deleteLater();
    if (m_connector)
        m_connector.release()->deleteLater();
    QDBusConnection::disconnectFromBus(busName);
}

void ScreenSaver::findServices(const QDBusConnection &connection)
{
    m_names = std::make_unique<BusNames>(connection, isScreenSaver, busTimeout);
    connect(m_names.get(), &BusNames::appeared, this, &ScreenSaver::takeService);
    connect(m_names.get(), &BusNames::vanished, this, &ScreenSaver::forgetService);
    connect(m_names.get(), &BusNames::busLost, this, &ScreenSaver::leaveBus);
}

void ScreenSaver::takeService(const QString &service)
{
    m_service = service;
    ask();
}

/// What it was asked for goes with it.
void ScreenSaver::forgetService()
{
    m_service.clear();
    m_request.reset();
    m_cookie.reset();
}

void ScreenSaver::ask()
{
    if (!m_isInhibited || m_service.isEmpty() || m_request || m_cookie)
        return;
    QDBusMessage request = call(QStringLiteral("Inhibit"));
    request << QStringLiteral("org.kelvo.TestGui") << QStringLiteral("A video plays");
    m_request = std::make_unique<QObject>();
    const auto *watcher = new QDBusPendingCallWatcher(
        QDBusConnection(busName).asyncCall(request, noTimeout), m_request.get());
    connect(watcher, &QDBusPendingCallWatcher::finished, m_request.get(),
        [this](QDBusPendingCallWatcher *answered) {
            const QDBusPendingReply<uint> reply = *answered;
            m_request.release()->deleteLater();
            if (reply.isError())
                qCDebug(lcKelvo) << "The screen may be locked during videos:" << reply.error().message();
            else
                takeCookie(reply.value());
        });
}

void ScreenSaver::takeCookie(uint cookie)
{
    m_cookie = cookie;
    // The video may have ended before the answer came.
    if (!m_isInhibited)
        giveBack();
}

void ScreenSaver::giveBack()
{
    if (!m_cookie)
        return;
    QDBusMessage request = call(QStringLiteral("UnInhibit"));
    request << *std::exchange(m_cookie, std::nullopt);
    QDBusConnection(busName).send(request);
}

QDBusMessage ScreenSaver::call(const QString &method) const
{
    return QDBusMessage::createMethodCall(m_service, objectPath, serviceName, method);
}
