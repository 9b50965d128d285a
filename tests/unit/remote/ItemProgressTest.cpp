// SPDX-License-Identifier: MIT
// How far an item has come, by what its player says and by the time that has passed.
#include "ItemProgress.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

namespace {
constexpr bool paused = true;

class ItemProgressTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void timeGoesOnWhileThePlayerIsLate();
    void timeIsWhatThePlayerSaysAtRest();
    void timeThatWasNotToldOfCounts();
    void seekCountsUntilThePlayerIsThere();
    void seekThatTookPlaceIsKnown();
    void refusedSeekLeavesThePositionToThePlayer();
    void nextItemIsAtItsBeginning();
};

void ItemProgressTest::timeGoesOnWhileThePlayerIsLate()
{
    ItemProgress progress;
    progress.setRunning(true);
    QVERIFY(progress.take(10, !paused));
    QVERIFY(progress.take(9, !paused));
    QVERIFY(progress.now() < 9.5);
    QVERIFY(progress.passed() >= 10);
    QVERIFY(progress.take(0, !paused)); // It has lost it.
    QVERIFY(progress.now() < 0.5);
    QVERIFY(progress.passed() >= 10);
    QVERIFY(progress.take(8, !paused)); // Later than any player tells.
    QVERIFY(progress.passed() < 8.5);
    QVERIFY(progress.take(12, !paused));
    QVERIFY(progress.passed() >= 12);
}

void ItemProgressTest::timeIsWhatThePlayerSaysAtRest()
{
    ItemProgress progress;
    QVERIFY(progress.take(10, paused));
    QVERIFY(progress.take(9.5, paused));
    QCOMPARE(progress.passed(), 9.5);
    QVERIFY(progress.take(0, paused));
    QCOMPARE(progress.passed(), 0.0);
}

void ItemProgressTest::timeThatWasNotToldOfCounts()
{
    ItemProgress progress;
    progress.setPassed(1.25);
    QCOMPARE(progress.now(), 0.0);
    QCOMPARE(progress.passed(), 1.25);
    progress.setRunning(true);
    progress.setRate(2);
    QTRY_VERIFY(progress.now() > 0.02);
    QVERIFY(progress.passed() >= 1.27);
}

void ItemProgressTest::seekCountsUntilThePlayerIsThere()
{
    ItemProgress progress;
    progress.setRunning(true);
    progress.take(10, !paused);
    progress.seekTo(50);
    QVERIFY(progress.isSeeking());
    QVERIFY(progress.isAimed());
    QVERIFY(!progress.take(10.1, !paused));
    QVERIFY(progress.now() >= 50);
    QVERIFY(progress.passed() >= 50);
    QVERIFY(progress.isSeeking());
    QVERIFY(progress.take(50.1, !paused));
    QVERIFY(!progress.isSeeking());
    QVERIFY(!progress.isAimed());
}

void ItemProgressTest::seekThatTookPlaceIsKnown()
{
    ItemProgress progress;
    progress.seekTo(50);
    progress.confirmSeek(47, 0); // The player goes to what it can.
    QVERIFY(!progress.isSeeking());
    QVERIFY(!progress.isAimed());
    QCOMPARE(progress.passed(), 47.0);
    progress.confirmSeek(50, 1000);
    QVERIFY(progress.isAimed());
    QVERIFY(!progress.isSeeking());
}

void ItemProgressTest::refusedSeekLeavesThePositionToThePlayer()
{
    ItemProgress progress;
    progress.take(10, paused);
    progress.seekTo(50);
    progress.giveUpSeek();
    QVERIFY(!progress.isSeeking());
    QVERIFY(progress.isAimed());
    QVERIFY(progress.take(10, paused));
    QCOMPARE(progress.now(), 10.0);
    QCOMPARE(progress.passed(), 10.0);
    QVERIFY(!progress.isAimed());
    // What is refused at other times says nothing of it.
    progress.giveUpSeek();
    QVERIFY(!progress.isAimed());
}

void ItemProgressTest::nextItemIsAtItsBeginning()
{
    ItemProgress progress;
    progress.setDuration(60);
    progress.setRunning(true);
    progress.seekTo(50);
    progress.confirmSeek(51, 1000);
    progress.begin();
    QCOMPARE(progress.now(), 0.0);
    QCOMPARE(progress.passed(), 0.0);
    QVERIFY(progress.duration() < 0);
    QVERIFY(!progress.isRunning());
    QVERIFY(!progress.isAimed());
}
} // namespace

KELVO_TEST(ItemProgressTest)
#include "ItemProgressTest.moc"
