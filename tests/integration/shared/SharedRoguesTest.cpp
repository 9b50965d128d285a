// SPDX-License-Identifier: MIT
#include "KelvoShared.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "RoguePeer.h"
#include "SharedLists.h"
#include "TestGroup.h"
#include "TestRegistry.h"

#include <QSignalSpy>
#include <QTest>

namespace {
QStringList names()
{
    QStringList list;
    for (KelvoPlaylist *playlist : registry()->allPlaylists())
        list.append(playlist->name());
    return list;
}
} // namespace

// Other processes that offer playlists in wrong ways. Each time this process goes on, says what is wrong and
// still finds a well-behaved one.
class SharedRoguesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        qputenv("KELVO_PLUGINS", "");
        QVERIFY(KelvoShared::instance()->initTracking(registry()));
    }

    void cleanup()
    {
        QTRY_VERIFY(registry()->allPlaylists().isEmpty());
        RoguePeer honest("honest");
        honest.items = RoguePeer::numbered(3);
        honest.appear();
        honest.offer(0, "honest", "Honest", 3);
        QTRY_VERIFY(find("honest"));
        QTRY_COMPARE(find("honest")->count(), 3);
        honest.vanish();
        QTRY_VERIFY(registry()->allPlaylists().isEmpty());
    }

    void refusesNonsenseDescriptions_data()
    {
        QTest::addColumn<QVariantMap>("properties");
        QTest::addColumn<QString>("warning");
        const QVariantMap right = RoguePeer::description("id", "Name", 1).value(RoguePeer::Interface);
        const auto with = [&right](const char *key, const QVariant &value) {
            QVariantMap properties = right;
            properties.insert(key, value);
            return properties;
        };
        const QString types = "lacks properties or has them of other types";
        QTest::newRow("none") << QVariantMap() << types;
        QTest::newRow("id is a number") << with("Id", 7U) << types;
        QTest::newRow("id is a list") << with("Id", QStringList{"id"}) << types;
        QTest::newRow("id is a map") << with("Id", QVariantMap{{"id", 1}}) << types;
        QTest::newRow("name is bytes") << with("Name", QByteArray("Name")) << types;
        QTest::newRow("item count is negative") << with("ItemCount", -1) << types;
        QTest::newRow("item count is a text") << with("ItemCount", "3") << types;
        QTest::newRow("revision is a double") << with("Revision", 1.5) << types;
        QTest::newRow("empty id") << with("Id", "") << "has no id of use";
        QTest::newRow("endless id") << with("Id", QString(1'000'000, 'i')) << "has no id of use";
    }

    void refusesNonsenseDescriptions()
    {
        QFETCH(QVariantMap, properties);
        QFETCH(QString, warning);
        RoguePeer rogue;
        rogue.objects.insert(QDBusObjectPath(RoguePeer::path(0)), {{RoguePeer::Interface, properties}});
        rogue.objects.insert(
            QDBusObjectPath(RoguePeer::path(1)), RoguePeer::description("right", "Right", 0));
        LogRecorder log;
        rogue.appear();
        QTRY_COMPARE(names(), QStringList("Right [rogue]")); // the others of the same process are taken
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY2(log.warnings().first().contains(warning), qPrintable(log.warnings().first()));
        QVERIFY(log.warnings().first().contains("rogue"));
        QVERIFY(log.warnings().first().size() < 1000);
        rogue.announce(
            RoguePeer::path(2), QVariant::fromValue(WireInterfaces{{RoguePeer::Interface, properties}}));
        QTRY_COMPARE(log.warnings().size(), 2);
    }

    void refusesListsOfOtherTypes_data()
    {
        QTest::addColumn<QVariantList>("answer");
        QTest::newRow("nothing") << QVariantList();
        QTest::newRow("a text") << QVariantList{"playlists"};
        QTest::newRow("numbers") << QVariantList{1U, 2U, 3U};
        QTest::newRow("a map of texts") << QVariantList{QVariantMap{{"/org/kelvo/Playlists/p0", "x"}}};
        QTest::newRow("one too many") << QVariantList{QVariant::fromValue(WireObjects()), 1U};
    }

    void refusesListsOfOtherTypes()
    {
        QFETCH(QVariantList, answer);
        RoguePeer rogue;
        rogue.onList = [&](const QDBusMessage &call) {
            rogue.reply(call, answer);
        };
        LogRecorder log;
        rogue.appear();
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("its list is of the type"));
        QVERIFY(registry()->allPlaylists().isEmpty());
    }

    void ignoresWhatIsNoPlaylist()
    {
        RoguePeer rogue;
        rogue.objects.insert(
            QDBusObjectPath("/org/kelvo/Playlists/extra"), {{"org.example.Other", {{"Id", "x"}}}});
        rogue.offer(0, "right", "Right", 0);
        LogRecorder log;
        rogue.appear();
        QTRY_COMPARE(names(), QStringList("Right [rogue]"));
        QCOMPARE(log.warnings(), QStringList());
    }

    void refusesPathsElsewhere()
    {
        RoguePeer rogue;
        rogue.objects.insert(QDBusObjectPath("/somewhere/else"), RoguePeer::description("else", "Else", 1));
        rogue.objects.insert(
            QDBusObjectPath("/org/kelvo/PlaylistsX/p0"), RoguePeer::description("x", "X", 1));
        LogRecorder log;
        rogue.appear();
        QTRY_COMPARE(log.warnings().size(), 2);
        QVERIFY(log.warnings().first().contains("wrong place"));
        QVERIFY(registry()->allPlaylists().isEmpty());
    }

    void refusesSignalsOfOtherTypes()
    {
        RoguePeer rogue;
        rogue.appear();
        rogue.offer(0, "right", "Right", 0);
        QTRY_VERIFY(find("right"));
        LogRecorder log;
        rogue.signal(RoguePeer::path(0), RoguePeer::Interface, "Changed", {"two"});
        rogue.signal(RoguePeer::path(0), RoguePeer::Interface, "Changed", {});
        rogue.signal(
            RoguePeer::Root, RoguePeer::ObjectManager, "InterfacesAdded", {"/org/kelvo/Playlists/p1"});
        rogue.signal(RoguePeer::Root, RoguePeer::ObjectManager, "InterfacesRemoved", {1U});
        rogue.signal(RoguePeer::path(0), "org.freedesktop.DBus.Properties", "PropertiesChanged",
            {RoguePeer::Interface});
        rogue.announce(RoguePeer::path(1), "no interfaces");
        QTRY_COMPARE(log.warnings().size(), 6);
        for (const QString &warning : log.warnings())
            QVERIFY(warning.contains("its signal"));
        QVERIFY(find("right"));
    }

    void cutsTheListOfOneThatOffersTooMany()
    {
        RoguePeer rogue;
        for (int number = 0; number < 2100; ++number) {
            const QString id = QString::number(number);
            rogue.objects.insert(QDBusObjectPath(RoguePeer::path(number)), RoguePeer::description(id, id, 1));
        }
        LogRecorder log;
        rogue.appear();
        QTRY_COMPARE_WITH_TIMEOUT(registry()->allPlaylists().size(), 2000, 30'000);
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("more than 2000"));
        rogue.offer(5000, "one more", "One more", 1);
        QTRY_COMPARE(log.warnings().size(), 2);
        QCOMPARE(registry()->allPlaylists().size(), 2000);
        rogue.vanish();
        QTRY_COMPARE_WITH_TIMEOUT(registry()->allPlaylists().size(), 0, 30'000);
    }

    void showsNamesOnOneShortLine_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("shown");
        QTest::newRow("plain") << "Evening"
                               << "Evening [rogue]";
        QTest::newRow("empty") << ""
                               << "(no name) [rogue]";
        QTest::newRow("blanks") << " \t "
                                << "(no name) [rogue]";
        QTest::newRow("line breaks") << "a\nb\r\nc" + QString(QChar(0x2028)) + "d"
                                     << "a b c d [rogue]";
        QTest::newRow("control characters") << QString("a\x01\x1b[31mb") << "a [31mb [rogue]";
        QTest::newRow("direction override") << "a" + QString(QChar(0x202e)) + "b"
                                            << "a b [rogue]";
        QTest::newRow("place markers") << "%1 %2"
                                       << "%1 %2 [rogue]";
        QTest::newRow("10,000 characters")
            << QString(10'000, 'n') << QString(99, 'n') + QChar(0x2026) + " [rogue]";
        QTest::newRow("beyond the first plane")
            << QString::fromUtf8("\xf0\x9f\x8e\xb5") << QString::fromUtf8("\xf0\x9f\x8e\xb5 [rogue]");
    }

    void showsNamesOnOneShortLine()
    {
        QFETCH(QString, name);
        QFETCH(QString, shown);
        RoguePeer rogue;
        rogue.appear();
        rogue.offer(0, "named", name, 0);
        QTRY_COMPARE(names(), QStringList(shown));
    }

    void followsARename()
    {
        RoguePeer rogue;
        rogue.appear();
        rogue.offer(0, "named", "Before", 0);
        QTRY_COMPARE(names(), QStringList("Before [rogue]"));
        const auto rename = [&rogue](const QVariant &name) {
            rogue.signal(RoguePeer::path(0), "org.freedesktop.DBus.Properties", "PropertiesChanged",
                {RoguePeer::Interface, QVariantMap{{"Name", name}}, QStringList()});
        };
        rename(7U);
        rename("After");
        QTRY_COMPARE(names(), QStringList("After [rogue]"));
        QSignalSpy removed(registry(), &KelvoRegistry::playlistRemoved);
        rogue.withdraw(0);
        QTRY_COMPARE(removed.size(), 1);
        QCOMPARE(removed.first(), QVariantList({"named", "After [rogue]"}));
    }

    void takesOneOfTwoWithTheSameId()
    {
        RoguePeer rogue;
        rogue.appear();
        LogRecorder log;
        rogue.offer(0, "same", "First", 0);
        rogue.offer(1, "same", "Second", 0);
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("in use"));
        QVERIFY(log.warnings().first().contains("same"));
        QCOMPARE(names(), QStringList("First [rogue]"));
    }

    void doesNotTakeAnIdOfThisProcess()
    {
        QVERIFY(KelvoShared::instance()->publishPlaylist(SharedLists::make("mine", "Mine", 1)));
        RoguePeer rogue;
        rogue.appear();
        LogRecorder log;
        rogue.offer(0, "mine", "Theirs", 0);
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("in use"));
        QCOMPARE(names(), QStringList("Mine"));
        KelvoShared::instance()->unPublishPlaylist("mine");
        QTRY_COMPARE(names(), QStringList("Theirs [rogue]")); // nothing stands in its way any more
        QCOMPARE(log.warnings().size(), 1);
    }

    void doesNotTakeAnIdOfAThirdProcess()
    {
        RoguePeer first("first");
        first.appear();
        first.offer(0, "same", "First", 0);
        QTRY_VERIFY(find("same"));
        RoguePeer second("second");
        second.objects.insert(
            QDBusObjectPath(RoguePeer::path(0)), RoguePeer::description("same", "Second", 0));
        LogRecorder log;
        second.appear();
        QTRY_COMPARE(log.warnings().size(), 1);
        QCOMPARE(names(), QStringList("First [first]"));
        first.vanish();
        QTRY_COMPARE(names(), QStringList("Second [second]"));
    }

    void followsAPlaylistThatChangesItsPath()
    {
        RoguePeer rogue;
        rogue.items = RoguePeer::numbered(4);
        rogue.appear();
        rogue.offer(0, "moving", "Moving", 4);
        QTRY_VERIFY(find("moving"));
        QSignalSpy removed(registry(), &KelvoRegistry::playlistRemoved);
        rogue.withdraw(0);
        rogue.offer(1, "moving", "Moved", 4);
        QTRY_COMPARE(removed.size(), 1);
        QTRY_COMPARE(names(), QStringList("Moved [rogue]"));
        QTRY_COMPARE(find("moving")->count(), 4);
        // The other way round: the new path is announced while the old one still stands.
        rogue.offer(2, "moving", "Moved again", 4);
        rogue.withdraw(1);
        QTRY_COMPARE(names(), QStringList("Moved again [rogue]"));
    }

    void standsOnePathOfferedTwice()
    {
        RoguePeer rogue;
        rogue.appear();
        LogRecorder log;
        rogue.offer(0, "twice", "Twice", 0);
        rogue.offer(0, "twice", "Twice", 0);
        rogue.offer(0, "other id", "Other", 0);
        rogue.withdraw(7);
        rogue.withdraw(0);
        rogue.withdraw(0);
        rogue.offer(1, "last", "Last", 0);
        QTRY_COMPARE(names(), QStringList("Last [rogue]"));
        QCOMPARE(log.warnings(), QStringList());
    }

    void believesOnlyTheBusAboutNames()
    {
        RoguePeer honest("honest");
        honest.appear();
        honest.offer(0, "kept", "Kept", 0);
        QTRY_VERIFY(find("kept"));
        RoguePeer liar("liar");
        liar.appear();
        liar.signal("/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged",
            {"org.kelvo.Playlists.honest", honest.owner(), ""});
        liar.signal(RoguePeer::Root, RoguePeer::ObjectManager, "InterfacesRemoved",
            {QVariant::fromValue(QDBusObjectPath(RoguePeer::path(0))), QStringList(RoguePeer::Interface)});
        liar.offer(1, "after", "After", 0);
        QTRY_VERIFY(find("after"));
        QVERIFY(find("kept"));
    }

    void ignoresAProcessWithoutAName()
    {
        RoguePeer nameless;
        nameless.offer(0, "early", "Early", 0);
        RoguePeer other("other");
        other.appear();
        other.offer(0, "other", "Other", 0);
        QTRY_VERIFY(find("other"));
        QVERIFY(!find("early"));
        nameless.appear();
        QTRY_VERIFY(find("early"));
    }

    void endsTheComplaintsAboutOneProcess()
    {
        RoguePeer rogue;
        rogue.appear();
        LogRecorder log;
        for (int number = 0; number < 1000; ++number)
            rogue.signal(RoguePeer::path(0), RoguePeer::Interface, "Changed", {"text\nwith breaks"});
        rogue.offer(0, "last", "Last", 0);
        QTRY_VERIFY(find("last"));
        QCOMPARE(log.warnings().size(), 21);
        QVERIFY(log.warnings().last().contains("further faults are not reported"));
    }

    void standsComingAndGoing()
    {
        for (int round = 0; round < 50; ++round) {
            RoguePeer rogue(QStringLiteral("round%1").arg(round));
            rogue.objects.insert(QDBusObjectPath(RoguePeer::path(0)), RoguePeer::description("r", "R", 1));
            rogue.appear();
            if (round % 3 == 0)
                QTRY_VERIFY(find("r"));
            if (round % 3 == 1)
                QTRY_VERIFY(rogue.lists > 0); // goes while its answer is on its way
        }
        QTRY_VERIFY(registry()->allPlaylists().isEmpty());
    }
};

KELVO_TEST(SharedRoguesTest)
#include "SharedRoguesTest.moc"
