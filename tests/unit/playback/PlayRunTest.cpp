// SPDX-License-Identifier: MIT
// What the end or the failure of an item leads to.
#include "PlayRun.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

namespace {
using Action = PlayRun::Action;
using Place = PlayRun::Place;
using Step = PlayRun::Step;

const Step stops{Action::Stop};
const Step completes{Action::Complete};
const Step nothingPlays{Action::Stop, -1, true};

Step plays(int index)
{
    return {Action::Play, index};
}

/// The item at `index` of `count`, with repeat "off".
Place at(int index, int count)
{
    const int next = index + 1 < count ? index + 1 : -1;
    return {true, index, count, next, next, true};
}

/// The same with repeat "all".
Place inRound(int index, int count)
{
    const int next = (index + 1) % count;
    return {true, index, count, next, next, true};
}

/// The same with repeat "one".
Place again(int index, int count)
{
    Place place = at(index, count);
    place.following = index;
    return place;
}

Place withoutAdvance(Place place)
{
    place.autoAdvance = false;
    return place;
}

/// What happened to the items before, one letter each: (e)nded, ended (i)dle, (f)ailed, failed after it had (p)layed.
PlayRun after(const QString &history)
{
    PlayRun run;
    for (const QChar event : history) {
        if (event == QLatin1Char('e') || event == QLatin1Char('i')) {
            run.noteEnd(event == QLatin1Char('e'));
        } else {
            const bool progressed = event == QLatin1Char('p');
            run.noteFailure(progressed);
            run.afterFailure(inRound(0, 100), progressed);
        }
    }
    return run;
}

class PlayRunTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void decidesAtTheEnd_data();
    void decidesAtTheEnd();
    void decidesAtAFailure_data();
    void decidesAtAFailure();
};

void PlayRunTest::decidesAtTheEnd_data()
{
    QTest::addColumn<QString>("history"); // the last one is that of the item
    QTest::addColumn<Place>("place");
    QTest::addColumn<Step>("step");
    QTest::newRow("an address") << "e" << Place() << completes;
    QTest::newRow("an address, without advance") << "e" << withoutAdvance({}) << completes;
    QTest::newRow("a picture by its address") << "i" << Place() << completes;
    QTest::newRow("first") << "e" << at(0, 3) << plays(1);
    QTest::newRow("last") << "e" << at(2, 3) << completes;
    QTest::newRow("last, repeat all") << "e" << inRound(2, 3) << plays(0);
    QTest::newRow("only, repeat all") << "e" << inRound(0, 1) << plays(0);
    QTest::newRow("repeat one") << "e" << again(1, 3) << plays(1);
    QTest::newRow("last, repeat one") << "e" << again(2, 3) << plays(2);
    QTest::newRow("first, without advance") << "e" << withoutAdvance(at(0, 3)) << stops;
    QTest::newRow("last, without advance") << "e" << withoutAdvance(at(2, 3)) << completes;
    QTest::newRow("repeat all, without advance") << "e" << withoutAdvance(inRound(0, 3)) << stops;
    QTest::newRow("last, repeat all, without advance") << "e" << withoutAdvance(inRound(2, 3)) << completes;
    QTest::newRow("repeat one, without advance") << "e" << withoutAdvance(again(1, 3)) << stops;
    QTest::newRow("pictures only, not yet round") << "ii" << inRound(1, 3) << plays(2);
    QTest::newRow("pictures only, once round") << "iii" << inRound(2, 3) << nothingPlays;
    QTest::newRow("pictures only, repeat off") << "iii" << at(2, 3) << completes;
    QTest::newRow("pictures only, from the middle") << "ii" << inRound(2, 3) << plays(0);
    QTest::newRow("one that plays among pictures") << "iei" << inRound(2, 3) << plays(0);
    QTest::newRow("a picture, repeat one") << "i" << again(0, 1) << nothingPlays;
    QTest::newRow("a picture among others, repeat one") << "ii" << again(1, 3) << plays(1);
}

void PlayRunTest::decidesAtTheEnd()
{
    QFETCH(QString, history);
    QFETCH(PlayRun::Place, place);
    QFETCH(PlayRun::Step, step);
    const Step taken = after(history).afterEnd(place);
    QCOMPARE(int(taken.action), int(step.action));
    QCOMPARE(taken.index, step.index);
    QCOMPARE(taken.nothingPlayable, step.nothingPlayable);
}

void PlayRunTest::decidesAtAFailure_data()
{
    QTest::addColumn<QString>("history"); // before the item
    QTest::addColumn<Place>("place");
    QTest::addColumn<bool>("progressed");
    QTest::addColumn<Step>("step");
    QTest::newRow("an address") << "" << Place() << false << stops;
    QTest::newRow("an address that had played") << "" << Place() << true << stops;
    QTest::newRow("first") << "" << at(0, 3) << false << plays(1);
    QTest::newRow("first, without advance") << "" << withoutAdvance(at(0, 3)) << false << stops;
    QTest::newRow("all, repeat off") << "ff" << at(2, 3) << false << nothingPlays;
    QTest::newRow("all, without advance") << "ff" << withoutAdvance(at(2, 3)) << false << nothingPlays;
    QTest::newRow("all, repeat all") << "ff" << inRound(2, 3) << false << nothingPlays;
    QTest::newRow("all from the middle, repeat all") << "ff" << inRound(0, 3) << false << nothingPlays;
    QTest::newRow("not yet all, repeat all") << "f" << inRound(2, 3) << false << plays(0);
    QTest::newRow("all from the middle, repeat off") << "" << at(2, 3) << false << nothingPlays;
    QTest::newRow("only one") << "" << inRound(0, 1) << false << nothingPlays;
    QTest::newRow("last after one that played") << "e" << at(2, 3) << false << completes;
    QTest::newRow("last after one that broke off") << "p" << at(2, 3) << false << completes;
    QTest::newRow("last one breaks off") << "" << at(2, 3) << true << completes;
    QTest::newRow("only one breaks off, repeat all") << "" << inRound(0, 1) << true << plays(0);
    QTest::newRow("bad ones after one that played") << "fef" << inRound(0, 3) << false << plays(1);
    QTest::newRow("a round of bad ones after one that played")
        << "eff" << inRound(0, 3) << false << nothingPlays;
    QTest::newRow("bad ones after one that broke off") << "fpf" << inRound(0, 3) << false << plays(1);
    QTest::newRow("one that breaks off after bad ones") << "ff" << inRound(2, 3) << true << plays(0);
    QTest::newRow("the list was emptied") << "" << Place{true, -1, 0, -1, -1, true} << false << nothingPlays;
}

void PlayRunTest::decidesAtAFailure()
{
    QFETCH(QString, history);
    QFETCH(PlayRun::Place, place);
    QFETCH(bool, progressed);
    QFETCH(PlayRun::Step, step);
    PlayRun run = after(history);
    run.noteFailure(progressed);
    const Step taken = run.afterFailure(place, progressed);
    QCOMPARE(int(taken.action), int(step.action));
    QCOMPARE(taken.index, step.index);
    QCOMPARE(taken.nothingPlayable, step.nothingPlayable);
}
} // namespace

KELVO_TEST(PlayRunTest)
#include "PlayRunTest.moc"
