// SPDX-License-Identifier: MIT
#include "SsdpAnnouncer.h"

#include <QElapsedTimer>
#include <QNetworkInterface>

namespace {
constexpr int tries = 200;
// Milliseconds. Devices answer each question after a random part of a second: who asks often is answered soon.
constexpr int answerTime = 150;
constexpr int interval = 30;
// GSSDP sends the messages of one announcement 120 ms apart.
constexpr int silence = 500;
constexpr int longestAnnouncement = 10'000;
constexpr quint16 port = 1900;

QHostAddress everybody()
{
    return QHostAddress(QStringLiteral("239.255.255.250"));
}

QByteArray header(const QByteArray &message, const QByteArray &name)
{
    for (const QByteArray &line : message.split('\n')) {
        if (line.toLower().startsWith(name.toLower() + ':'))
            return line.mid(name.size() + 1).trimmed();
    }
    return {};
}
} // namespace

SsdpAnnouncer::SsdpAnnouncer(const QByteArray &deviceType, QObject *parent)
    : QObject(parent)
{
    m_socket.bind(QHostAddress(QHostAddress::LocalHost));
    const QNetworkInterface loopback = QNetworkInterface::interfaceFromName(QStringLiteral("lo"));
    m_socket.setMulticastInterface(loopback);
    m_ear.bind(QHostAddress(QHostAddress::AnyIPv4), port,
        QAbstractSocket::ShareAddress | QAbstractSocket::ReuseAddressHint);
    m_ear.joinMulticastGroup(everybody(), loopback);
    m_timer.setInterval(interval);
    connect(&m_timer, &QTimer::timeout, this, &SsdpAnnouncer::announce);
    for (int i = 0; i < tries && !isReady(); ++i)
        search(deviceType);
    if (isReady())
        waitUntilAnnounced();
    m_ear.close();
}

/// A device that has just started answers searches, then takes back what it may have announced in an earlier life, and
/// only then announces itself: whoever has found it by its answer would lose it again for a moment.
void SsdpAnnouncer::waitUntilAnnounced()
{
    QElapsedTimer all;
    all.start();
    QElapsedTimer quiet;
    quiet.start();
    while (quiet.elapsed() < silence && all.elapsed() < longestAnnouncement) {
        if (!m_ear.hasPendingDatagrams() && !m_ear.waitForReadyRead(silence))
            continue;
        QByteArray message(m_ear.pendingDatagramSize(), '\0');
        m_ear.readDatagram(message.data(), message.size());
        if (message.startsWith("NOTIFY"))
            quiet.start();
    }
}

bool SsdpAnnouncer::search(const QByteArray &deviceType)
{
    const QByteArray question
        = "M-SEARCH * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nMAN: \"ssdp:discover\"\r\n"
          "MX: 1\r\nST: "
        + deviceType + "\r\n\r\n";
    m_socket.writeDatagram(question, everybody(), port);
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < answerTime) {
        if (!m_socket.hasPendingDatagrams() && !m_socket.waitForReadyRead(answerTime))
            continue;
        QByteArray message(m_socket.pendingDatagramSize(), '\0');
        m_socket.readDatagram(message.data(), message.size());
        m_usn = header(message, "USN");
        m_type = header(message, "ST");
        m_location = header(message, "LOCATION");
        if (isReady())
            return true;
    }
    return false;
}

void SsdpAnnouncer::announce()
{
    const QByteArray message
        = "NOTIFY * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nCACHE-CONTROL: max-age=1800\r\n"
          "NTS: ssdp:alive\r\nSERVER: test UPnP/1.0 test\r\nLOCATION: "
        + m_location + "\r\nNT: " + m_type + "\r\nUSN: " + m_usn + "\r\n\r\n";
    m_socket.writeDatagram(message, everybody(), port);
}
