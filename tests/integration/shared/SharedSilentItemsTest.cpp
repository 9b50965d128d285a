// SPDX-License-Identifier: MIT
#include "KelvoPlaylist.h"
#include "LogRecorder.h"
#include "RogueListCase.h"
#include "TestGroup.h"
#include "TestRegistry.h"

#include <QAbstractItemModel>
#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

// A playlist of another process whose items do not come. Waits are cut to 400 ms by the environment; only here, because
// a peer that answers as fast as it can may be late by as much on a busy machine.
class SharedSilentItemsTest : public RogueListCase
{
    Q_OBJECT
private Q_SLOTS:
    void doesNotWaitForItemsThatNeverCome()
    {
        m_rogue->onPage = [](const QDBusMessage &) {
        };
        KelvoPlaylist *playlist = offer(3);
        LogRecorder log;
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(playlist->count(), 0);
        QCOMPARE(playlist->itemModel()->rowCount(), 0);
        QVERIFY(playlist->mediaInfoAt(0).isNull());
        QVERIFY(timer.elapsed() < 400);
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("does not answer"));
        QCOMPARE(m_rogue->pages, 3);
        // After a rest it is asked again, without more warnings.
        QTRY_VERIFY_WITH_TIMEOUT(m_rogue->pages >= 6, 10'000);
        m_rogue->onPage = nullptr;
        QTRY_COMPARE_WITH_TIMEOUT(playlist->count(), 3, 10'000);
        QCOMPARE(log.warnings().size(), 1);
    }

    void keepsWhatItHasWhenTheRestNeverComes()
    {
        m_rogue->items = RoguePeer::numbered(1000);
        const auto onlyTheFirst = [this](const QDBusMessage &call) {
            if (startOf(call) == 0)
                m_rogue->replyPage(call, m_rogue->items.mid(0, countOf(call)), 1);
        };
        m_rogue->onPage = onlyTheFirst;
        KelvoPlaylist *playlist = offer(1000);
        QAbstractItemModelTester tester(
            playlist->itemModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        LogRecorder log;
        QTRY_COMPARE(playlist->count(), 100);
        QTRY_COMPARE(log.warnings().size(), 1);
        QCOMPARE(playlist->count(), 100);
        m_rogue->onPage = nullptr;
        QSignalSpy changes(playlist, &KelvoPlaylist::contentsChanged);
        playlist->itemModel(); // somebody looks at it again
        QTRY_COMPARE(playlist->count(), 1000);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes.first(), QVariantList({100U, 0U, 900U}));
    }

    void keepsWhatItHasWhenTheFileNeverComes()
    {
        m_rogue->items = RoguePeer::numbered(1000);
        m_rogue->onFile = [](const QDBusMessage &) {
        };
        KelvoPlaylist *playlist = offer(1000);
        QAbstractItemModelTester tester(
            playlist->itemModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        LogRecorder log;
        QTRY_COMPARE(playlist->count(), 100);
        QTRY_COMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().contains("does not answer"));
        QCOMPARE(m_rogue->files, 3);
        QCOMPARE(m_rogue->pages, 1);
        // After a rest it is asked again, without more warnings.
        QTRY_VERIFY_WITH_TIMEOUT(m_rogue->files >= 6, 10'000);
        QCOMPARE(playlist->count(), 100);
        m_rogue->onFile = [this](const QDBusMessage &call) {
            m_rogue->replyFile(call, m_rogue->items, 1);
        };
        QTRY_COMPARE_WITH_TIMEOUT(playlist->count(), 1000, 10'000);
        QCOMPARE(log.warnings().size(), 1);
    }

    void takesNoFilesFromOthers()
    {
        RoguePeer other("other");
        m_rogue->items = RoguePeer::numbered(200);
        m_rogue->onFile = [&](const QDBusMessage &call) {
            RoguePeer &answering = m_rogue->files == 1 ? other : *m_rogue;
            answering.replyFile(call, RoguePeer::numbered(m_rogue->files == 1 ? 900 : 200), 1);
        };
        KelvoPlaylist *playlist = offer(200);
        LogRecorder log;
        QCOMPARE(playlist->count(), 0);
        QTRY_COMPARE(playlist->count(), 200);
        QCOMPARE(m_rogue->files, 2);
        QCOMPARE(log.warnings(), QStringList());
    }

    void takesNoItemsFromOthers()
    {
        RoguePeer other("other");
        m_rogue->onPage = [&](const QDBusMessage &call) {
            if (m_rogue->pages == 1)
                other.replyPage(call, RoguePeer::numbered(9), 1);
            else
                m_rogue->replyPage(call, m_rogue->items.mid(startOf(call), countOf(call)), 1);
        };
        KelvoPlaylist *playlist = offer(3);
        QCOMPARE(playlist->count(), 0);
        QTRY_COMPARE(playlist->count(), 3);
        QCOMPARE(playlist->mediaInfoAt(2).title(), "Song 2");
    }
};

KELVO_TEST(SharedSilentItemsTest)
#include "SharedSilentItemsTest.moc"
