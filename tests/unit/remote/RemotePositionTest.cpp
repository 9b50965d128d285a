// SPDX-License-Identifier: MIT
// Where the item in play is, and when the player is asked for that.
#include "ItemProgress.h"
#include "RemoteCase.h"
#include "TestGroup.h"

#include <algorithm>
#include <cmath>

namespace {
class RemotePositionTest : public RemoteCase
{
    Q_OBJECT
private Q_SLOTS:
    void asksNobodyWhileNobodyWantsToKnow();
    void asksAtMostOnceASecond();
    void answersWithThePlayersPosition();
    void answersWhenThePlayerIsSilent();
    void positionOfTheItemBeforeIsIgnored();
    void staleReportAfterASeekIsIgnored();
    void lateSeekIsWaitedForWhilePaused();
    void aimIsKeptWhileThePlayerSettles();
    void takenSeekIsHeldWhileThePlayerSettles();
    void earlySeekThatIsLostIsSoughtAgain();
    void earlySeekOfSomebodyElseIsNotFought();
    void pausesBetweenPolls();
    void pausesWhereThePlayerIs_data();
    void pausesWhereThePlayerIs();
    void pausesWherePlayerThatStumbledIs();
    void pausesWherePlayerOfWholeSecondsIs();
    void placeOfThePauseIsItsSecond();
    void placeOfASeekPastThePauseIsItsTarget();
    void doesNotAskWhilePaused();
    void refinedLengthIsToldWhenItsSecondsChange();
    void timeBeforeTheFirstStateCountsForTheTransport();
    void timeGoesOnUntilThePlayerPauses();
};

void RemotePositionTest::asksNobodyWhileNobodyWantsToKnow()
{
    playing();
    Q_EMIT m_transport->durationReported(m_transport->epoch(), 600);
    QVERIFY(waitMs(300));
    QCOMPARE(m_transport->polls, 0);
    // Near the end the position matters.
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 598);
    QTRY_COMPARE(m_transport->polls, 1);
}

void RemotePositionTest::asksAtMostOnceASecond()
{
    playing();
    for (int i = 0; i < 20; ++i) {
        m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
        flush();
    }
    QCOMPARE(m_transport->polls, 1);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 5);
    QTRY_COMPARE(m_heard->positionAnswers.size(), 20);
    QVERIFY(waitMs(500));
    QCOMPARE(m_transport->polls, 1);
    QTRY_COMPARE(m_transport->polls, 2);
}

void RemotePositionTest::answersWithThePlayersPosition()
{
    playing();
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 12.25);
    const double first = position();
    QVERIFY(first >= 12.25 && first < 12.5);
    QVERIFY(waitMs(200));
    QVERIFY(position() >= first + 0.2);
    // Never past the end.
    Q_EMIT m_transport->durationReported(m_transport->epoch(), 12);
    QCOMPARE(position(), 12.0);
}

void RemotePositionTest::answersWhenThePlayerIsSilent()
{
    playing();
    QElapsedTimer timer;
    timer.start();
    QVERIFY(position() < 2);
    QVERIFY(timer.elapsed() < 1500);
}

void RemotePositionTest::positionOfTheItemBeforeIsIgnored()
{
    playing();
    const quint64 before = m_transport->epoch();
    playing(QUrl("http://media/other"));
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 3);
    Q_EMIT m_transport->positionReported(before, 50);
    const double now = position();
    QVERIFY2(now >= 3 && now < 10, qPrintable(QString::number(now)));
}

void RemotePositionTest::staleReportAfterASeekIsIgnored()
{
    playing();
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 3);
    m_renderer->setPosition(50, KelvoRenderer::SeekAbsolute);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 3.1);
    QVERIFY(position() >= 50);
    // But a seek that never took place is found out.
    QVERIFY(waitMs(750));
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 3.9);
    QVERIFY(position() < 5);
}

void RemotePositionTest::lateSeekIsWaitedForWhilePaused()
{
    playing();
    say(Paused);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 3);
    const int before = m_transport->polls;
    m_renderer->setPosition(50, KelvoRenderer::SeekAbsolute);
    // A busy player goes on telling where it was.
    for (int told = 0; told < 4; ++told) {
        QTRY_VERIFY(m_transport->polls > before + told);
        Q_EMIT m_transport->positionReported(m_transport->epoch(), 3);
        QCOMPARE(position(), 50.0);
    }
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 50.1);
    QCOMPARE(position(), 50.1);
    // And is believed once it had more than time enough.
    m_renderer->setPosition(20, KelvoRenderer::SeekAbsolute);
    const auto staysBehind = [this] {
        Q_EMIT m_transport->positionReported(m_transport->epoch(), 50.1);
        return position() == 50.1;
    };
    QTRY_VERIFY(staysBehind());
}

void RemotePositionTest::aimIsKeptWhileThePlayerSettles()
{
    playing();
    m_renderer->setPosition(8, KelvoRenderer::SeekAbsolute);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 8.02);
    say(Paused);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 7.9);
    QCOMPARE(position(), 8.0);
}

void RemotePositionTest::takenSeekIsHeldWhileThePlayerSettles()
{
    playing();
    QVERIFY(waitMs(1050)); // What is lost earlier is sought again.
    m_renderer->setPosition(50, KelvoRenderer::SeekAbsolute);
    flush();
    QVERIFY(waitMs(600)); // The player takes its time.
    Q_EMIT m_transport->seeked(m_transport->epoch(), 50, 1000);
    QVERIFY(waitMs(200));
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 0);
    QVERIFY(position() >= 50);
    QVERIFY(waitMs(850));
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 0);
    QVERIFY(position() < 5);
    // What somebody else does counts at once, and so does what the player says then.
    Q_EMIT m_transport->seeked(m_transport->epoch(), 30, 0);
    QVERIFY(position() >= 30);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 20);
    QVERIFY(position() < 25);
}

// Some accept what comes while they begin, and forget it.
void RemotePositionTest::earlySeekThatIsLostIsSoughtAgain()
{
    playing();
    m_renderer->setPosition(50, KelvoRenderer::SeekAbsolute);
    QCOMPARE(m_transport->calls, QStringList{"seek 50"});
    QTRY_VERIFY(m_transport->polls > 0); // Also when nobody wants to know.
    QVERIFY(waitMs(750));
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 0.8);
    QCOMPARE(m_transport->calls, (QStringList{"seek 50", "seek 50"}));
    QVERIFY(position() >= 50);
    // Once.
    QVERIFY(waitMs(750));
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 1.6);
    QCOMPARE(m_transport->calls.size(), 2);
    QVERIFY(position() < 5);
}

void RemotePositionTest::earlySeekOfSomebodyElseIsNotFought()
{
    playing();
    m_renderer->setPosition(50, KelvoRenderer::SeekAbsolute);
    QVERIFY(waitMs(750));
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 20);
    QCOMPARE(m_transport->calls, QStringList{"seek 50"});
    QVERIFY(position() < 25);
}

void RemotePositionTest::pausesBetweenPolls()
{
    playing();
    m_renderer->pauseAt(10);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 9.7);
    QCOMPARE(m_transport->calls, QStringList());
    QElapsedTimer timer;
    timer.start();
    QTRY_COMPARE(m_transport->calls, QStringList{"pause"});
    QVERIFY(timer.elapsed() >= 250 && timer.elapsed() < 600);
    say(Paused);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 10.03);
    QCOMPARE(int(position()), 10);
}

void RemotePositionTest::pausesWhereThePlayerIs_data()
{
    QTest::addColumn<double>("delay");
    QTest::newRow("at once") << 0.0;
    QTest::newRow("a little later") << 0.3;
    QTest::newRow("much later") << 1.2; // Until its sound device plays.
}

void RemotePositionTest::pausesWhereThePlayerIs()
{
    QFETCH(double, delay);
    QElapsedTimer timer;
    timer.start();
    const auto heard = [&] {
        return std::max(0.0, double(timer.elapsed()) / 1000 - delay);
    };
    m_transport->position = heard;
    playing();
    m_renderer->pauseAt(1);
    QTRY_COMPARE(m_transport->calls, QStringList{"pause"});
    QVERIFY2(heard() >= 1 && heard() < 1.5, qPrintable(QString::number(heard())));
}

// After it was asked last.
void RemotePositionTest::pausesWherePlayerThatStumbledIs()
{
    QElapsedTimer timer;
    timer.start();
    const auto heard = [&] {
        const double passed = double(timer.elapsed()) / 1000;
        return passed < 0.7 ? passed : std::max(0.7, passed - 0.4);
    };
    m_transport->position = heard;
    playing();
    QVERIFY(waitMs(500));
    m_renderer->pauseAt(1);
    QTRY_COMPARE(m_transport->calls, QStringList{"pause"});
    QVERIFY2(heard() >= 1 && heard() < 1.5, qPrintable(QString::number(heard())));
}

void RemotePositionTest::pausesWherePlayerOfWholeSecondsIs()
{
    QElapsedTimer timer;
    timer.start();
    const auto heard = [&] {
        return double(timer.elapsed()) / 1000 - 0.1;
    };
    m_transport->position = [&] {
        return std::max(0.0, std::floor(heard()));
    };
    playing();
    m_renderer->pauseAt(1);
    QTRY_COMPARE(m_transport->calls, QStringList{"pause"});
    QVERIFY2(heard() >= 1 && heard() < 1.8, qPrintable(QString::number(heard())));
}

// Where it has paused it may tell a little less than while it played.
void RemotePositionTest::placeOfThePauseIsItsSecond()
{
    playing();
    m_renderer->pauseAt(3);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 3.01);
    QCOMPARE(m_transport->calls, QStringList{"pause"});
    say(Paused);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 2.94);
    QCOMPARE(position(), 3.0);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 2.3);
    QCOMPARE(position(), 2.3);
}

void RemotePositionTest::placeOfASeekPastThePauseIsItsTarget()
{
    playing();
    m_renderer->pauseAt(6);
    m_renderer->setPosition(8, KelvoRenderer::SeekAbsolute);
    QCOMPARE(m_transport->calls, (QStringList{"seek 8", "pause"}));
    say(Paused);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 7.9);
    QCOMPARE(position(), 8.0);
}

void RemotePositionTest::doesNotAskWhilePaused()
{
    playing();
    say(Paused);
    QCOMPARE(m_transport->polls, 1); // Where exactly it paused.
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 4.5);
    QCOMPARE(position(), 4.5);
    QVERIFY(waitMs(1200));
    QCOMPARE(position(), 4.5);
    QCOMPARE(m_transport->polls, 1);
}

// Players refine the length of what they play as they read it.
void RemotePositionTest::refinedLengthIsToldWhenItsSecondsChange()
{
    playing();
    for (const double seconds : {5.31, 5.12, 5.07, 4.4})
        Q_EMIT m_transport->durationReported(m_transport->epoch(), seconds);
    flush();
    QCOMPARE(m_heard->metadataCount("duration"), 2);
    QCOMPARE(m_heard->metadata("duration"), QVariant(4));
}

void RemotePositionTest::timeBeforeTheFirstStateCountsForTheTransport()
{
    m_renderer->playUri(QUrl("http://media/song"));
    Q_EMIT m_transport->begun(m_transport->epoch(), 3);
    say(Playing);
    QVERIFY(m_transport->progress().passed() >= 3);
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 0);
    QVERIFY(m_transport->progress().passed() >= 3);
    QVERIFY(position() < 2);
    Q_EMIT m_transport->seeked(m_transport->epoch(), 1, 0);
    QVERIFY(m_transport->progress().passed() < 2);
}

// Some never do.
void RemotePositionTest::timeGoesOnUntilThePlayerPauses()
{
    m_renderer->playUri(QUrl("http://media/song"));
    m_renderer->pause();
    say(Playing);
    QVERIFY(m_transport->calls.endsWith(QStringLiteral("pause")));
    QTRY_VERIFY(m_transport->progress().now() > 0.01);
    say(Paused);
    QVERIFY(!m_transport->progress().isRunning());
}
} // namespace

KELVO_TEST(RemotePositionTest)
#include "RemotePositionTest.moc"
