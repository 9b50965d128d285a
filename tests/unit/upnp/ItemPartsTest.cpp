// SPDX-License-Identifier: MIT
// What is kept of an item in a device: whose it is, how long it is, where it is, and how it began.
#include "ItemDuration.h"
#include "ItemInDevice.h"
#include "ItemProgress.h"
#include "ItemStart.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"
#include "ToldPosition.h"

#include <QTest>

namespace {
constexpr bool atStart = true;
constexpr bool stale = true;

class ItemPartsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void durationIsTakenBackAtTheStartOnly();
    void durationOfTheItemBeforeWaits();
    void durationOfTheItemBeforeIsRemembered();
    void trackOfTheItemBeforeIsKnown();
    void trackIsDoubtfulUntilItIsOurs();
    void fallIsTakenTheSecondTime();
    void positionPastTheEndIsDoubtful();
    void refusedSeekIsNoFall();
    void eventsBeforeTheAnswerAreOfTheTrackNamedLast();
    void eachWayOutIsTriedOnce();
};

void ItemPartsTest::durationIsTakenBackAtTheStartOnly()
{
    ItemDuration duration;
    QVERIFY(!duration.take(0, atStart, !stale)); // there is nothing to be taken back
    QVERIFY(duration.take(10, atStart, !stale));
    QVERIFY(!duration.take(0, !atStart, !stale));
    QVERIFY(duration.isKnown());
    QVERIFY(duration.take(0, atStart, !stale));
    QVERIFY(!duration.isKnown());
}

void ItemPartsTest::durationOfTheItemBeforeWaits()
{
    ItemDuration duration;
    QVERIFY(duration.take(10, atStart, !stale));
    duration.reset();
    QVERIFY(!duration.take(10, atStart, stale));
    QVERIFY(duration.isUntold());
    QVERIFY(duration.take(10, atStart, !stale));
    QVERIFY(!duration.isUntold());
    QVERIFY(duration.take(10, atStart, stale)); // what was told is not doubted any more
    QVERIFY(!duration.isUntold());
    duration.reset();
    QVERIFY(duration.take(11, atStart, stale)); // another one is not of the item before
}

void ItemPartsTest::durationOfTheItemBeforeIsRemembered()
{
    ItemDuration duration;
    QVERIFY(duration.take(10, atStart, !stale));
    duration.reset();
    duration.reset(); // of an item that never had one
    QVERIFY(!duration.take(10, atStart, stale));
    QVERIFY(!duration.take(0, atStart, !stale)); // what was never told is not taken back aloud
    QVERIFY(!duration.isKnown());
}

void ItemPartsTest::trackOfTheItemBeforeIsKnown()
{
    ItemInDevice item;
    item.accept(QStringLiteral("http://h/a"));
    item.begin();
    item.accept(QStringLiteral("http://h/b"));
    QVERIFY(!item.hearTrack(QStringLiteral("http://h/a")));
    QVERIFY(!item.hearTrack(QString())); // not named: as before
    QVERIFY(item.hearTrack(QStringLiteral("http://h/other")));
    QVERIFY(item.hearTrack(QStringLiteral("http://h/b")));
    item.begin();
    QVERIFY(item.hearTrack(QString()));
    QVERIFY(!item.hearTrack(QStringLiteral("http://h/a")));
}

void ItemPartsTest::trackIsDoubtfulUntilItIsOurs()
{
    ItemInDevice item;
    item.accept(QStringLiteral("http://h/a"));
    QVERIFY(!item.isTrackDoubtful()); // nothing was there before
    item.accept(QStringLiteral("http://h/b"));
    QVERIFY(item.isTrackDoubtful());
    item.setTrackOurs(true);
    QVERIFY(!item.isTrackDoubtful());
    item.accept(QStringLiteral("http://h/b"));
    QVERIFY(!item.isTrackDoubtful()); // the same again
}

void ItemPartsTest::fallIsTakenTheSecondTime()
{
    ItemProgress progress;
    ToldPosition position;
    QVERIFY(!position.take(8, 10, progress));
    QVERIFY(!position.isFallDoubted());
    progress.take(8, false);
    QVERIFY(position.take(0, 10, progress));
    QVERIFY(position.isFallDoubted());
    QVERIFY(position.take(0, 10, progress));
    QVERIFY(!position.isFallDoubted());
}

void ItemPartsTest::positionPastTheEndIsDoubtful()
{
    ItemProgress progress;
    ToldPosition position;
    QVERIFY(!position.take(11, -1, progress));
    progress.take(11, false);
    QVERIFY(position.take(11.5, 10, progress));
    progress.take(3, false);
    progress.confirmSeek(3, 1000);
    QVERIFY(!position.take(0, 10, progress)); // the seek explains it
    QVERIFY(!position.isFallDoubted());
    QVERIFY(!progress.take(0, false));
    QCOMPARE(progress.now(), 3.0);
}

void ItemPartsTest::refusedSeekIsNoFall()
{
    ItemProgress progress;
    ToldPosition position;
    progress.take(8, false);
    progress.seekTo(60);
    QVERIFY(!position.take(8, 100, progress)); // on its way
    progress.giveUpSeek();
    QVERIFY(!position.take(8, 100, progress));
    QVERIFY(progress.take(8, false));
    QVERIFY(position.take(0, 100, progress));
}

void ItemPartsTest::eventsBeforeTheAnswerAreOfTheTrackNamedLast()
{
    ItemStart start;
    start.keepEarly({.values = {{"CurrentTrackDuration", "0:00:01"}}}, {});
    QVERIFY(start.takeEarly().isEmpty());
    start.keepEarly({.values = {{"CurrentTrackDuration", "0:00:01"}}}, QStringLiteral("http://h/a"));
    start.keepEarly({.values = {{"CurrentTrackURI", "http://h/b"}}}, QStringLiteral("http://h/a"));
    const QList<Upnp::Report> early = start.takeEarly();
    QCOMPARE(early.size(), 2);
    QCOMPARE(early.at(0).values.value("CurrentTrackURI"), QStringLiteral("http://h/a"));
    QCOMPARE(early.at(1).values.value("CurrentTrackURI"), QStringLiteral("http://h/b"));
    QVERIFY(start.takeEarly().isEmpty());
}

void ItemPartsTest::eachWayOutIsTriedOnce()
{
    ItemStart start;
    QVERIFY(start.takeStopTry());
    QVERIFY(!start.takeStopTry());
    QVERIFY(start.takeRefusalTry());
    QVERIFY(!start.takeRefusalTry());
    QVERIFY(start.doubt());
    QVERIFY(!start.doubt());
    start.reset(true); // another item, after a stop
    QVERIFY(!start.takeStopTry());
    QVERIFY(start.takeRefusalTry());
    QVERIFY(start.doubt());
}
} // namespace

KELVO_TEST(ItemPartsTest)
#include "ItemPartsTest.moc"
