// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QObject>
#include <QTimer>
#include <QUdpSocket>

/// Announces a UPnP device that is there already, again and again, on the loopback interface. Devices take up to a
/// second to answer a search; a test that starts searching anew many times need not wait for them.
class SsdpAnnouncer : public QObject
{
    Q_OBJECT
public:
    /// Finds the first device of that type and lets it finish what it announces at its own start; isReady() tells whether
    /// there is one.
    explicit SsdpAnnouncer(const QByteArray &deviceType, QObject *parent = nullptr);

    bool isReady() const { return !m_location.isEmpty(); }
    QByteArray udn() const { return m_usn.left(m_usn.indexOf("::")); }
    QByteArray location() const { return m_location; }

    void start() { m_timer.start(); }
    void stop() { m_timer.stop(); }

private:
    bool search(const QByteArray &deviceType);
    void waitUntilAnnounced();
    void announce();

    QUdpSocket m_socket;
    QUdpSocket m_ear; ///< for what devices announce
    QTimer m_timer;
    QByteArray m_type;
    QByteArray m_usn;
    QByteArray m_location;
};
