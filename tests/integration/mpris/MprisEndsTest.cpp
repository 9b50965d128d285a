// SPDX-License-Identifier: MIT
// Players that tell of an end in their own way. Whether it is one shows in where the position was.
#include "MprisCase.h"
#include "TestGroup.h"

#include <QElapsedTimer>
#include <QTimer>

namespace {
using States = QList<KelvoRenderer::State>;

class MprisEndsTest : public MprisCase
{
    Q_OBJECT
private Q_SLOTS:
    void endMayBeToldFromTheStart_data();
    void endMayBeToldFromTheStart();
    void positionMayBeLostBeforeTheEnd_data();
    void positionMayBeLostBeforeTheEnd();
    void positionThatIsLostAtLastIsTheEnd();
    void streamWithoutATimeEnds_data();
    void streamWithoutATimeEnds();
    void itemThatBeginsAgainHasEnded();
    void seekFromTheEndIsNoEnd();
    void stopInTheMiddleIsNoEnd();
    void restsAtTheStartAfterTheLastItem();
    void playersQueueDoesNotTakeOver_data();
    void playersQueueDoesNotTakeOver();
    void playersQueueIsStoppedAfterTheLastItem();
    void shortItemMayEndBeforeItMoves();

private:
    /// Lets the plug-in see what the player says now: one question is under way at a time, so that the second one shows
    /// that the first has been answered.
    bool look(FakeMprisPlayer &player);
};

bool MprisEndsTest::look(FakeMprisPlayer &player)
{
    int questions = 0;
    player.onCall = [&questions](const QDBusMessage &call) {
        questions += call.member() == u"GetAll";
        return false;
    };
    const bool looked = QTest::qWaitFor([&] {
        player.change();
        return questions >= 2;
    });
    player.onCall = {};
    return looked;
}

void MprisEndsTest::endMayBeToldFromTheStart_data()
{
    QTest::addColumn<QStringList>("told");
    QTest::addColumn<bool>("tellsSeek");
    QTest::newRow("stopped at the start") << QStringList{"Stopped"} << false;
    QTest::newRow("at the start, then stopped") << QStringList{"Playing", "Stopped"} << false;
    QTest::newRow("paused at the start") << QStringList{"Paused"} << false;
    QTest::newRow("at the start, then paused there") << QStringList{"Playing", "Paused"} << false;
    QTest::newRow("a seek, then stopped") << QStringList{"Playing", "Stopped"} << true;
    QTest::newRow("a seek, then paused") << QStringList{"Playing", "Paused"} << true;
}

void MprisEndsTest::endMayBeToldFromTheStart()
{
    QFETCH(QStringList, told);
    QFETCH(bool, tellsSeek);
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playingListOf(2));
    player.seekTo(59'500'000);
    QVERIFY(isPastSecond(59));
    if (tellsSeek)
        player.seekTo(0);
    for (const QString &state : told) {
        player.player["Position"] = qlonglong(0);
        player.player["PlaybackStatus"] = state;
        QVERIFY(look(player));
    }
    QTRY_VERIFY(player.hasCall("OpenUri http://media/1"));
    QTRY_COMPARE(m_heard->state(), Playing);
    QVERIFY(!m_heard->states.contains(Stopped));
    QVERIFY(!m_heard->states.contains(Paused));
    QCOMPARE(m_heard->media.constLast().index, 1);
    QCOMPARE(m_heard->errors.size(), 0);
}

void MprisEndsTest::positionMayBeLostBeforeTheEnd_data()
{
    QTest::addColumn<bool>("tellsSeek");
    QTest::newRow("silently") << false;
    QTest::newRow("as a seek") << true;
}

// A player that reads ahead, tells of the position once a second, and loses it when it has read all.
void MprisEndsTest::positionMayBeLostBeforeTheEnd()
{
    QFETCH(bool, tellsSeek);
    FakeMprisPlayer player;
    QElapsedTimer timer;
    player.onCall = [&](const QDBusMessage &call) {
        if (call.member() == u"OpenUri") {
            timer.start();
            const QString url = call.arguments().constFirst().toString();
            player.calls.append("OpenUri " + url);
            player.player["Metadata"] = FakeMprisPlayer::metadata(url, 5);
            player.player["PlaybackStatus"] = "Playing";
            player.reply(call);
        } else if (timer.isValid()) {
            const qint64 told = timer.elapsed() < 3900 ? timer.elapsed() / 980 * 980'000 : 0;
            player.player["Position"] = QString::number(told);
            player.player["PlaybackStatus"] = timer.elapsed() < 5100 ? "Playing" : "Stopped";
        }
        return call.member() == u"OpenUri";
    };
    QTimer losses;
    losses.setSingleShot(true);
    connect(&losses, &QTimer::timeout, this, [&] {
        if (tellsSeek)
            player.tellSeek(0);
    });
    QTimer ends;
    connect(&ends, &QTimer::timeout, this, [&] { player.change(); });
    player.appear();
    QVERIFY(listen());
    QVERIFY(playingListOf(2));
    losses.start(3900);
    ends.start(5100);
    QTRY_VERIFY_WITH_TIMEOUT(player.hasCall("OpenUri http://media/1"), 20'000);
    QVERIFY(!m_heard->states.contains(Stopped));
    QCOMPARE(m_heard->errors.size(), 0);
}

void MprisEndsTest::positionThatIsLostAtLastIsTheEnd()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playingListOf(2));
    player.seekTo(59'500'000);
    QVERIFY(isPastSecond(59));
    player.player["Position"] = QStringLiteral("0"); // and stays there
    player.change();
    QTRY_VERIFY(player.hasCall("OpenUri http://media/1"));
}

void MprisEndsTest::streamWithoutATimeEnds_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<bool>("hasPlayed");
    QTest::newRow("it has been read") << "Song" << true;
    QTest::newRow("it has not been reached") << "http://media/stream" << false;
}

// A player that tells neither position nor length of what comes from the web: first it shows the address as the title,
// and the real one when it has read it.
void MprisEndsTest::streamWithoutATimeEnds()
{
    QFETCH(QString, title);
    QFETCH(bool, hasPlayed);
    const QString url = QStringLiteral("http://media/stream");
    FakeMprisPlayer player;
    player.onCall = [&](const QDBusMessage &call) {
        player.player["Position"] = QStringLiteral("0");
        if (call.member() != u"OpenUri")
            return false;
        player.player["Metadata"] = FakeMprisPlayer::metadata(url, 0, url);
        player.player["PlaybackStatus"] = "Playing";
        player.reply(call);
        return true;
    };
    player.appear();
    QVERIFY(listen());
    m_renderer->playUri(QUrl(url));
    QTRY_COMPARE(m_heard->metadata("title"), QVariant(url));
    player.player["Metadata"] = FakeMprisPlayer::metadata(url, 0, title);
    player.change();
    QTRY_COMPARE(m_heard->metadata("title"), QVariant(title));
    player.player["PlaybackStatus"] = "Stopped";
    player.change();
    QTRY_COMPARE(m_heard->state(), Stopped);
    QCoreApplication::processEvents();
    QCOMPARE(m_heard->completed, hasPlayed ? 1 : 0);
    QCOMPARE(m_heard->errorsOf(KelvoError::ReadFailed), hasPlayed ? 0 : 1);
}

// A player that is set to repeat its track.
void MprisEndsTest::itemThatBeginsAgainHasEnded()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playingListOf(2));
    player.seekTo(59'500'000);
    QVERIFY(isPastSecond(59));
    player.player["Position"] = qlonglong(0);
    player.change();
    QTRY_VERIFY(player.hasCall("OpenUri http://media/1"));
}

void MprisEndsTest::seekFromTheEndIsNoEnd()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playingListOf(2));
    player.seekTo(59'500'000);
    QVERIFY(isPastSecond(59));
    player.player["Position"] = qlonglong(0);
    QVERIFY(look(player));
    player.seekTo(0); // Told late.
    QTRY_VERIFY([this] {
        m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
        return m_heard->positionAnswers.constLast() < 10;
    }());
    QVERIFY(isPastSecond(1));
    QCOMPARE(player.calls.size(), 1);
    QCOMPARE(m_heard->states, States());
}

void MprisEndsTest::stopInTheMiddleIsNoEnd()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playingListOf(2));
    player.seekTo(30'000'000);
    QVERIFY(isPastSecond(30));
    player.player["Position"] = qlonglong(0);
    QVERIFY(look(player));
    player.player["PlaybackStatus"] = "Stopped";
    player.change();
    QTRY_COMPARE(m_heard->states, States{Stopped});
    QCOMPARE(m_heard->completed, 0);
    QCOMPARE(player.calls.size(), 1);
}

void MprisEndsTest::restsAtTheStartAfterTheLastItem()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playingListOf(1));
    player.seekTo(59'500'000);
    QVERIFY(isPastSecond(59));
    player.onCall = [&](const QDBusMessage &call) {
        if (call.member() != u"Stop")
            return false;
        // Already at rest.
        player.calls.append("Stop");
        player.reply(call);
        return true;
    };
    player.player["Position"] = qlonglong(0);
    player.player["PlaybackStatus"] = "Paused";
    player.change();
    QTRY_COMPARE(m_heard->completed, 1);
    // Also later that is nothing that somebody plays, whatever it shows.
    QElapsedTimer timer;
    timer.start();
    QTRY_VERIFY_WITH_TIMEOUT((player.change(), timer.elapsed() > 1300), 10'000);
    QVERIFY(look(player));
    player.player["Metadata"] = FakeMprisPlayer::metadata("http://media/first", 10, "First of its list");
    QVERIFY(look(player));
    QCoreApplication::processEvents();
    QCOMPARE(m_heard->states, States{Stopped});
    QCOMPARE(m_heard->media.size(), 0);
    // Until somebody does.
    player.player["PlaybackStatus"] = "Playing";
    player.change();
    QTRY_COMPARE(m_heard->state(), Playing);
}

void MprisEndsTest::playersQueueDoesNotTakeOver_data()
{
    QTest::addColumn<double>("from");
    QTest::newRow("at the end") << 59.5;
    QTest::newRow("once all is read") << 57.5;
}

void MprisEndsTest::playersQueueDoesNotTakeOver()
{
    QFETCH(double, from);
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playingListOf(2));
    player.seekTo(qlonglong(from * 1e6));
    QVERIFY(isPastSecond(uint(from)));
    player.player["Metadata"] = FakeMprisPlayer::metadata("http://elsewhere/theirs", 10, "Theirs");
    player.player["Position"] = qlonglong(0);
    player.change();
    QTRY_VERIFY(player.hasCall("OpenUri http://media/1"));
    QTRY_COMPARE(m_heard->state(), Playing);
    QCOMPARE(m_heard->states, (States{Transitioning, Playing}));
    QCOMPARE(m_heard->media.size(), 1);
    QCOMPARE(m_heard->media.constFirst().index, 1);
    QCOMPARE(m_heard->metadata("title"), QVariant("Song"));
}

void MprisEndsTest::playersQueueIsStoppedAfterTheLastItem()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playingListOf(1));
    player.seekTo(59'500'000);
    QVERIFY(isPastSecond(59));
    player.player["Metadata"] = FakeMprisPlayer::metadata("http://elsewhere/theirs", 10, "Theirs");
    player.player["Position"] = qlonglong(0);
    player.change();
    QTRY_COMPARE(m_heard->completed, 1);
    QTRY_VERIFY(player.hasCall("Stop"));
    QVERIFY(look(player));
    QCoreApplication::processEvents();
    QCOMPARE(m_heard->states, States{Stopped});
    QCOMPARE(m_heard->media.size(), 0);
}

void MprisEndsTest::shortItemMayEndBeforeItMoves()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    player.onCall = [&](const QDBusMessage &call) {
        if (call.member() == u"GetAll") // which adds 20 ms
            player.player["Position"] = qlonglong(-20'000);
        if (call.member() != u"OpenUri")
            return false;
        const QString url = call.arguments().constFirst().toString();
        player.calls.append("OpenUri " + url);
        player.player["Metadata"] = FakeMprisPlayer::metadata(url, 0.3);
        player.player["PlaybackStatus"] = "Playing";
        player.reply(call);
        player.change();
        QTimer::singleShot(300, this, [&player] {
            player.player["PlaybackStatus"] = "Stopped";
            player.change();
        });
        return true;
    };
    m_renderer->playUri(QUrl("http://media/blip"));
    QTRY_COMPARE(m_heard->completed, 1);
    QCOMPARE(m_heard->errors.size(), 0);
    QCOMPARE(m_heard->states, (States{Transitioning, Playing, Stopped}));
    QVERIFY(!player.hasCall("Play"));
}
} // namespace

KELVO_TEST(MprisEndsTest)
#include "MprisEndsTest.moc"
