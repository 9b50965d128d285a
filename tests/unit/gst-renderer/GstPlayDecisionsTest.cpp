// SPDX-License-Identifier: MIT
#include "ItemFindings.h"
#include "KelvoTestCase.h"
#include "OutputFallbacks.h"
#include "PausePoint.h"
#include "PlayState.h"
#include "PlaybackWatch.h"
#include "PositionNote.h"
#include "SeekWishes.h"
#include "TestGroup.h"

#include <QTest>

using R = KelvoRenderer;

namespace {
constexpr qint64 second = 1'000'000'000;

/// What a state says it has to say: what to tell the pipeline and what to report, as far as there is anything.
QString outcome(PlayState &state)
{
    QStringList parts;
    if (const std::optional<bool> playing = state.order())
        parts.append(*playing ? QStringLiteral("play!") : QStringLiteral("pause!"));
    if (const std::optional<R::State> news = state.news()) {
        switch (*news) {
        case R::Stopped:
            parts.append(QStringLiteral("Stopped"));
            break;
        case R::Playing:
            parts.append(QStringLiteral("Playing"));
            break;
        case R::Paused:
            parts.append(QStringLiteral("Paused"));
            break;
        case R::Transitioning:
            parts.append(QStringLiteral("Transitioning"));
            break;
        }
    }
    return parts.join(QLatin1Char(' '));
}

/// One thing that happens to a state, by a short name.
void happen(PlayState &state, const QString &event)
{
    if (event == QLatin1String("load") || event == QLatin1String("load paused")) {
        state.beginItem(event.endsWith(QLatin1String("paused")));
        state.beginLoading();
    } else if (event == QLatin1String("reload")) {
        state.beginLoading();
    } else if (event == QLatin1String("live")) {
        state.setLive(true);
    } else if (event == QLatin1String("prerolled")) {
        state.prerolled();
    } else if (event == QLatin1String("plays") || event == QLatin1String("stands")) {
        state.pipelineReached(event == QLatin1String("plays"));
    } else if (event == QLatin1String("pause")) {
        state.pause();
    } else if (event == QLatin1String("resume")) {
        state.resume();
    } else if (event == QLatin1String("pause here")) {
        state.pauseHere();
    } else if (event == QLatin1String("taken") || event == QLatin1String("given back")) {
        state.setOverridden(event == QLatin1String("taken"));
    } else if (event == QLatin1String("clock lost")) {
        state.pipelinePaused();
    } else if (event == QLatin1String("end")) {
        state.end();
    } else if (event == QLatin1String("unload")) {
        state.forgetItem();
    } else {
        state.setBuffered(event.toInt()); // percent
    }
}
} // namespace

/// What the player of an item decides, apart from any pipeline.
class GstPlayDecisionsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    /// Events, each with what follows of it at once: what the pipeline is told and what is reported.
    void decidesOnTheState_data()
    {
        QTest::addColumn<QString>("course");
        const auto row = [](const char *name, const char *course) {
            QTest::newRow(name) << QString::fromLatin1(course);
        };
        row("plays", "load: | prerolled: play! | plays: Playing");
        row("begins paused", "load paused: | prerolled: Paused | resume: play! | plays: Playing");
        row("pauses and goes on",
            "load: | prerolled: play! | plays: Playing | pause: pause! | stands: Paused | "
            "resume: play! | plays: Playing");
        row("says nothing twice", "load: | prerolled: play! | plays: Playing | resume: | plays: | 100:");
        row("pauses before there is anything",
            "load: | pause: Paused | prerolled: | resume: play! | plays: Playing");
        row("changes its mind before",
            "load: | pause: Paused | resume: Transitioning | prerolled: play! | plays: Playing");
        row("does not owe that to the next item",
            "load: | pause: Paused | unload: | load paused: | prerolled: Paused");
        row("nor to the point to pause at",
            "load: | pause: Paused | resume: Transitioning | prerolled: play! | plays: Playing | "
            "pause here: pause! | stands: Paused");
        row("an empty buffer holds",
            "load: | prerolled: play! | plays: Playing | 40: pause! Transitioning | stands: | "
            "99: | 100: play! | plays: Playing");
        row("a pause while it fills",
            "load: | prerolled: play! | plays: Playing | 40: pause! Transitioning | "
            "pause: Paused | stands: | 100: | resume: play! | plays: Playing");
        row("a buffer that fills first", "load: | 10: | prerolled: | 100: play! | plays: Playing");
        row("the next item has a buffer of its own",
            "load: | prerolled: play! | plays: Playing | 40: pause! Transitioning | load: | "
            "prerolled: play! | plays: Playing");
        row("a live source has none", "load: | live: | prerolled: play! | plays: Playing | 40:");
        row("the next item may have one",
            "load: | live: | prerolled: play! | plays: Playing | load: | prerolled: play! | "
            "plays: Playing | 40: pause! Transitioning");
        row("a policy pauses",
            "load: | prerolled: play! | plays: Playing | taken: pause! | stands: Paused | resume: | "
            "given back: play! | plays: Playing");
        row("a policy leaves the want",
            "load: | prerolled: play! | plays: Playing | taken: pause! | stands: Paused | "
            "pause: | given back: | resume: play! | plays: Playing");
        row("a policy outlasts the item",
            "load: | prerolled: play! | plays: Playing | taken: pause! | stands: Paused | "
            "unload: | load: | prerolled: Paused | given back: play! | plays: Playing");
        row("a policy while loading",
            "load: | taken: | prerolled: Paused | given back: play! | plays: Playing");
        row("the want while loading counts all the same",
            "load: | taken: | pause: Paused | resume: Transitioning | prerolled: Paused");
        row("reaches the point to pause at",
            "load: | prerolled: play! | plays: Playing | pause here: pause! | "
            "stands: Paused");
        row("the point while the buffer fills",
            "load: | prerolled: play! | plays: Playing | 40: pause! Transitioning | "
            "pause here: | stands: Paused");
        row("takes a new clock", "load: | prerolled: play! | plays: Playing | clock lost: play!");
        row("another pipeline",
            "load: | prerolled: play! | plays: Playing | reload: Transitioning | prerolled: play! | "
            "plays: Playing");
        row("another pipeline while paused",
            "load paused: | prerolled: Paused | reload: | prerolled: | resume: play! | "
            "plays: Playing");
        row("nothing after the end",
            "load: | prerolled: play! | plays: Playing | end: | pause: | stands: | resume: | 40:");
        row("nothing without an item",
            "load: | prerolled: play! | plays: Playing | unload: | stands: | pause:");
    }

    void decidesOnTheState()
    {
        QFETCH(QString, course);
        PlayState state;
        const QStringList steps = course.split(QStringLiteral(" | "));
        for (const QString &step : steps) {
            const QString event = step.section(QLatin1Char(':'), 0, 0);
            happen(state, event);
            QCOMPARE(QString(event + QStringLiteral(": ") + outcome(state)).trimmed(), step);
        }
    }

    void knowsWhetherStandingStillIsWrong_data()
    {
        QTest::addColumn<QString>("events");
        QTest::addColumn<bool>("isSeeking");
        QTest::addColumn<bool>("expected");
        const auto row = [](const char *name, const char *events, bool isSeeking, bool expected) {
            QTest::newRow(name) << QString::fromLatin1(events) << isSeeking << expected;
        };
        row("loading", "load", false, true);
        row("loading to pause", "load paused", false, true);
        row("playing", "load|prerolled|plays", false, true);
        row("paused", "load paused|prerolled", false, false);
        row("paused and seeking", "load paused|prerolled", true, true);
        row("with an empty buffer", "load|prerolled|plays|40", false, true);
        row("without its output", "load|prerolled|plays|taken", false, false);
        row("at the end", "load|prerolled|plays|end", true, false);
        row("without an item", "load|prerolled|plays|unload", true, false);
    }

    void knowsWhetherStandingStillIsWrong()
    {
        QFETCH(QString, events);
        QFETCH(bool, isSeeking);
        PlayState state;
        const QStringList course = events.split(QLatin1Char('|'));
        for (const QString &event : course)
            happen(state, event);
        QTEST(state.wantsToMove(isSeeking), "expected");
    }

    void knowsWhenItStands()
    {
        PlayState state;
        happen(state, QStringLiteral("load"));
        QVERIFY(!state.stands());
        happen(state, QStringLiteral("prerolled"));
        QVERIFY(state.stands());
        outcome(state); // is told to play
        QVERIFY(!state.stands());
        QVERIFY(!state.goesOn());
        happen(state, QStringLiteral("plays"));
        QVERIFY(state.goesOn());
        happen(state, QStringLiteral("pause"));
        outcome(state);
        QVERIFY(!state.goesOn());
        QVERIFY(!state.stands());
        happen(state, QStringLiteral("stands"));
        QVERIFY(state.stands());
        happen(state, QStringLiteral("end"));
        QVERIFY(!state.stands());
    }

    void knowsWhetherItIsOnItsWay_data()
    {
        QTest::addColumn<QString>("events");
        QTest::addColumn<bool>("expected");
        const auto row = [](const char *name, const char *events, bool expected) {
            QTest::newRow(name) << QString::fromLatin1(events) << expected;
        };
        row("without an item", "unload", false);
        row("loading", "load", true);
        row("loading to pause", "load paused", true);
        row("paused at the start", "load paused|prerolled", false);
        row("to its first picture in motion", "load|prerolled", true);
        row("playing", "load|prerolled|plays", false);
        row("to a pause", "load|prerolled|plays|pause", true);
        row("paused", "load|prerolled|plays|pause|stands", false);
        row("on from a pause", "load paused|prerolled|resume", true);
        row("held back by its buffer", "load|prerolled|plays|40", true);
        row("waiting for its buffer", "load|prerolled|plays|40|stands", false);
        row("with another pipeline", "load|prerolled|plays|reload", true);
        row("at the end of a way", "load|prerolled|plays|pause|end", false);
        row("unloaded on its way", "load|prerolled|unload", false);
    }

    void knowsWhetherItIsOnItsWay()
    {
        QFETCH(QString, events);
        PlayState state;
        const QStringList course = events.split(QLatin1Char('|'));
        for (const QString &event : course) {
            happen(state, event);
            state.order();
        }
        QTEST(state.isOnItsWay(), "expected");
    }

    void tellsNewsOfBufferAndPolicy()
    {
        PlayState state;
        happen(state, QStringLiteral("load"));
        QVERIFY(!state.setBuffered(100));
        QVERIFY(state.setBuffered(99));
        QVERIFY(!state.setBuffered(99));
        QCOMPARE(state.bufferPercent(), 99);
        QVERIFY(!state.setOverridden(false));
        QVERIFY(state.setOverridden(true));
        QVERIFY(!state.setOverridden(true));
        state.setLive(true);
        QVERIFY(!state.setBuffered(50));
        QCOMPARE(state.bufferPercent(), 99);
    }

    void makesOneSeekAtATime()
    {
        SeekWishes wishes;
        wishes.beginItem(1.0);
        QVERIFY(!wishes.isDue());
        QVERIFY(wishes.isAtRest());
        wishes.wish(5);
        QVERIFY(wishes.isDue());
        QVERIFY(!wishes.isAtRest());
        QCOMPARE(wishes.destination(), std::optional<qint64>(5));
        wishes.begin(5);
        QVERIFY(!wishes.isDue());
        QVERIFY(wishes.isSeeking());
        QVERIFY(!wishes.isAtRest());
        QCOMPARE(wishes.destination(), std::optional<qint64>(5));
        wishes.wish(7);
        wishes.wish(9); // the newest counts
        QVERIFY(!wishes.isDue());
        QCOMPARE(wishes.destination(), std::optional<qint64>(9));
        wishes.finish();
        QVERIFY(wishes.isDue());
        QVERIFY(!wishes.isSeeking());
        QVERIFY(!wishes.isAtRest());
        wishes.begin(9);
        wishes.finish();
        QVERIFY(!wishes.isDue());
        QVERIFY(wishes.isAtRest());
        QCOMPARE(wishes.destination(), std::optional<qint64>());
    }

    void seeksOnTheSpotForTheSpeed()
    {
        SeekWishes wishes;
        wishes.beginItem(1.0);
        wishes.adoptSpeed();
        QVERIFY(!wishes.isDue()); // a pipeline has that speed by itself
        wishes.setSpeed(2.0);
        QCOMPARE(wishes.speed(), 2.0);
        QVERIFY(!wishes.isDue());
        wishes.adoptSpeed();
        QVERIFY(wishes.isDue());
        QVERIFY(wishes.isAtRest()); // it goes nowhere
        wishes.wishSeekOnTheSpot(false);
        QVERIFY(!wishes.isDue());
        wishes.wishSeekOnTheSpot();
        wishes.wish(3);
        QVERIFY(wishes.isDue());
        wishes.begin(3); // one seek for both
        wishes.finish();
        QVERIFY(!wishes.isDue());
    }

    void forgetsTheWishesOfAnotherItem()
    {
        SeekWishes wishes;
        wishes.beginItem(2.0);
        QCOMPARE(wishes.speed(), 2.0);
        wishes.wish(5);
        wishes.begin(5);
        wishes.wish(6);
        wishes.wishSeekOnTheSpot();
        wishes.beginItem(1.0);
        QVERIFY(!wishes.isSeeking());
        QVERIFY(!wishes.isDue());
        QCOMPARE(wishes.speed(), 1.0);
        wishes.wish(6);
        QCOMPARE(wishes.takeWish(), std::optional<qint64>(6));
        QCOMPARE(wishes.takeWish(), std::optional<qint64>());
    }

    void findsTheWayToThePausePoint_data()
    {
        QTest::addColumn<qint64>("position");
        QTest::addColumn<double>("speed");
        QTest::addColumn<bool>("isReached");
        QTest::addColumn<qint64>("ahead"); // -1: not
        QTest::newRow("far away") << 4 * second << 1.0 << false << 6 * second;
        QTest::newRow("twice as fast") << 4 * second << 2.0 << false << 3 * second;
        QTest::newRow("slowly") << 4 * second << 0.5 << false << 12 * second;
        QTest::newRow("backwards") << 4 * second << -1.0 << false << qint64(-1);
        QTest::newRow("just before") << 10 * second - 1 << 1.0 << false << qint64(1);
        QTest::newRow("there") << 10 * second << 1.0 << true << qint64(-1);
        QTest::newRow("past it") << 11 * second << 1.0 << true << qint64(-1);
        QTest::newRow("past it, backwards") << 11 * second << -2.0 << true << qint64(-1);
    }

    void findsTheWayToThePausePoint()
    {
        QFETCH(qint64, position);
        QFETCH(double, speed);
        QFETCH(bool, isReached);
        PausePoint point;
        QVERIFY(!point.isWithin(position));
        QVERIFY(!point.takeReached(position));
        QVERIFY(!point.timeFrom(position, speed));
        point.set(10 * second);
        QTEST(point.timeFrom(position, speed).value_or(-1), "ahead");
        QCOMPARE(point.isWithin(position), isReached);
        QCOMPARE(point.takeReached(position), isReached);
        QCOMPARE(point.isSet(), !isReached); // once
        point.drop();
        QVERIFY(!point.isSet());
    }

    void doubtsThePositionAtTheEnd_data()
    {
        QTest::addColumn<qint64>("reported");
        QTest::addColumn<qint64>("now"); // milliseconds
        QTest::addColumn<double>("speed");
        QTest::addColumn<qint64>("expected");
        QTest::newRow("as it should be") << 7 * second << qint64(9000) << 1.0 << 7 * second;
        QTest::newRow("jumped ahead") << 60 * second << qint64(9000) << 1.0 << 9 * second;
        QTest::newRow("jumped ahead, fast") << 60 * second << qint64(9000) << 3.0 << 17 * second;
        QTest::newRow("no time has passed") << 60 * second << qint64(5000) << 1.0 << 5 * second;
    }

    void doubtsThePositionAtTheEnd()
    {
        QFETCH(qint64, reported);
        QFETCH(qint64, now);
        QFETCH(double, speed);
        PositionNote note;
        note.take(1 * second, 1000);
        note.take(5 * second, 5000);
        QTEST(note.reachable(reported, now, speed), "expected");
    }

    void fallsBackToOtherOutputs()
    {
        using Pictures = OutputFallbacks::Pictures;
        OutputFallbacks fallbacks;
        QVERIFY(!fallbacks.retryAudio());
        QVERIFY(!fallbacks.retryAll());
        OutputFallbacks::Answer answer = fallbacks.audioFailed();
        QVERIFY(answer.replace && answer.tell);
        QVERIFY(fallbacks.isSilent());
        QCOMPARE(fallbacks.pictures(), Pictures::Usual);
        answer = fallbacks.audioFailed(); // the silent clock did
        QVERIFY(!answer.replace && !answer.tell);
        answer = fallbacks.videoFailed(false);
        QVERIFY(answer.replace && answer.tell);
        QCOMPARE(fallbacks.pictures(), Pictures::None);
        answer = fallbacks.videoFailed(false);
        QVERIFY(!answer.replace && !answer.tell);
        QVERIFY(fallbacks.retryAll());
        QVERIFY(!fallbacks.isSilent());
        QCOMPARE(fallbacks.pictures(), Pictures::Usual);
        QVERIFY(!fallbacks.retryAll());
        QVERIFY(!fallbacks.retryAudio());
        fallbacks.videoFailed(false);
        QVERIFY(fallbacks.retryAll()); // for the picture alone, too
    }

    void showsWithoutAnAdaptorBeforeNothing()
    {
        using Pictures = OutputFallbacks::Pictures;
        OutputFallbacks fallbacks;
        OutputFallbacks::Answer answer = fallbacks.videoFailed(true);
        QVERIFY(answer.replace && !answer.tell); // nothing is missing on the screen
        QCOMPARE(fallbacks.pictures(), Pictures::WithoutAdaptor);
        answer = fallbacks.videoFailed(false);
        QVERIFY(answer.replace && answer.tell);
        QCOMPARE(fallbacks.pictures(), Pictures::None);
        QVERIFY(fallbacks.retryAll());
        QCOMPARE(fallbacks.pictures(), Pictures::Usual);
        fallbacks.videoFailed(true);
        QVERIFY(fallbacks.retryAll()); // its ports may be free again
        QCOMPARE(fallbacks.pictures(), Pictures::Usual);
    }

    void triesALostSoundAgainWithEachItem()
    {
        using Pictures = OutputFallbacks::Pictures;
        OutputFallbacks fallbacks;
        fallbacks.audioFailed();
        fallbacks.videoFailed(false);
        QVERIFY(fallbacks.retryAudio());
        QVERIFY(!fallbacks.isSilent());
        QCOMPARE(fallbacks.pictures(), Pictures::None); // no other video output is tried
        const OutputFallbacks::Answer again = fallbacks.audioFailed();
        QVERIFY(again.replace && !again.tell); // was told
        fallbacks.audioPlays(true);
        QVERIFY(fallbacks.retryAudio());
        fallbacks.audioPlays(false); // is back
        QVERIFY(!fallbacks.retryAudio());
        fallbacks.audioPlays(true); // an output that was never lost may be a clock, too
        QVERIFY(!fallbacks.retryAudio());
        QVERIFY(fallbacks.audioFailed().tell);
    }

    void noticesThatNothingWillCome()
    {
        using Verdict = PlaybackWatch::Verdict;
        PlaybackWatch watch;
        watch.begin(0, 2000);
        QCOMPARE(watch.stallLimit(), 2000);
        PlaybackWatch::Sight sight;
        QCOMPARE(watch.look(sight, 5000), Verdict::Fine); // nothing has to move
        sight.isExpectedToMove = true;
        QCOMPARE(watch.look(sight, 6900), Verdict::Fine);
        sight.position = 1;
        QCOMPARE(watch.look(sight, 7000), Verdict::Fine);
        QCOMPARE(watch.look(sight, 8999), Verdict::Fine);
        QCOMPARE(watch.look(sight, 9000), Verdict::Stalled);
        watch.restart(9000);
        QCOMPARE(watch.look(sight, 10'900), Verdict::Fine);
        sight.bufferPercent = 50;
        QCOMPARE(watch.look(sight, 11'000), Verdict::Fine);
        QCOMPARE(watch.look(sight, 12'900), Verdict::Fine);
        sight.isExpectedToMove = false; // paused meanwhile
        QCOMPARE(watch.look(sight, 20'000), Verdict::Fine);
        sight.isExpectedToMove = true;
        QCOMPARE(watch.look(sight, 20'100), Verdict::Fine);
        QCOMPARE(watch.look(sight, 22'100), Verdict::Stalled);
        watch.begin(22'100, 500);
        QCOMPARE(watch.look(sight, 22'500), Verdict::Fine);
        QCOMPARE(watch.look(sight, 23'000), Verdict::Stalled);
    }

    void noticesThatNoThreadIsLeft()
    {
        using Verdict = PlaybackWatch::Verdict;
        PlaybackWatch watch;
        watch.begin(0, 2000);
        PlaybackWatch::Sight lifeless;
        lifeless.isExpectedToMove = lifeless.isLifeless = true;
        PlaybackWatch::Sight alive = lifeless;
        alive.isLifeless = false;
        QCOMPARE(watch.look(lifeless, 1), Verdict::Fine);
        QCOMPARE(watch.look(lifeless, 2), Verdict::Fine);
        QCOMPARE(watch.look(alive, 3), Verdict::Fine); // was between two threads
        QCOMPARE(watch.look(lifeless, 4), Verdict::Fine);
        QCOMPARE(watch.look(lifeless, 5), Verdict::Fine);
        QCOMPARE(watch.look(lifeless, 6), Verdict::Dead);
        watch.begin(7, 2000);
        QCOMPARE(watch.look(lifeless, 8), Verdict::Fine);
    }

    void tellsTextFromMedia()
    {
        ItemFindings findings;
        QVERIFY(!findings.isText());
        findings.noteUnplayable("text/html");
        QVERIFY(findings.isText());
        findings.noteUnplayable("application/x-text/");
        QVERIFY(!findings.isText());
        findings.noteUnplayable("text/plain");
        findings.noteMissingCodec(QStringLiteral("none"));
        findings.clear();
        QVERIFY(!findings.isText());
        QVERIFY(findings.missingCodec().isEmpty());
    }
};

KELVO_TEST(GstPlayDecisionsTest)
#include "GstPlayDecisionsTest.moc"
