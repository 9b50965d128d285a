// SPDX-License-Identifier: MIT
// The addresses in a device's description: relative ones, and those that must not be opened.
#include "TestGroup.h"
#include "UpnpCase.h"

namespace {
/// Receives the answers of sources.
class AddressListener : public QObject
{
    Q_OBJECT
public:
    QHash<QString, QVariant> values;

public Q_SLOTS:
    void sourcePropertyCallback(QString &key, QVariant &value) { values.insert(key, value); }
};

class UpnpAddressTest : public UpnpCase
{
    Q_OBJECT
private Q_SLOTS:
    void actionsGoToRelativeAddresses_data();
    void actionsGoToRelativeAddresses();
    void impossibleControlAddressIsSurvived_data();
    void impossibleControlAddressIsSurvived();
    void playsWithoutEvents_data();
    void playsWithoutEvents();
    void addressesOfASource_data();
    void addressesOfASource();
};

void UpnpAddressTest::actionsGoToRelativeAddresses_data()
{
    QTest::addColumn<QByteArray>("base"); // path
    QTest::addColumn<QByteArray>("control");
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("beside the description")
        << QByteArray() << QByteArray("control") << QByteArray("/dir/control");
    QTest::newRow("above the description") << QByteArray() << QByteArray("../up") << QByteArray("/up");
    QTest::newRow("from the root") << QByteArray() << QByteArray("/root") << QByteArray("/root");
    QTest::newRow("below the base") << QByteArray("/base/") << QByteArray("control")
                                    << QByteArray("/base/control");
    QTest::newRow("from the root of the base")
        << QByteArray("/base/") << QByteArray("/root") << QByteArray("/root");
    QTest::newRow("with a question") << QByteArray() << QByteArray("control?service=1&amp;x=2")
                                     << QByteArray("/dir/control?service=1&x=2");
}

void UpnpAddressTest::actionsGoToRelativeAddresses()
{
    QFETCH(QByteArray, base);
    QFETCH(QByteArray, control);
    QFETCH(QByteArray, path);
    FakeUpnpDevice device;
    device.moveTo("/dir/description.xml");
    device.controlUrl = control;
    if (!base.isEmpty())
        device.urlBase = device.server().url(QString::fromLatin1(base)).toEncoded();
    QVERIFY(appears(device));
    QTRY_VERIFY(device.requests(path) > 0);
}

void UpnpAddressTest::impossibleControlAddressIsSurvived_data()
{
    QTest::addColumn<QByteArray>("base");
    QTest::addColumn<QByteArray>("control");
    QTest::newRow("script") << QByteArray() << QByteArray("javascript:alert(1)");
    QTest::newRow("content") << QByteArray() << QByteArray("data:text/xml,x");
    QTest::newRow("file") << QByteArray() << QByteArray("file:///etc/passwd");
    QTest::newRow("empty") << QByteArray() << QByteArray();
    QTest::newRow("no address") << QByteArray() << QByteArray("http://[");
    QTest::newRow("base that is none") << QByteArray("nowhere") << QByteArray("control");
    QTest::newRow("base that is a script") << QByteArray("javascript:alert(1)") << QByteArray("control");
}

void UpnpAddressTest::impossibleControlAddressIsSurvived()
{
    QFETCH(QByteArray, base);
    QFETCH(QByteArray, control);
    FakeUpnpDevice device("uuid:nowhere");
    device.urlBase = base;
    device.controlUrl = control;
    device.keepAnnouncing();
    QTRY_VERIFY(device.requests("/description.xml") > 0);
    FakeUpnpDevice sound;
    QVERIFY(listen(sound));
    QVERIFY(playing(sound));
    if (KelvoRenderer *renderer = find("uuid:nowhere")) {
        // A command gets no answer that could be understood. What was left to say of it may add an error.
        RendererProbe heard(*renderer);
        renderer->playUri(QUrl("http://media/song"));
        QTRY_VERIFY(!heard.errors.isEmpty());
        QTRY_COMPARE(heard.state(), KelvoRenderer::Stopped);
    }
}

void UpnpAddressTest::playsWithoutEvents_data()
{
    QTest::addColumn<QByteArray>("address");
    for (const char *address : {"javascript:alert(1)", "data:text/xml,x", "http://[", "file:///etc/passwd"})
        QTest::newRow(address) << QByteArray(address);
}

// What it does is learnt by asking.
void UpnpAddressTest::playsWithoutEvents()
{
    QFETCH(QByteArray, address);
    FakeUpnpDevice device;
    device.otherUrls = address;
    QVERIFY(appears(device));
    RendererProbe heard(*find(device.udn));
    device.sendState("PLAYING"); // nobody subscribed
    find(device.udn)->playUri(QUrl("http://media/song"));
    QTRY_COMPARE(heard.state(), KelvoRenderer::Playing);
    QCOMPARE(device.subscriptions(), 0);
    QCOMPARE(heard.errors.size(), 0);
}

void UpnpAddressTest::addressesOfASource_data()
{
    QTest::addColumn<bool>("hasBase");
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<QByteArray>("path"); // of the address that is told; empty: none
    QTest::newRow("beside the description") << false << QByteArray("pic.png") << QByteArray("/dir/pic.png");
    QTest::newRow("from the root") << false << QByteArray("/pic.png") << QByteArray("/pic.png");
    QTest::newRow("below the base") << true << QByteArray("pic.png") << QByteArray("/base/pic.png");
    QTest::newRow("script") << false << QByteArray("javascript:alert(1)") << QByteArray();
    QTest::newRow("content") << false << QByteArray("data:image/png;base64,AAAA") << QByteArray();
    QTest::newRow("file") << true << QByteArray("file:///etc/passwd") << QByteArray();
}

void UpnpAddressTest::addressesOfASource()
{
    QFETCH(bool, hasBase);
    QFETCH(QByteArray, address);
    QFETCH(QByteArray, path);
    FakeUpnpDevice device;
    device.type = "MediaServer";
    device.moveTo("/dir/description.xml");
    if (hasBase)
        device.urlBase = device.server().url("/base/").toEncoded();
    device.elements = "<presentationURL>" + address
        + "</presentationURL><iconList><icon><mimetype>image/png"
          "</mimetype><width>48</width><height>48</height><depth>24</depth><url>"
        + address + "</url></icon></iconList>";
    QVERIFY(appears(device));
    AddressListener listener;
    const char *slot = "sourcePropertyCallback(QString&,QVariant&)";
    for (const char *key : {"iconURL", "presentationURL"}) {
        const QString name = QString::fromLatin1(key);
        QCOMPARE(findSource(device.udn)->kelvoProperty(name, &listener, slot), !path.isEmpty());
        if (path.isEmpty())
            continue;
        QTRY_VERIFY(listener.values.contains(name));
        QCOMPARE(listener.values.value(name).toString(),
            device.server().url(QString::fromLatin1(path)).toString());
    }
}
} // namespace

KELVO_TEST(UpnpAddressTest)
#include "UpnpAddressTest.moc"
