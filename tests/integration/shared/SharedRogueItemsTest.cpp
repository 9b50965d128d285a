// SPDX-License-Identifier: MIT
#include "KelvoPlaylist.h"
#include "LogRecorder.h"
#include "RogueListCase.h"
#include "TestGroup.h"
#include "TestRegistry.h"

#include <QAbstractItemModel>
#include <QAbstractItemModelTester>
#include <QPointer>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

// A playlist of another process whose items come in wrong ways.
class SharedRogueItemsTest : public RogueListCase
{
    Q_OBJECT
private Q_SLOTS:
    void dropsAListOfOtherTypes_data()
    {
        QTest::addColumn<QVariantList>("answer");
        QTest::newRow("nothing") << QVariantList();
        QTest::newRow("a text") << QVariantList{"items"};
        QTest::newRow("texts") << QVariantList{QStringList{"a", "b"}, 1U};
        QTest::newRow("no revision") << QVariantList{QVariant::fromValue(WireItems())};
        QTest::newRow("revision is a text") << QVariantList{QVariant::fromValue(WireItems()), "1"};
        QTest::newRow("maps") << QVariantList{QVariantMap{{"id", "a"}}, 1U};
    }

    void dropsAListOfOtherTypes()
    {
        QFETCH(QVariantList, answer);
        m_rogue->onPage = [&](const QDBusMessage &call) {
            m_rogue->reply(call, answer);
        };
        QPointer<KelvoPlaylist> playlist = offer(3);
        LogRecorder log;
        playlist->itemModel();
        QTRY_VERIFY(!find("list"));
        QTRY_VERIFY(!playlist);
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("of the type"));
    }

    void asksForPagesWhereThereAreNoFiles()
    {
        m_rogue->items = RoguePeer::numbered(1500);
        KelvoPlaylist *playlist = offer(1500);
        playlist->itemModel();
        QTRY_COMPARE(playlist->count(), 1500);
        QCOMPARE(m_rogue->files, 1);
    }

    void saysWhenItemsCannotBeHadAtAll()
    {
        m_rogue->onPage = [this](const QDBusMessage &call) {
            m_rogue->refuse(call, "No such method", QDBusError::UnknownMethod);
        };
        KelvoPlaylist *playlist = offer(3);
        LogRecorder log;
        playlist->itemModel();
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("cannot give its items"));
        QCOMPARE(playlist->count(), 0);
        QCOMPARE(m_rogue->pages, 1);
    }

    void dropsAListWhoseTypesChangeInTheMiddle()
    {
        m_rogue->items = RoguePeer::numbered(1000);
        m_rogue->onPage = [this](const QDBusMessage &call) {
            if (startOf(call) < 500)
                m_rogue->replyPage(call, m_rogue->items.mid(startOf(call), countOf(call)), 1);
            else
                m_rogue->reply(call, {"enough"});
        };
        KelvoPlaylist *playlist = offer(1000);
        LogRecorder log;
        QSignalSpy changes(playlist, &KelvoPlaylist::contentsChanged);
        playlist->itemModel();
        QTRY_VERIFY(!find("list"));
        QCOMPARE(changes.size(), 2);
        QCOMPARE(log.warnings().size(), 1);
    }

    void saysWhenTheCountWasWrong_data()
    {
        QTest::addColumn<uint>("announced");
        QTest::newRow("none") << 0U;
        QTest::newRow("600,000") << 600'000U;
        QTest::newRow("4,294,967,295") << 4'294'967'295U;
    }

    void saysWhenTheCountWasWrong()
    {
        QFETCH(uint, announced);
        KelvoPlaylist *playlist = offer(announced);
        LogRecorder log;
        QCOMPARE(playlist->count(), 0);
        QTRY_COMPARE(playlist->count(), 3);
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY(
            log.warnings().first().contains(QStringLiteral("announced %1 items and gave 3").arg(announced)));
        QVERIFY(find("list"));
    }

    void cutsAListWithoutAnEnd()
    {
        const WireItems page = RoguePeer::numbered(500);
        m_rogue->onPage = [&](const QDBusMessage &call) {
            m_rogue->replyPage(call, page.mid(0, countOf(call)), 1);
        };
        KelvoPlaylist *playlist = offer(4'294'967'295);
        LogRecorder log;
        QCOMPARE(playlist->count(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(log.warnings().size(), 1, 60'000);
        QVERIFY(log.warnings().first().contains("only the first 100000 items"));
        QTRY_COMPARE(playlist->count(), 100'000);
        const int asked = m_rogue->pages;
        m_rogue->signal(
            RoguePeer::Root, RoguePeer::ObjectManager, "InterfacesAdded", {1}); // a round trip later
        QTRY_COMPARE(log.warnings().size(), 2);
        QCOMPARE(m_rogue->pages, asked);
    }

    void cutsAListOfEndlessTexts()
    {
        const WireItem heavy{"id", QString(1'000'000, 't'), "http://h/" + QString(1'000'000, 'u'), "a/b", 1};
        m_rogue->onPage = [&](const QDBusMessage &call) {
            m_rogue->replyPage(call, {heavy, heavy}, 1);
        };
        KelvoPlaylist *playlist = offer(1000);
        LogRecorder log;
        playlist->itemModel();
        QTRY_COMPARE_WITH_TIMEOUT(log.warnings().size(), 1, 60'000);
        QVERIFY(log.warnings().first().contains("too long"));
        QTRY_VERIFY(playlist->count() > 10);
        QVERIFY(playlist->count() < 30);
        QCOMPARE(playlist->mediaInfoAt(0).title().size(), 4096);
    }

    void takesPagesShorterThanAsked()
    {
        m_rogue->items = RoguePeer::numbered(250);
        m_rogue->onPage = [this](const QDBusMessage &call) {
            m_rogue->replyPage(call, m_rogue->items.mid(startOf(call), 1), 1);
        };
        KelvoPlaylist *playlist = offer(250);
        QAbstractItemModelTester tester(
            playlist->itemModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        LogRecorder log;
        // A turn of this loop, which looks for events every 10 ms, for each question and each answer: about 5 s.
        QTRY_COMPARE_WITH_TIMEOUT(playlist->count(), 250, 30'000);
        QCOMPARE(playlist->mediaInfoAt(249).title(), "Song 249");
        QTRY_COMPARE(m_rogue->pages, 251);
        QCOMPARE(log.warnings(), QStringList());
    }

    void dropsAListWithPagesLongerThanAsked()
    {
        m_rogue->items = RoguePeer::numbered(5000);
        m_rogue->onPage = [this](const QDBusMessage &call) {
            m_rogue->replyPage(call, m_rogue->items, 1);
        };
        KelvoPlaylist *playlist = offer(5000);
        LogRecorder log;
        playlist->itemModel();
        QTRY_VERIFY(!find("list"));
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("more items than it was asked for"));
    }

    void dropsAListWhoseRevisionGoesBack_data()
    {
        QTest::addColumn<bool>("inSignal");
        QTest::newRow("in the signal") << true;
        QTest::newRow("in a page") << false;
    }

    void dropsAListWhoseRevisionGoesBack()
    {
        QFETCH(bool, inSignal);
        m_rogue->revision = 9;
        KelvoPlaylist *playlist = offer(3);
        QCOMPARE(playlist->count(), 0);
        QTRY_COMPARE(playlist->count(), 3);
        LogRecorder log;
        if (inSignal) {
            m_rogue->change(0, 8);
        } else {
            m_rogue->onPage = [this](const QDBusMessage &call) {
                m_rogue->replyPage(call, m_rogue->items, 8);
            };
            m_rogue->change(0, 10);
        }
        QTRY_VERIFY(!find("list"));
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("revision went back"));
    }

    void saysWhenItRefuses()
    {
        m_rogue->onPage = [this](const QDBusMessage &call) {
            m_rogue->refuse(call, "No\nitems today");
        };
        KelvoPlaylist *playlist = offer(3);
        LogRecorder log;
        playlist->itemModel();
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("No items today"));
        QVERIFY(find("list"));
        QCOMPARE(m_rogue->pages, 1);
    }

    void vanishesInTheMiddleOfAPage()
    {
        m_rogue->onPage = [](const QDBusMessage &) {
        };
        QPointer<KelvoPlaylist> playlist = offer(3);
        LogRecorder log;
        playlist->itemModel();
        QTRY_COMPARE(m_rogue->pages, 1);
        m_rogue.reset();
        QTRY_VERIFY(!find("list"));
        QTRY_VERIFY(!playlist);
        QCOMPARE(log.warnings(), QStringList());
    }

    void withdrawsInTheMiddleOfAPage()
    {
        QDBusMessage late;
        m_rogue->onPage = [&late](const QDBusMessage &call) {
            late = call;
        };
        offer(3)->itemModel();
        QTRY_COMPARE(m_rogue->pages, 1);
        m_rogue->withdraw(0);
        QTRY_VERIFY(!find("list"));
        m_rogue->replyPage(late, m_rogue->items, 1); // to somebody who no longer listens
        m_rogue->onPage = nullptr;
        QTRY_COMPARE(offer(3)->count(), 3);
    }

    void standsAFloodOfChanged()
    {
        KelvoPlaylist *playlist = offer(3);
        QCOMPARE(playlist->count(), 0);
        QTRY_COMPARE(playlist->count(), 3);
        const int before = m_rogue->pages;
        LogRecorder log;
        QSignalSpy changes(playlist, &KelvoPlaylist::contentsChanged);
        m_rogue->items = RoguePeer::numbered(4);
        for (uint revision = 2; revision <= 20'000; ++revision)
            m_rogue->change(0, revision);
        QTRY_COMPARE_WITH_TIMEOUT(playlist->count(), 4, 60'000);
        m_rogue->items = RoguePeer::numbered(5);
        m_rogue->change(0, 20'001);
        QTRY_COMPARE_WITH_TIMEOUT(playlist->count(), 5, 60'000);
        QCOMPARE(changes.size(), 2);
        QVERIFY2(m_rogue->pages - before < 2000, qPrintable(QString::number(m_rogue->pages - before)));
        QCOMPARE(log.warnings(), QStringList());
    }

    void spendsLittleOnAListInMotion()
    {
        m_rogue->items = RoguePeer::numbered(1000);
        KelvoPlaylist *playlist = offer(1000);
        QCOMPARE(playlist->count(), 0);
        QTRY_COMPARE(playlist->count(), 1000);
        LogRecorder log;
        // Every page is of another revision, so that no pass ever ends.
        int passes = 0;
        m_rogue->onPage = [&](const QDBusMessage &call) {
            passes += startOf(call) == 0;
            m_rogue->replyPage(call, m_rogue->items.mid(startOf(call), countOf(call)), ++m_rogue->revision);
        };
        m_rogue->change(0, 2);
        QElapsedTimer timer;
        timer.start();
        QTRY_VERIFY_WITH_TIMEOUT(passes >= 6, 30'000);
        QVERIFY(timer.elapsed() >= 20 + 40 + 80 + 160 + 320); // the pauses double
        QCOMPARE(playlist->count(), 1000); // the last complete list stays in view
        m_rogue->onPage = nullptr;
        m_rogue->items = RoguePeer::numbered(7);
        ++m_rogue->revision; // A pass may be in the middle.
        QTRY_COMPARE(playlist->count(), 7);
        QCOMPARE(log.warnings(), QStringList());
    }

    void givesEveryItemAnIdOfItsOwn()
    {
        m_rogue->items = {{"", "A", "http://h/a", "", 1}, {"", "B", "http://h/b", "", 1},
            {"x", "C", "http://h/c", "", 1}, {"x", "D", "http://h/d", "", 1},
            {"#1", "E", "http://h/e", "", 1}};
        KelvoPlaylist *playlist = offer(5);
        QCOMPARE(playlist->count(), 0);
        QTRY_COMPARE(playlist->count(), 5);
        QSet<QString> uuids;
        for (uint index = 0; index < 5; ++index) {
            QVERIFY(!playlist->mediaInfoAt(index).isNull());
            uuids.insert(playlist->mediaInfoAt(index).uuid());
            QCOMPARE(playlist->indexOf(playlist->mediaInfoAt(index).uuid()), int(index));
        }
        QCOMPARE(uuids.size(), 5);
    }

    void takesOddItems()
    {
        m_rogue->items = {{"1", "Negative", "http://h/1", "", -5}, {"2", "Long", "http://h/2", "", 1LL << 60},
            {"3", QString(100'000, 't'), "not a url at all \x01", "nonsense", 3}, {"4", "", "", "", 0}};
        KelvoPlaylist *playlist = offer(4);
        QAbstractItemModel *model = playlist->itemModel();
        QTRY_COMPARE(playlist->count(), 4);
        QCOMPARE(playlist->mediaInfoAt(0).duration(), -1);
        QVERIFY(!model->index(0, KelvoPlaylist::DurationColumn).data().isValid());
        QCOMPARE(model->index(0, KelvoPlaylist::DurationColumn).data(Qt::UserRole), -1);
        QCOMPARE(playlist->mediaInfoAt(1).duration(), std::numeric_limits<int>::max());
        QCOMPARE(playlist->mediaInfoAt(2).title().size(), 4096);
        QVERIFY(playlist->mediaInfoAt(3).url().isEmpty());
    }
};

KELVO_TEST(SharedRogueItemsTest)
#include "SharedRogueItemsTest.moc"
