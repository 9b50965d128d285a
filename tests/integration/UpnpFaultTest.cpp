// SPDX-License-Identifier: MIT
// A device that misbehaves as told, on the loopback interface.
#include "HttpTestServer.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"
#include "UpnpNetwork.h"

#include <QElapsedTimer>
#include <QNetworkInterface>
#include <QTest>
#include <QTimer>
#include <QUdpSocket>

#include <algorithm>
#include <memory>
#include <optional>

namespace {
const QByteArray rendererType = QByteArrayLiteral("urn:schemas-upnp-org:device:MediaRenderer:1");

QByteArray service()
{
    return "<serviceList><service><serviceType>urn:schemas-upnp-org:service:AVTransport:1</serviceType>"
           "<serviceId>urn:upnp-org:serviceId:AVTransport</serviceId><SCPDURL>/scpd</SCPDURL>"
           "<controlURL>/control</controlURL><eventSubURL>/events</eventSubURL></service></serviceList>";
}

QByteArray description(const QByteArray &udn, const QByteArray &names, const QByteArray &services)
{
    return "<?xml version=\"1.0\"?><root xmlns=\"urn:schemas-upnp-org:device-1-0\">"
           "<specVersion><major>1</major><minor>0</minor></specVersion><device><deviceType>"
        + rendererType + "</deviceType>" + names + "<UDN>" + udn + "</UDN>" + services + "</device></root>";
}

QByteArray answerOf(const QByteArray &action, const QByteArray &results)
{
    return "<?xml version=\"1.0\"?><s:Envelope "
           "xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body><u:"
        + action + "Response xmlns:u=\"urn:schemas-upnp-org:service:AVTransport:1\">" + results
        + "</u:" + action + "Response></s:Body></s:Envelope>";
}

class UpnpFaultTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void badDescription_data();
    void badDescription();
    void namelessDeviceHasItsModelsName();
    void namelessDeviceWithoutModelHasItsUdn();
    void goesWithItsByebye();
    void badAnswer_data();
    void badAnswer();
    void hangingActionEndsInTime();
    void actionsHaveThreeSeconds();
    void badMetadata_data();
    void badMetadata();

private:
    void announce(const QByteArray &path, const QByteArray &udn, const QByteArray &what = "alive");
    bool appears(const QByteArray &udn, const QByteArray &names = "<friendlyName>Fault</friendlyName>");
    /// It accepts whatever it is told to do, and says no more.
    void fallSilent();
    void serveAction(const HttpTestServer::Resource &answer) { m_server->serve("/control", answer); }
    /// @param timeout  milliseconds; none: what every action has that asks for no other
    Upnp::Answer ask(
        const QByteArray &action, const QList<QByteArray> &results, std::optional<int> timeout = {});

    std::unique_ptr<HttpTestServer> m_server;
    std::unique_ptr<UpnpNetwork> m_network;
    QHash<QString, QString> m_names; // by UDN
    QUdpSocket m_socket;
};

void UpnpFaultTest::initTestCase()
{
    m_socket.bind(QHostAddress(QHostAddress::LocalHost));
    m_socket.setMulticastInterface(QNetworkInterface::interfaceFromName(QStringLiteral("lo")));
}

void UpnpFaultTest::init()
{
    KelvoTestCase::init();
    m_server = std::make_unique<HttpTestServer>();
    m_network = std::make_unique<UpnpNetwork>(QStringList{QStringLiteral("lo")});
    connect(m_network.get(), &UpnpNetwork::appeared, this,
        [this](const Upnp::Description &device) { m_names.insert(device.key.udn, device.name); });
    connect(m_network.get(), &UpnpNetwork::disappeared, this,
        [this](const Upnp::DeviceKey &device) { m_names.remove(device.udn); });
}

void UpnpFaultTest::cleanup()
{
    m_network.reset();
    m_server.reset();
    m_names.clear();
}

void UpnpFaultTest::announce(const QByteArray &path, const QByteArray &udn, const QByteArray &what)
{
    const QByteArray message
        = "NOTIFY * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nCACHE-CONTROL: max-age=1800\r\nNTS: ssdp:"
        + what + "\r\nSERVER: test UPnP/1.0 test\r\nLOCATION: "
        + m_server->url(QString::fromLatin1(path)).toEncoded() + "\r\nNT: " + rendererType + "\r\nUSN: " + udn
        + "::" + rendererType + "\r\n\r\n";
    m_socket.writeDatagram(message, QHostAddress(QStringLiteral("239.255.255.250")), 1900);
}

/// Announced again and again, as the network's search may not have begun.
bool UpnpFaultTest::appears(const QByteArray &udn, const QByteArray &names)
{
    m_server->serve("/good", {description(udn, names, service()), "text/xml"});
    QTimer again;
    connect(&again, &QTimer::timeout, this, [this, udn] { announce("/good", udn); });
    again.start(30);
    return QTest::qWaitFor([&] { return m_names.contains(QString::fromLatin1(udn)); });
}

Upnp::Answer UpnpFaultTest::ask(
    const QByteArray &action, const QList<QByteArray> &results, std::optional<int> timeout)
{
    std::optional<Upnp::Answer> answer;
    Upnp::Call call = {.service = Upnp::Service::AVTransport,
        .action = action,
        .in = {{"InstanceID", QStringLiteral("0")}},
        .out = results};
    call.timeout = timeout.value_or(call.timeout);
    m_network->call({Upnp::Kind::Renderer, QStringLiteral("uuid:good")}, call,
        [&answer](const Upnp::Answer &given) { answer = given; });
    if (!QTest::qWaitFor([&] { return answer.has_value(); }))
        qFatal("No answer within the time-out");
    return *answer;
}

void UpnpFaultTest::badDescription_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    const QByteArray names = "<friendlyName>Bad</friendlyName>";
    const QByteArray whole = description("uuid:bad", names, service());
    QTest::newRow("404") << QByteArray("missing") << 404;
    QTest::newRow("no XML") << QByteArray("<<<& this is none") << 200;
    QTest::newRow("empty") << QByteArray() << 200;
    QTest::newRow("cut off") << whole.first(whole.size() / 2) << 200;
    QTest::newRow("no services") << description("uuid:bad", names, {}) << 200;
}

void UpnpFaultTest::badDescription()
{
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    m_server->serve("/bad", {body, "text/xml", status});
    QVERIFY(appears("uuid:good"));
    announce("/bad", "uuid:bad");
    QTRY_VERIFY(std::any_of(m_server->requests().cbegin(), m_server->requests().cend(),
        [](const auto &request) { return request.path == "/bad"; }));
    // Another one that comes after it shows that it was passed over.
    m_server->serve(
        "/later", {description("uuid:later", "<friendlyName>Later</friendlyName>", service()), "text/xml"});
    announce("/later", "uuid:later");
    QTRY_VERIFY(m_names.contains("uuid:later"));
    QCOMPARE(m_names.value("uuid:good"), QStringLiteral("Fault"));
    QVERIFY(!m_names.contains("uuid:bad"));
}

void UpnpFaultTest::namelessDeviceHasItsModelsName()
{
    QVERIFY(appears("uuid:good", "<modelName>Model 7</modelName>"));
    QCOMPARE(m_names.value("uuid:good"), QStringLiteral("Model 7"));
}

void UpnpFaultTest::namelessDeviceWithoutModelHasItsUdn()
{
    QVERIFY(appears("uuid:good", {}));
    QCOMPARE(m_names.value("uuid:good"), QStringLiteral("uuid:good"));
}

void UpnpFaultTest::goesWithItsByebye()
{
    QVERIFY(appears("uuid:good"));
    announce("/good", "uuid:good", "byebye");
    QTRY_VERIFY(m_names.isEmpty());
}

void UpnpFaultTest::badAnswer_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<qint64>("closeAfter");
    QTest::addColumn<bool>("isSound");
    const QByteArray whole
        = answerOf("GetTransportInfo", "<CurrentTransportState>PLAYING</CurrentTransportState>");
    QTest::newRow("malformed") << QByteArray("<s:Envelope><s:Body>") << qint64(-1) << false;
    QTest::newRow("HTML") << QByteArray("<html><body>Welcome</body></html>") << qint64(-1) << false;
    QTest::newRow("cut off") << whole << qint64(40) << false;
    QTest::newRow("sound") << whole << qint64(-1) << true;
}

void UpnpFaultTest::badAnswer()
{
    QFETCH(QByteArray, body);
    QFETCH(qint64, closeAfter);
    QFETCH(bool, isSound);
    QVERIFY(appears("uuid:good"));
    HttpTestServer::Resource resource{body, "text/xml"};
    resource.closeAfter = closeAfter;
    serveAction(resource);
    const Upnp::Answer answer = ask("GetTransportInfo", {"CurrentTransportState"});
    QCOMPARE(answer.outcome == Upnp::Answer::Done, isSound);
    QCOMPARE(answer.message.isEmpty(), isSound);
    QCOMPARE(answer.values.value("CurrentTransportState").isEmpty(), !isSound);
}

void UpnpFaultTest::fallSilent()
{
    HttpTestServer::Resource silent;
    silent.silent = true;
    serveAction(silent);
}

void UpnpFaultTest::hangingActionEndsInTime()
{
    QVERIFY(appears("uuid:good"));
    fallSilent();
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(
        int(ask("GetTransportInfo", {"CurrentTransportState"}, 500).outcome), int(Upnp::Answer::TimedOut));
    QVERIFY2(timer.elapsed() >= 490 && timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
}

/// Nothing else is under way, which a command would wait for: no more than its own time is left to it.
void UpnpFaultTest::actionsHaveThreeSeconds()
{
    QVERIFY(appears("uuid:good"));
    fallSilent();
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(int(ask("Pause", {}).outcome), int(Upnp::Answer::TimedOut));
    QVERIFY2(timer.elapsed() >= 2990 && timer.elapsed() < 4500, qPrintable(QString::number(timer.elapsed())));
}

void UpnpFaultTest::badMetadata_data()
{
    QTest::addColumn<QByteArray>("didl");
    const QByteArray start = "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
                             "xmlns:dc=\"http://purl.org/dc/elements/1.1/\"><item id=\"1\" parentID=\"0\">";
    const QByteArray end = "</item></DIDL-Lite>";
    QTest::newRow("cut off") << start + "<dc:title>Half";
    QTest::newRow("no XML") << QByteArray("title: none");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("negative duration") << start + "<res duration=\"-1:00:00\">http://a/b</res>" + end;
    QTest::newRow("huge duration") << start + "<res duration=\"99999999999:00:00\">javascript:alert(1)</res>"
            + end;
    QTest::newRow("control characters") << start + "<dc:title>\x01\x1b&#2;</dc:title>" + end;
    QTest::newRow("another encoding") << start + "<dc:title>\xe9\xff</dc:title>" + end;
    QTest::newRow("wrong all over") << start + QByteArray("&x;<y>").repeated(10'000);
    QTest::newRow("10,000 items") << start
            + QByteArray("<dc:title>First</dc:title></item><item id=\"1\" parentID=\"0\">").repeated(10'000)
            + end;
    QTest::newRow("12 MB of title") << start + "<dc:title>" + QByteArray(12'000'000, 'x') + "</dc:title>"
            + end;
}

void UpnpFaultTest::badMetadata()
{
    QFETCH(QByteArray, didl);
    QVERIFY(appears("uuid:good"));
    const QByteArray text = QString::fromUtf8(didl).toHtmlEscaped().toUtf8();
    serveAction({answerOf("GetMediaInfo",
                     "<CurrentURI>x</CurrentURI><CurrentURIMetaData>" + text + "</CurrentURIMetaData>"),
        "text/xml"});
    LogRecorder log;
    QElapsedTimer timer;
    timer.start();
    const Upnp::Answer answer = ask("GetMediaInfo", {"CurrentURI", "CurrentURIMetaData"});
    QVERIFY2(timer.elapsed() < 8000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY2(log.lines().size() < 50, qPrintable(QString::number(log.lines().size())));
    const Upnp::Track track = answer.track.value_or(Upnp::Track());
    QVERIFY(track.title.size() < 10'000);
    QVERIFY2(track.duration <= 1e9, qPrintable(QString::number(track.duration)));
    // It goes on.
    serveAction({answerOf("GetMediaInfo", "<CurrentURI>next</CurrentURI>"), "text/xml"});
    QCOMPARE(ask("GetMediaInfo", {"CurrentURI"}).values.value("CurrentURI"), QStringLiteral("next"));
}
} // namespace

KELVO_TEST(UpnpFaultTest)
#include "UpnpFaultTest.moc"
