// SPDX-License-Identifier: MIT
#include "MprisPlugin.h"

#include "BusAddress.h"
#include "BusConnector.h"
#include "KelvoMessageHandler.h"
#include "MprisBrowser.h"

#include <QDBusConnection>
#include <QDBusMetaType>

namespace {
constexpr int defaultTimeout = 2000;

int timeoutOfEnvironment()
{
    bool given = false;
    const int timeout = qEnvironmentVariableIntValue("KELVO_MPRIS_TIMEOUT", &given);
    return given && timeout > 0 ? timeout : defaultTimeout;
}

/// Never used twice: a connection that was given up may still be on its way.
QString nextConnectionName()
{
    static int number = 0;
    return QStringLiteral("kelvo-mpris-%1").arg(++number);
}
} // namespace

MprisPlugin::MprisPlugin() = default;

MprisPlugin::~MprisPlugin()
{
    stop();
}

bool MprisPlugin::start(KelvoRegistry *registry, QString *error)
{
    const QString address = BusAddress::ofSession();
    if (address.isEmpty() || !BusAddress::mayListen(address)) {
        *error = address.isEmpty()
            ? QStringLiteral("there is no session bus")
            : QStringLiteral("there is no session bus: nobody listens at %1").arg(address);
        return false;
    }
    // Without this QtDBus cannot send a list of object paths.
    qDBusRegisterMetaType<QList<QDBusObjectPath>>();
    qDBusRegisterMetaType<QList<QVariantMap>>();
    m_connectionName = nextConnectionName();
    const int timeout = timeoutOfEnvironment();
    m_connector = std::make_unique<BusConnector>(address, m_connectionName, 2 * timeout);
    connect(m_connector.get(), &BusConnector::connected, this,
        [this, registry, timeout](const QDBusConnection &connection) {
            m_browser = std::make_unique<MprisBrowser>(registry, connection, timeout);
            connect(
                m_browser.get(), &MprisBrowser::busLost, this, &MprisPlugin::loseBus, Qt::QueuedConnection);
        });
    connect(m_connector.get(), &BusConnector::failed, this, [](const QString &reason) {
        qCWarning(lcKelvo).noquote() << "No players are found: there is no use of the session bus," << reason;
    });
    m_connector->start();
    return true;
}

void MprisPlugin::stop()
{
    // Whoever hears that a renderer goes may unload this plug-in again.
    auto browser = std::move(m_browser);
    auto connector = std::move(m_connector);
    const QString name = std::exchange(m_connectionName, {});
    browser.reset();
    connector.reset();
    if (!name.isEmpty())
        QDBusConnection::disconnectFromBus(name);
}

void MprisPlugin::loseBus()
{
    qCWarning(lcKelvo) << "The session bus is gone, and the players with it";
    m_browser.reset();
}
