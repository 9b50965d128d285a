// SPDX-License-Identifier: MIT
#include "SearchListener.h"

#include <QNetworkDatagram>
#include <QNetworkInterface>

namespace {
constexpr quint16 ssdpPort = 1900;
const QByteArray searchedPrefix = QByteArrayLiteral("urn:schemas-upnp-org:device:");
} // namespace

SearchListener::SearchListener(QObject *parent)
    : QObject(parent)
{
    m_socket.bind(QHostAddress(QHostAddress::AnyIPv4), ssdpPort,
        QAbstractSocket::ShareAddress | QAbstractSocket::ReuseAddressHint);
    m_socket.joinMulticastGroup(QHostAddress(QStringLiteral("239.255.255.250")),
        QNetworkInterface::interfaceFromName(QStringLiteral("lo")));
    connect(&m_socket, &QUdpSocket::readyRead, this, &SearchListener::read);
}

void SearchListener::answer(const QByteArray &text, const QHostAddress &to, quint16 toPort)
{
    m_socket.writeDatagram(text, to, toPort);
}

void SearchListener::read()
{
    while (m_socket.hasPendingDatagrams()) {
        const QNetworkDatagram datagram = m_socket.receiveDatagram();
        if (!datagram.data().startsWith("M-SEARCH"))
            continue;
        const qsizetype begin = datagram.data().indexOf(searchedPrefix) + searchedPrefix.size();
        const QByteArray type = datagram.data().mid(begin, datagram.data().indexOf(':', begin) - begin);
        ++m_counts[type];
        Q_EMIT searched(type, datagram.senderAddress(), quint16(datagram.senderPort()));
    }
}
