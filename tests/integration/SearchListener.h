// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QHostAddress>
#include <QObject>
#include <QUdpSocket>

/// Hears the searches for UPnP devices that are sent on the loopback interface, as each device there does.
class SearchListener : public QObject
{
    Q_OBJECT
public:
    explicit SearchListener(QObject *parent = nullptr);

    /// @param type  "MediaRenderer" or "MediaServer"
    int count(const QByteArray &type) const { return m_counts.value(type); }
    void answer(const QByteArray &text, const QHostAddress &to, quint16 port);

Q_SIGNALS:
    void searched(const QByteArray &type, const QHostAddress &from, quint16 port);

private:
    void read();

    QUdpSocket m_socket;
    QHash<QByteArray, int> m_counts;
};
