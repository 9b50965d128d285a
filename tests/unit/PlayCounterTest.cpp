// SPDX-License-Identifier: MIT
#include "KelvoPlayCounter.h"
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "MinimalObjects.h"
#include "TestGroup.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

class PlayCounterTest : public KelvoTestCase
{
    Q_OBJECT

    /// Tells of the item, as renderers also do when somebody chooses them in the middle of it.
    static void tellItem(MinimalRenderer &renderer)
    {
        Q_EMIT renderer.mediaChanged(0, {"x", QUrl("file:///a"), {}});
    }
    /// From item to item, as renderers do.
    static void begin(MinimalRenderer &renderer)
    {
        Q_EMIT renderer.stateChanged(KelvoRenderer::Transitioning);
        tellItem(renderer);
    }
    static void tellLength(MinimalRenderer &renderer, int seconds)
    {
        Q_EMIT renderer.metadataChanged("duration", {seconds});
    }

    /// Milliseconds from the beginning of the playing until it is counted; -1 when it is not.
    static qint64 playFor(MinimalRenderer &renderer, QSignalSpy &played)
    {
        const qsizetype before = played.count();
        QElapsedTimer time;
        time.start();
        Q_EMIT renderer.stateChanged(KelvoRenderer::Playing);
        return QTest::qWaitFor([&] { return played.count() > before; }, 20'000) ? time.elapsed() : -1;
    }

    /// Another renderer begins to play something just as long, in a registry of its own. When that is counted, nothing
    /// that `played` sees may have been.
    static bool nothingIsPlayedFor(int seconds, QSignalSpy &played)
    {
        const qsizetype before = played.count();
        KelvoRegistry registry;
        MinimalRenderer other("other", "Other");
        registry.addRenderer(&other);
        KelvoPlayCounter counter(&registry);
        QSignalSpy otherPlayed(&counter, &KelvoPlayCounter::played);
        begin(other);
        tellLength(other, seconds);
        return playFor(other, otherPlayed) >= 0 && played.count() == before;
    }

private Q_SLOTS:
    void countsAfterHalfTheSongOrFourMinutes()
    {
        QCOMPARE(KelvoPlayCounter::neededTime(1), 500);
        QCOMPARE(KelvoPlayCounter::neededTime(200), 100'000);
        QCOMPARE(KelvoPlayCounter::neededTime(480), 240'000);
        QCOMPARE(KelvoPlayCounter::neededTime(481), 240'000);
        QCOMPARE(KelvoPlayCounter::neededTime(INT_MAX), 240'000);
        QCOMPARE(KelvoPlayCounter::neededTime(0), 240'000);
        QCOMPARE(KelvoPlayCounter::neededTime(-1), 240'000);
    }

    // Nothing here waits for a fixed time: a machine under load is late, but never early.
    void countsOnceForEachPlaying()
    {
        KelvoRegistry registry;
        MinimalRenderer renderer("r", "R");
        registry.addRenderer(&renderer);
        KelvoPlayCounter counter(&registry);
        QSignalSpy played(&counter, &KelvoPlayCounter::played);
        begin(renderer);
        tellLength(renderer, 1);
        QVERIFY(playFor(renderer, played) >= 500);
        QVERIFY(nothingIsPlayedFor(1, played)); // once
        tellItem(renderer); // to somebody who has chosen the renderer
        Q_EMIT renderer.stateChanged(KelvoRenderer::Playing);
        QVERIFY(nothingIsPlayedFor(1, played)); // it plays on
        begin(renderer); // again, in repeat "one"
        QVERIFY(playFor(renderer, played) >= 500);
        QCOMPARE(played.count(), 2);
        QCOMPARE(played.last().first().toUrl(), QUrl("file:///a"));
    }

    void doesNotCountWithoutAnItem()
    {
        KelvoRegistry registry;
        MinimalRenderer renderer("r", "R");
        registry.addRenderer(&renderer);
        KelvoPlayCounter counter(&registry);
        QSignalSpy played(&counter, &KelvoPlayCounter::played);
        tellLength(renderer, 1);
        Q_EMIT renderer.stateChanged(KelvoRenderer::Playing);
        QVERIFY(nothingIsPlayedFor(1, played));
    }

    void doesNotCountPauses()
    {
        KelvoRegistry registry;
        MinimalRenderer renderer("r", "R");
        registry.addRenderer(&renderer);
        KelvoPlayCounter counter(&registry);
        QSignalSpy played(&counter, &KelvoPlayCounter::played);
        begin(renderer);
        tellLength(renderer, 1);
        Q_EMIT renderer.stateChanged(KelvoRenderer::Paused);
        QVERIFY(nothingIsPlayedFor(1, played));
        QVERIFY(playFor(renderer, played) >= 500);
    }

    void doesNotCountWhatIsLeftBeforeItsHalf()
    {
        KelvoRegistry registry;
        MinimalRenderer renderer("r", "R");
        registry.addRenderer(&renderer);
        KelvoPlayCounter counter(&registry);
        QSignalSpy played(&counter, &KelvoPlayCounter::played);
        begin(renderer);
        tellLength(renderer, 7200);
        Q_EMIT renderer.stateChanged(KelvoRenderer::Playing);
        QVERIFY(nothingIsPlayedFor(1, played)); // four minutes are far away
        begin(renderer);
        tellLength(renderer, 1);
        QVERIFY(playFor(renderer, played) >= 500); // from its new beginning, not from that before
    }
};

KELVO_TEST(PlayCounterTest)
#include "PlayCounterTest.moc"
