// SPDX-License-Identifier: MIT
#include "FakeUpnpDevice.h"

#include <QNetworkInterface>
#include <QTcpSocket>

#include <algorithm>

namespace {
constexpr int announcementInterval = 30; // milliseconds

QByteArray header(const QByteArray &head, const QByteArray &name)
{
    for (const QByteArray &line : head.split('\n')) {
        if (line.toLower().startsWith(name.toLower() + ':'))
            return line.mid(name.size() + 1).trimmed();
    }
    return {};
}
} // namespace

FakeUpnpDevice::FakeUpnpDevice(QByteArray ownUdn, QByteArray ownName)
    : udn(std::move(ownUdn))
    , name(std::move(ownName))
    , results{{"CurrentTransportStatus", "OK"}, {"RelTime", "0:00:01"}, {"MediaDuration", ""},
          {"CurrentURIMetaData", ""}, {"SearchCaps", ""}, {"TrackDuration", ""}}
{
    m_socket.bind(QHostAddress(QHostAddress::LocalHost));
    m_socket.setMulticastInterface(QNetworkInterface::interfaceFromName(QStringLiteral("lo")));
    m_announcements.setInterval(announcementInterval);
    connect(&m_announcements, &QTimer::timeout, this, [this] { announce(); });
    m_server.serve("/control", [this](const auto &request) { return perform(request.head); });
    m_server.serve("/events", [this](const auto &request) { return subscribe(request.head); });
    moveTo("/description.xml");
}

void FakeUpnpDevice::moveTo(const QString &path)
{
    m_path = path;
    m_server.serve(path, [this](const auto &) { return describe(); });
}

HttpTestServer::Resource FakeUpnpDevice::describe() const
{
    const QByteArray base = urlBase.isEmpty() ? QByteArray() : "<URLBase>" + urlBase + "</URLBase>";
    const QByteArray service = type == "MediaRenderer" ? "AVTransport" : "ContentDirectory";
    const QByteArray volume
        = "<service><serviceType>urn:schemas-upnp-org:service:RenderingControl:1</serviceType>"
          "<serviceId>urn:upnp-org:serviceId:RenderingControl</serviceId><SCPDURL>/scpd</SCPDURL>"
          "<controlURL>/control</controlURL><eventSubURL/></service>";
    const QByteArray xml = "<?xml version=\"1.0\"?><root xmlns=\"urn:schemas-upnp-org:device-1-0\">"
                           "<specVersion><major>1</major><minor>0</minor></specVersion>"
        + base + "<device><deviceType>urn:schemas-upnp-org:device:" + type + ":1</deviceType><friendlyName>"
        + name + "</friendlyName><UDN>" + udn + "</UDN>" + elements
        + "<serviceList><service><serviceType>urn:schemas-upnp-org:service:" + service
        + ":1</serviceType><serviceId>urn:upnp-org:serviceId:" + service + "</serviceId><SCPDURL>"
        + (otherUrls.isEmpty() ? "/scpd" : otherUrls) + "</SCPDURL><controlURL>" + controlUrl
        + "</controlURL><eventSubURL>" + (otherUrls.isEmpty() ? "/events" : otherUrls)
        + "</eventSubURL></service>" + (hasVolume ? volume : QByteArray()) + "</serviceList></device></root>";
    HttpTestServer::Resource resource{xml, "text/xml"};
    if (isSlow) {
        resource.stallAfter = 10;
        resource.bytesPerSecond = 10'000'000;
    }
    return resource;
}

/// What announcements and answers to searches have in common.
QByteArray FakeUpnpDevice::identity() const
{
    QByteArray lines = "CACHE-CONTROL: max-age=" + QByteArray::number(maxAge)
        + "\r\nSERVER: test UPnP/1.1 test\r\nLOCATION: " + m_server.url(m_path).toEncoded()
        + "\r\nUSN: " + udn + "::" + target() + "\r\n";
    if (!bootId.isEmpty())
        lines += "BOOTID.UPNP.ORG: " + bootId + "\r\n";
    if (!configId.isEmpty())
        lines += "CONFIGID.UPNP.ORG: " + configId + "\r\n";
    return lines;
}

void FakeUpnpDevice::announce(const QByteArray &news)
{
    QByteArray message = "NOTIFY * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nNTS: ssdp:" + news
        + "\r\nNT: " + target() + "\r\n" + identity();
    if (!bootId.isEmpty() && news == "update")
        message += "NEXTBOOTID.UPNP.ORG: " + QByteArray::number(bootId.toInt() + 1) + "\r\n";
    m_socket.writeDatagram(message + "\r\n", QHostAddress(QStringLiteral("239.255.255.250")), 1900);
}

void FakeUpnpDevice::answerSearches()
{
    m_searches = std::make_unique<SearchListener>();
    connect(m_searches.get(), &SearchListener::searched, this,
        [this](const QByteArray &searched, const QHostAddress &from, quint16 port) {
            if (searched == type)
                m_searches->answer(
                    "HTTP/1.1 200 OK\r\nEXT:\r\nST: " + target() + "\r\n" + identity() + "\r\n", from, port);
        });
}

int FakeUpnpDevice::requests(const QByteArray &path) const
{
    const auto all = m_server.requests();
    return int(std::count_if(
        all.cbegin(), all.cend(), [&path](const auto &request) { return request.path == path; }));
}

int FakeUpnpDevice::actions(const QByteArray &action) const
{
    return int(m_performed.count(action));
}

HttpTestServer::Resource FakeUpnpDevice::perform(const QByteArray &head)
{
    const QByteArray soapAction = header(head, "SOAPAction").replace('"', "");
    const QList<QByteArray> parts = soapAction.split('#');
    const QByteArray action = parts.value(1);
    m_performed.append(action);
    QByteArray xml = "<?xml version=\"1.0\"?><s:Envelope "
                     "xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body><u:"
        + action + "Response xmlns:u=\"" + parts.constFirst() + "\"><CurrentTransportState>" + m_state
        + "</CurrentTransportState>";
    for (auto result = results.cbegin(); result != results.cend(); ++result)
        xml += '<' + result.key() + '>' + result.value() + "</" + result.key() + '>';
    return {xml + "</u:" + action + "Response></s:Body></s:Envelope>", "text/xml"};
}

HttpTestServer::Resource FakeUpnpDevice::subscribe(const QByteArray &head)
{
    HttpTestServer::Resource done{{}, "text/xml"};
    if (!head.startsWith("SUBSCRIBE"))
        return done;
    const QByteArray callback = header(head, "CALLBACK");
    if (!callback.isEmpty()) {
        m_subscriber = callback.mid(callback.indexOf('<') + 1).chopped(1);
        ++m_subscriptions;
        m_sequence = 0;
        m_events.clear();
        sendState(m_state);
    }
    done.headers
        = "SID: uuid:subscription-" + QByteArray::number(m_subscriptions) + "\r\nTIMEOUT: Second-1800\r\n";
    done.delay = subscriptionDelay;
    return done;
}

QByteArray FakeUpnpDevice::lastChange(const QByteArray &variables, const QByteArray &instance)
{
    return "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\"><InstanceID val=\"" + instance + "\">"
        + variables + "</InstanceID></Event>";
}

QByteArray FakeUpnpDevice::escaped(const QByteArray &xml)
{
    return QString::fromUtf8(xml).toHtmlEscaped().toUtf8();
}

void FakeUpnpDevice::sendState(const QByteArray &state)
{
    m_state = state;
    sendLastChange(lastChange("<TransportState val=\"" + state + "\"/>"));
}

void FakeUpnpDevice::sendLastChange(const QByteArray &text)
{
    sendProperties("<e:propertyset xmlns:e=\"urn:schemas-upnp-org:event-1-0\"><e:property><LastChange>"
        + escaped(text) + "</LastChange></e:property></e:propertyset>");
}

void FakeUpnpDevice::sendProperties(const QByteArray &xml)
{
    if (m_subscriber.isEmpty() || isMute)
        return;
    m_events.append(xml);
    // One after the other, else they might arrive in another order.
    if (m_events.size() == 1)
        QTimer::singleShot(0, this, &FakeUpnpDevice::sendNext);
}

void FakeUpnpDevice::sendNext()
{
    if (m_events.isEmpty())
        return;
    const QUrl target(QString::fromLatin1(m_subscriber));
    const QByteArray body = m_events.constFirst();
    const QByteArray head = "NOTIFY " + target.path().toLatin1()
        + " HTTP/1.1\r\nHOST: " + target.authority().toLatin1()
        + "\r\nCONTENT-TYPE: text/xml\r\nNT: upnp:event\r\nNTS: upnp:propchange"
          "\r\nSID: uuid:subscription-"
        + QByteArray::number(m_subscriptions) + "\r\nSEQ: " + QByteArray::number(m_sequence++)
        + "\r\nCONTENT-LENGTH: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n";
    auto *socket = new QTcpSocket(this);
    connect(socket, &QTcpSocket::connected, socket, [socket, head, body] { socket->write(head + body); });
    connect(socket, &QTcpSocket::disconnected, this, [this, socket, subscription = m_subscriptions] {
        socket->deleteLater();
        if (subscription != m_subscriptions)
            return;
        m_events.removeFirst();
        sendNext();
    });
    socket->connectToHost(target.host(), quint16(target.port()));
}
