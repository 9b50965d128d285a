// SPDX-License-Identifier: MIT
// Who a device is: slow ones, two that say that they are the same, and those that change their names.
#include "TestGroup.h"
#include "UpnpCase.h"

#include <QElapsedTimer>

namespace {
class UpnpIdentityTest : public UpnpCase
{
    Q_OBJECT
private Q_SLOTS:
    void slowDescriptionHoldsNobodyUp();
    void twoOfOneUdnAreOneRenderer();
    void byebyeOfTheSecondDoesNotHideTheFirst();
    void firstGoesWhenItIsGone();
    void secondComesWhenTheFirstIsGone();
    void movedDeviceStays();
    void followsTheName_data();
    void followsTheName();
    void followsTheNameOfASource();
    void followsNamesOnceASecond();
    void renderersOfOneNameAreToldApart();
    void otherPlacesEachTimeAreNoFlood();
    void descriptionThatIsNoneChangesNothing_data();
    void descriptionThatIsNoneChangesNothing();
};

void UpnpIdentityTest::slowDescriptionHoldsNobodyUp()
{
    FakeUpnpDevice slow("uuid:slow");
    slow.isSlow = true;
    slow.keepAnnouncing();
    QTRY_VERIFY(slow.requests("/description.xml") > 0);
    FakeUpnpDevice quick("uuid:quick");
    QVERIFY(appears(quick));
    QCOMPARE(m_comings, QStringList{"+uuid:quick"});
    slow.stopAnnouncing();
    slow.server().release();
    QTRY_COMPARE(m_comings, (QStringList{"+uuid:quick", "+uuid:slow"}));
}

void UpnpIdentityTest::twoOfOneUdnAreOneRenderer()
{
    LogRecorder log;
    FakeUpnpDevice first("uuid:same", "First");
    FakeUpnpDevice second("uuid:same", "Second");
    QVERIFY(appears(first));
    const KelvoRenderer *renderer = find("uuid:same");
    for (int i = 0; i < 5; ++i) {
        const int asked = first.actions("GetTransportInfo");
        second.announce();
        QTRY_VERIFY(first.actions("GetTransportInfo") > asked);
        first.announce();
    }
    QTRY_VERIFY(!log.warnings().isEmpty());
    // Without answers in between.
    for (int i = 0; i < 50; ++i) {
        second.announce();
        first.announce();
    }
    const int asked = first.actions("GetTransportInfo");
    QTRY_VERIFY(first.actions("GetTransportInfo") > asked);
    QCOMPARE(find("uuid:same"), renderer);
    QCOMPARE(renderer->name(), QStringLiteral("First"));
    QCOMPARE(m_comings, QStringList{"+uuid:same"});
    QCOMPARE(log.warnings(),
        QStringList{"Two devices call themselves uuid:same - only the first, First, is shown"});
    QCOMPARE(second.actions("GetTransportInfo"), 0);
}

void UpnpIdentityTest::byebyeOfTheSecondDoesNotHideTheFirst()
{
    LogRecorder log;
    FakeUpnpDevice first("uuid:same", "First");
    FakeUpnpDevice second("uuid:same", "Second");
    QVERIFY(appears(first));
    second.announce();
    QTRY_VERIFY(!log.warnings().isEmpty());
    for (int i = 0; i < 2; ++i) {
        const int asked = first.actions("GetTransportInfo");
        second.announce("byebye");
        QTRY_VERIFY(first.actions("GetTransportInfo") > asked);
        // From now on it is known by its own announcement again.
        first.announce();
    }
    // Whatever comes of it has come once another one is there.
    FakeUpnpDevice later("uuid:later");
    QVERIFY(appears(later));
    QCOMPARE(m_comings, (QStringList{"+uuid:same", "+uuid:later"}));
    QCOMPARE(find("uuid:same")->name(), QStringLiteral("First"));
}

void UpnpIdentityTest::firstGoesWhenItIsGone()
{
    LogRecorder log;
    auto first = std::make_unique<FakeUpnpDevice>("uuid:same", "First");
    FakeUpnpDevice second("uuid:same", "Second");
    QVERIFY(appears(*first));
    second.announce();
    QTRY_VERIFY(!log.warnings().isEmpty());
    first->announce("byebye");
    first.reset();
    QTRY_COMPARE(m_comings, (QStringList{"+uuid:same", "-uuid:same"}));
}

void UpnpIdentityTest::secondComesWhenTheFirstIsGone()
{
    auto first = std::make_unique<FakeUpnpDevice>("uuid:same", "First");
    FakeUpnpDevice second("uuid:same", "Second");
    QVERIFY(appears(*first));
    first.reset();
    second.announce();
    QTRY_COMPARE(find("uuid:same")->name(), QStringLiteral("Second"));
    QCOMPARE(m_comings, QStringList{"+uuid:same"});
}

void UpnpIdentityTest::movedDeviceStays()
{
    FakeUpnpDevice device;
    QVERIFY(appears(device));
    for (int i = 0; i < 10; ++i) {
        const QString path = QStringLiteral("/place-%1.xml").arg(i);
        device.moveTo(path);
        device.announce();
        QTRY_VERIFY(device.requests(path.toLatin1()) > 0);
    }
    FakeUpnpDevice later("uuid:later");
    QVERIFY(appears(later));
    QCOMPARE(m_comings, (QStringList{"+uuid:fake", "+uuid:later"}));
}

void UpnpIdentityTest::followsTheName_data()
{
    QTest::addColumn<QString>("how");
    for (const char *how : {"configuration", "start", "update", "place", "again"})
        QTest::newRow(how) << QString(how);
}

void UpnpIdentityTest::followsTheName()
{
    QFETCH(QString, how);
    FakeUpnpDevice device("uuid:fake", "Before");
    QVERIFY(appears(device));
    QCOMPARE(find("uuid:fake")->name(), QStringLiteral("Before"));
    device.name = "After";
    if (how == "configuration")
        device.configId = "7";
    else if (how == "start" || how == "update")
        device.bootId = "7";
    else if (how == "place")
        device.moveTo("/other.xml");
    else
        device.announce("byebye");
    device.announce(how == "update" ? "update" : "alive");
    QTRY_COMPARE_WITH_TIMEOUT(
        find("uuid:fake") ? find("uuid:fake")->name() : QString(), QStringLiteral("After"), 20'000);
    if (how != "again")
        QCOMPARE(m_comings, QStringList{"+uuid:fake"});
}

void UpnpIdentityTest::followsTheNameOfASource()
{
    FakeUpnpDevice device("uuid:fake", "Before");
    device.type = "MediaServer";
    QVERIFY(appears(device));
    device.name = "After";
    device.configId = "7";
    device.announce();
    QTRY_COMPARE(findSource("uuid:fake")->name(), QStringLiteral("After"));
    QCOMPARE(m_comings, QStringList{"+uuid:fake"});
}

void UpnpIdentityTest::followsNamesOnceASecond()
{
    FakeUpnpDevice device;
    QVERIFY(appears(device));
    int changes = 0;
    connect(find(device.udn), &KelvoRenderer::nameChanged, this, [&] { ++changes; });
    const int before = device.requests("/description.xml");
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i <= 300; ++i) {
        device.name = "Name " + QByteArray::number(i);
        device.configId = device.bootId = QByteArray::number(i + 1);
        device.announce();
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(find(device.udn)->name(), QStringLiteral("Name 300"));
    const int limit = 2 + int(timer.elapsed() / 1000);
    QVERIFY2(changes <= limit, qPrintable(QString::number(changes)));
    const int read = device.requests("/description.xml") - before;
    QVERIFY2(read <= limit, qPrintable(QString::number(read)));
    QCOMPARE(m_comings, QStringList{"+uuid:fake"});
}

void UpnpIdentityTest::renderersOfOneNameAreToldApart()
{
    FakeUpnpDevice first("uuid:first", "Kitchen");
    FakeUpnpDevice second("uuid:second", "Kitchen");
    FakeUpnpDevice third("uuid:third", "Kitchen");
    FakeUpnpDevice other("uuid:other", "Bath");
    for (FakeUpnpDevice *device : {&first, &second, &third, &other})
        QVERIFY(appears(*device));
    const QString port = QString::number(third.server().url("/").port());
    QCOMPARE(find("uuid:first")->name(), QStringLiteral("Kitchen"));
    QCOMPARE(find("uuid:second")->name(), QStringLiteral("Kitchen (127.0.0.1)"));
    QCOMPARE(find("uuid:third")->name(), QStringLiteral("Kitchen (127.0.0.1:%1)").arg(port));
    QCOMPARE(find("uuid:other")->name(), QStringLiteral("Bath"));
    // One that takes the name of another later on is the later one.
    other.name = "Kitchen";
    other.configId = "7";
    other.announce();
    const QString otherPort = QString::number(other.server().url("/").port());
    QTRY_COMPARE(find("uuid:other")->name(), QStringLiteral("Kitchen (127.0.0.1:%1)").arg(otherPort));
    // It is called so in what is told of it too.
    RendererProbe heard(*find("uuid:second"));
    second.server().serve("/control", [](const auto &) {
        return HttpTestServer::Resource{"no", "text/plain", 500};
    });
    find("uuid:second")->playUri(QUrl("http://h/a"));
    QTRY_VERIFY(!heard.errors.isEmpty());
    QVERIFY2(heard.errors.constFirst().message().contains("Kitchen (127.0.0.1)"),
        qPrintable(heard.errors.constFirst().message()));
    // A new version of its description does not change that.
    second.configId = "8";
    second.elements = "<modelName>New</modelName>";
    const int before = second.requests("/description.xml");
    second.announce();
    QTRY_VERIFY(second.requests("/description.xml") > before);
    FakeUpnpDevice later("uuid:later", "Later");
    QVERIFY(appears(later));
    QCOMPARE(find("uuid:second")->name(), QStringLiteral("Kitchen (127.0.0.1)"));
}

void UpnpIdentityTest::otherPlacesEachTimeAreNoFlood()
{
    FakeUpnpDevice device;
    QVERIFY(appears(device));
    int changes = 0;
    connect(find(device.udn), &KelvoRenderer::nameChanged, this, [&] { ++changes; });
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i <= 50; ++i) {
        const QByteArray path = "/place-" + QByteArray::number(i) + ".xml";
        device.name = "Name " + QByteArray::number(i);
        device.moveTo(path);
        device.announce();
        QTRY_VERIFY(device.requests(path) > 0);
    }
    QTRY_COMPARE(find(device.udn)->name(), QStringLiteral("Name 50"));
    QVERIFY2(changes <= 2 + timer.elapsed() / 1000, qPrintable(QString::number(changes)));
    QCOMPARE(m_comings, QStringList{"+uuid:fake"});
}

void UpnpIdentityTest::descriptionThatIsNoneChangesNothing_data()
{
    QTest::addColumn<QByteArray>("udn");
    QTest::addColumn<QByteArray>("elements");
    QTest::newRow("no XML") << QByteArray("uuid:fake") << QByteArray("<<<&");
    QTest::newRow("another device") << QByteArray("uuid:other") << QByteArray();
    QTest::newRow("too long") << QByteArray("uuid:fake") << "<x>" + QByteArray(1'000'000, 'x') + "</x>";
}

void UpnpIdentityTest::descriptionThatIsNoneChangesNothing()
{
    QFETCH(QByteArray, udn);
    QFETCH(QByteArray, elements);
    FakeUpnpDevice device("uuid:fake", "Before");
    QVERIFY(appears(device));
    const int before = device.requests("/description.xml");
    FakeUpnpDevice rogue(udn, "Rogue");
    rogue.elements = elements;
    // In the same place.
    device.server().serve("/description.xml", [&rogue](const auto &) { return rogue.describe(); });
    device.configId = "7";
    device.announce();
    QTRY_VERIFY(device.requests("/description.xml") > before);
    FakeUpnpDevice later("uuid:later");
    QVERIFY(appears(later));
    QCOMPARE(find("uuid:fake")->name(), QStringLiteral("Before"));
    QCOMPARE(m_comings, (QStringList{"+uuid:fake", "+uuid:later"}));
}
} // namespace

KELVO_TEST(UpnpIdentityTest)
#include "UpnpIdentityTest.moc"
