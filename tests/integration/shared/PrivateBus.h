// SPDX-License-Identifier: MIT
#pragma once

#include "ProcessLine.h"

#include <QProcess>

/// A session bus that a test may stop and kill; the one of the environment from here on. Ends with this object.
class PrivateBus
{
public:
    /// @param configuration  options of the daemon that say what bus it is
    explicit PrivateBus(const QStringList &configuration = {QStringLiteral("--session")})
    {
        m_daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_daemon.start(
            "dbus-daemon", configuration + QStringList{"--nofork", "--nopidfile", "--print-address=1"});
        const QByteArray address = nextLine(m_daemon);
        if (address.isEmpty())
            qFatal("dbus-daemon does not start");
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    }
    ~PrivateBus() { kill(); }
    Q_DISABLE_COPY_MOVE(PrivateBus)

    qint64 pid() const { return m_daemon.processId(); }
    void kill()
    {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

private:
    QProcess m_daemon;
};
