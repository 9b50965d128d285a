// SPDX-License-Identifier: MIT
#include "KelvoRegistry.h"
#include "KelvoShared.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "SharedLists.h"
#include "TestGroup.h"
#include "WireTypes.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QFile>
#include <QSignalSpy>
#include <QTest>
#include <QXmlStreamReader>

namespace {
const QString interface = QStringLiteral("org.kelvo.Playlist1");
const QString root = QStringLiteral("/org/kelvo/Playlists");
const QString objectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");

QDBusConnection observer()
{
    return QDBusConnection(QStringLiteral("observer"));
}

QString plainName()
{
    return QStringLiteral("org.kelvo.Playlists.pid%1").arg(QCoreApplication::applicationPid());
}

QString serviceName()
{
    return plainName() + "_2"; // the test holds the plain one
}

QDBusPendingCall begin(
    const QString &path, const QString &target, const QString &member, const QVariantList &arguments)
{
    auto call = QDBusMessage::createMethodCall(serviceName(), path, target, member);
    call.setArguments(arguments);
    return observer().asyncCall(call, 30'000);
}

/// Asks the service of this process over the bus; its event loop goes on meanwhile.
QDBusMessage ask(
    const QString &path, const QString &target, const QString &member, const QVariantList &arguments = {})
{
    const QDBusPendingCall call = begin(path, target, member, arguments);
    if (!QTest::qWaitFor([&call] { return call.isFinished(); }, 30'000))
        return {};
    return call.reply();
}

WireObjects managedObjects()
{
    return qdbus_cast<WireObjects>(ask(root, objectManager, "GetManagedObjects").arguments().value(0));
}

QString pathOf(const QString &id)
{
    const WireObjects objects = managedObjects();
    for (auto object = objects.begin(); object != objects.end(); ++object) {
        if (object.value().value(interface).value("Id") == id)
            return object.key().path();
    }
    return {};
}

struct Page
{
    WireItems items;
    uint revision = 0;
};

Page pageOf(const QDBusMessage &reply)
{
    if (reply.signature() != "a(ssssx)u")
        return {};
    return {qdbus_cast<WireItems>(reply.arguments().at(0)), reply.arguments().at(1).toUInt()};
}

Page page(const QString &path, uint start, uint count)
{
    return pageOf(ask(path, interface, "GetItems", {start, count}));
}

void publish(const QString &id, int count)
{
    QVERIFY(KelvoShared::instance()->publishPlaylist(SharedLists::make(id, "Name of " + id, count)));
}

/// "method GetItems", "method GetItems in start u", "property Id s read" ... of one interface.
QStringList declarations(const QByteArray &xml)
{
    QStringList list;
    QString member;
    bool inside = false;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        reader.readNext();
        const auto name = reader.name();
        const auto value = [&reader](const char *key) {
            return reader.attributes().value(key).toString();
        };
        if (name == u"interface")
            inside = reader.isStartElement() && value("name") == interface;
        if (!inside || !reader.isStartElement())
            continue;
        if (name == u"method" || name == u"signal")
            list.append(member = name.toString() + ' ' + value("name"));
        else if (name == u"property")
            list.append("property " + value("name") + ' ' + value("type") + ' ' + value("access"));
        else if (name == u"arg")
            list.append(member + ' ' + value("direction") + ' ' + value("name") + ' ' + value("type"));
    }
    list.sort();
    return list;
}

/// Collects signals as they arrive over the bus.
class SignalCollector : public QObject
{
    Q_OBJECT
public:
    SignalCollector(const QString &path, const QString &target, const QString &member)
    {
        observer().connect(QString(), path, target, member, this, SLOT(collect(QDBusMessage)));
        // The bus answers in order: from here on it passes the signal on, whichever connection it hears from first.
        const QString bus = QStringLiteral("org.freedesktop.DBus");
        observer().call(QDBusMessage::createMethodCall(bus, "/org/freedesktop/DBus", bus, "GetId"));
    }
    QList<QDBusMessage> received;

private Q_SLOTS:
    void collect(const QDBusMessage &message) { received.append(message); }
};
} // namespace

// What other programs see of this process on the bus, asked with a second connection.
class SharedPublishingTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        qputenv("KELVO_PLUGINS", "");
        registerWireTypes();
        QVERIFY(QDBusConnection::connectToBus(QDBusConnection::SessionBus, "observer").isConnected());
        QVERIFY(observer().registerService(plainName()));
        QElapsedTimer timer;
        timer.start();
        QVERIFY(KelvoShared::instance()->initTracking(KelvoRegistry::instance()));
        publish("at-once", 1); // the connection is not there yet
        QVERIFY(KelvoShared::instance()->initTracking(KelvoRegistry::instance()));
    }

    void cleanup()
    {
        const auto playlists = KelvoRegistry::instance()->allPlaylists();
        for (KelvoPlaylist *playlist : playlists)
            KelvoShared::instance()->unPublishPlaylist(playlist->uuid());
    }

    void takesASuffixWhenItsNameIsTaken()
    {
        QTRY_COMPARE(ask(root, "org.freedesktop.DBus.Peer", "Ping").type(), QDBusMessage::ReplyMessage);
        QVERIFY(!pathOf("at-once").isEmpty());
    }

    void listsItsPlaylists()
    {
        QVERIFY(managedObjects().isEmpty());
        publish("one", 3);
        publish("two", 0);
        const WireObjects objects = managedObjects();
        QCOMPARE(objects.size(), 2);
        QCOMPARE(objects.first().keys(), QStringList(interface));
        const QVariantMap expected{
            {"Id", "one"}, {"Name", "Name of one"}, {"ItemCount", 3U}, {"Revision", 1U}, {"Writable", false}};
        QCOMPARE(objects.value(QDBusObjectPath(pathOf("one"))).value(interface), expected);
        QVERIFY(pathOf("two").startsWith(root + "/p"));
    }

    void answersTheStandardPropertyCalls()
    {
        publish("properties", 7);
        const QString path = pathOf("properties");
        const QString properties = "org.freedesktop.DBus.Properties";
        const auto all
            = qdbus_cast<QVariantMap>(ask(path, properties, "GetAll", {interface}).arguments().value(0));
        QCOMPARE(all.value("ItemCount"), 7U);
        QCOMPARE(all.size(), 5);
        QCOMPARE(ask(path, properties, "Set", {interface, "Name", QVariant::fromValue(QDBusVariant("Mine"))})
                     .type(),
            QDBusMessage::ErrorMessage);
        QCOMPARE(KelvoRegistry::instance()->findPlaylistByUuid("properties")->name(), "Name of properties");
    }

    void announcesWhatComesAndGoes()
    {
        SignalCollector added(root, objectManager, "InterfacesAdded");
        SignalCollector removed(root, objectManager, "InterfacesRemoved");
        publish("coming", 2);
        QTRY_COMPARE(added.received.size(), 1);
        const QDBusMessage coming = added.received.first();
        QCOMPARE(coming.signature(), "oa{sa{sv}}");
        const QString path = coming.arguments().at(0).value<QDBusObjectPath>().path();
        const auto interfaces = qdbus_cast<WireInterfaces>(coming.arguments().at(1));
        QCOMPARE(interfaces.value(interface).value("Id"), "coming");
        QCOMPARE(interfaces.value(interface).value("ItemCount"), 2U);

        KelvoShared::instance()->unPublishPlaylist("coming");
        QTRY_COMPARE(removed.received.size(), 1);
        QCOMPARE(removed.received.first().arguments().at(0).value<QDBusObjectPath>().path(), path);
        QCOMPARE(removed.received.first().arguments().at(1).toStringList(), QStringList(interface));
        QCOMPARE(ask(path, interface, "GetItems", {0U, 1U}).errorName(),
            "org.freedesktop.DBus.Error.UnknownObject");
        publish("coming", 2);
        QVERIFY(pathOf("coming") != path);
    }

    void takesBackAPlaylistThatIsDeleted()
    {
        SignalCollector removed(root, objectManager, "InterfacesRemoved");
        publish("deleted", 2);
        QVERIFY(!pathOf("deleted").isEmpty());
        delete KelvoRegistry::instance()->findPlaylistByUuid("deleted");
        QTRY_COMPARE(removed.received.size(), 1);
        QVERIFY(managedObjects().isEmpty());
        LogRecorder log;
        KelvoShared::instance()->unPublishPlaylist("deleted");
        QCOMPARE(log.warnings().size(), 1);
    }

    void givesItems()
    {
        publish("items", 3);
        const Page got = page(pathOf("items"), 1, 1);
        QCOMPARE(got.items.size(), 1);
        const KelvoMediaInfo info = KelvoRegistry::instance()->findPlaylistByUuid("items")->mediaInfoAt(1);
        const WireItem expected{info.uuid(), "Song 1", "file:///music/song%201.mp3", "audio/mpeg", 101};
        QCOMPARE(got.items.first(), expected);
        QCOMPARE(got.revision, 1U);
    }

    void clampsPages_data()
    {
        QTest::addColumn<uint>("start");
        QTest::addColumn<uint>("count");
        QTest::addColumn<int>("expected");
        constexpr uint all = 4'294'967'295;
        QTest::newRow("what a view needs") << 0U << 100U << 100;
        QTest::newRow("most") << 0U << 1000U << 1000;
        QTest::newRow("one more than most") << 0U << 1001U << 1000;
        QTest::newRow("600,000") << 0U << 600'000U << 1000;
        QTest::newRow("everything there can be") << 0U << all << 1000;
        QTest::newRow("the end") << 2400U << 1000U << 100;
        QTest::newRow("behind the end") << 2500U << 10U << 0;
        QTest::newRow("far behind the end") << all << all << 0;
        QTest::newRow("none") << 0U << 0U << 0;
    }

    void clampsPages()
    {
        publish("clamped", 2500);
        QFETCH(uint, start);
        QFETCH(uint, count);
        const Page got = page(pathOf("clamped"), start, count);
        QTEST(int(got.items.size()), "expected");
        QCOMPARE(got.revision, 1U);
        if (!got.items.isEmpty())
            QCOMPARE(got.items.first().title, "Song " + QString::number(start));
    }

    void coalescesChanges()
    {
        publish("edited", 500);
        const QString path = pathOf("edited");
        SignalCollector changed(path, interface, "Changed");
        SignalCollector properties(path, "org.freedesktop.DBus.Properties", "PropertiesChanged");
        KelvoPlaylist *playlist = KelvoRegistry::instance()->findPlaylistByUuid("edited");
        for (int edit = 0; edit < 400; ++edit)
            playlist->removeItem(0);
        QCOMPARE(page(path, 0, 1).revision, 401U); // pages do not wait for the signal
        QTRY_COMPARE(changed.received.size(), 1);
        QCOMPARE(changed.received.first().arguments(), QVariantList{401U});
        QTRY_COMPARE(properties.received.size(), 1);
        const auto values = qdbus_cast<QVariantMap>(properties.received.first().arguments().at(1));
        QCOMPARE(values.value("ItemCount"), 100U);
        QCOMPARE(values.value("Revision"), 401U);
        playlist->removeItem(0);
        QTRY_COMPARE(changed.received.size(), 2);
        QCOMPARE(changed.received.last().arguments(), QVariantList{402U});
    }

    void isWhatTheDescriptionSays()
    {
        publish("described", 1);
        QFile file(INTERFACE_DESCRIPTION);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QStringList expected = declarations(file.readAll());
        QCOMPARE(expected.size(), 16);
        const auto reply = ask(pathOf("described"), "org.freedesktop.DBus.Introspectable", "Introspect");
        QCOMPARE(declarations(reply.arguments().value(0).toString().toUtf8()), expected);
    }

    void sendsOddTexts_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("half a surrogate pair") << QString("a") + QChar(0xd800) + "b";
        QTest::newRow("zero character") << QString("a") + QChar(0) + "b";
        QTest::newRow("noncharacter") << QString("a") + QChar(0xfffe) + QChar(0xffff) + "b";
        QTest::newRow("control characters") << QString("a\x01\x1f\r\n\tb");
        QTest::newRow("ten million characters") << QString(10'000'000, 'a');
        QTest::newRow("beyond the first plane") << QString::fromUtf8("a\xf0\x9f\x8e\xb5");
    }

    void sendsOddTexts()
    {
        QFETCH(QString, text);
        publish("odd", 0);
        for (int row = 0; row < 3; ++row) {
            SharedLists::modelOf(KelvoRegistry::instance()->findPlaylistByUuid("odd"))
                ->appendRow({new QStandardItem(text), new QStandardItem(text),
                    new QStandardItem("http://h/" + text), new QStandardItem("1"), new QStandardItem(text)});
        }
        QVERIFY(KelvoShared::instance()->publishPlaylist(SharedLists::make("odd-name", text, 1)));
        const Page got = page(pathOf("odd"), 0, 10);
        QCOMPARE(got.items.size(), 3);
        QVERIFY(got.items.last().title.startsWith('a'));
        QVERIFY(got.items.last().title.size() <= 4096);
        QVERIFY(!pathOf("odd-name").isEmpty());
    }

    void splitsPagesOfLongTexts()
    {
        publish("wide", 0);
        QStandardItemModel *model
            = SharedLists::modelOf(KelvoRegistry::instance()->findPlaylistByUuid("wide"));
        for (int row = 0; row < 20; ++row) {
            model->appendRow({new QStandardItem("id"), new QStandardItem("Wide"),
                new QStandardItem("http://h/" + QString(100'000, 'a')), new QStandardItem("1")});
        }
        const Page got = page(pathOf("wide"), 0, 20);
        QVERIFY(!got.items.isEmpty());
        QVERIFY(got.items.size() < 10);
        QVERIFY(got.items.first().url.size() > 100'000);
    }

    void standsAFloodOfRequests()
    {
        publish("flooded", 2000);
        const QString path = pathOf("flooded");
        QList<QDBusPendingCall> calls;
        for (int number = 0; number < 3000; ++number)
            calls.append(begin(path, interface, "GetItems", {0U, 1000U}));
        int served = 0;
        int refused = 0;
        for (const QDBusPendingCall &call : calls) {
            QTRY_VERIFY_WITH_TIMEOUT(call.isFinished(), 60'000);
            served += pageOf(call.reply()).items.size() == 1000;
            refused += call.error().type() == QDBusError::LimitsExceeded;
        }
        QCOMPARE(served + refused, 3000);
        QVERIFY(served >= 64);
        QVERIFY(refused > 0);
        QCOMPARE(page(path, 0, 10).items.size(), 10);
    }

    void answersWhenThePlaylistGoesBeforeItsTurn()
    {
        publish("going", 10);
        const QString path = pathOf("going");
        QList<QDBusPendingCall> calls;
        for (int number = 0; number < 20; ++number)
            calls.append(begin(path, interface, "GetItems", {0U, 10U}));
        QTRY_VERIFY(calls.first().isFinished());
        KelvoShared::instance()->unPublishPlaylist("going");
        for (const QDBusPendingCall &call : calls) {
            QTRY_VERIFY(call.isFinished());
            QVERIFY(!call.isError() || call.error().type() == QDBusError::UnknownObject);
        }
    }

    void refusesWrongCalls()
    {
        publish("strict", 1);
        const QString path = pathOf("strict");
        QCOMPARE(ask(path, interface, "GetItems", {"0", "1"}).type(), QDBusMessage::ErrorMessage);
        QCOMPARE(ask(path, interface, "GetItems", {0U}).type(), QDBusMessage::ErrorMessage);
        QCOMPARE(ask(path, interface, "RemoveItems", {0U, 1U}).type(), QDBusMessage::ErrorMessage);
        QCOMPARE(ask(root + "/p99999", interface, "GetItems", {0U, 1U}).type(), QDBusMessage::ErrorMessage);
        QCOMPARE(page(path, 0, 10).items.size(), 1);
    }
};

KELVO_TEST(SharedPublishingTest)
#include "SharedPublishingTest.moc"
