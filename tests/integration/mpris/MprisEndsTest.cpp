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
    void itemThatBeginsAgainHasEnded();
    void seekFromTheEndIsNoEnd();
    void stopInTheMiddleIsNoEnd();
    void restsAtTheStartAfterTheLastItem();
    void playersQueueDoesNotTakeOver();
    void playersQueueIsStoppedAfterTheLastItem();
    void shortItemMayEndBeforeItMoves();

private:
    /// Lets the plug-in see what the player says now.
    bool look(FakeMprisPlayer &player);
};

bool MprisEndsTest::look(FakeMprisPlayer &player)
{
    int questions = 0;
    player.onCall = [&questions](const QDBusMessage &call) {
        questions += call.member() == u"GetAll";
        return false;
    };
    player.change();
    const bool looked = QTest::qWaitFor([&questions] { return questions > 0; });
    player.onCall = {};
    return looked;
}

void MprisEndsTest::endMayBeToldFromTheStart_data()
{
    QTest::addColumn<QStringList>("told");
    QTest::newRow("stopped at the start") << QStringList{"Stopped"};
    QTest::newRow("at the start, then stopped") << QStringList{"Playing", "Stopped"};
    QTest::newRow("paused at the start") << QStringList{"Paused"};
    QTest::newRow("at the start, then paused there") << QStringList{"Playing", "Paused"};
}

void MprisEndsTest::endMayBeToldFromTheStart()
{
    QFETCH(QStringList, told);
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playingListOf(2));
    player.seekTo(59'500'000);
    QVERIFY(isPastSecond(59));
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
    // Also later that is nothing that somebody plays.
    QElapsedTimer timer;
    timer.start();
    QTRY_VERIFY_WITH_TIMEOUT((player.change(), timer.elapsed() > 1300), 10'000);
    QVERIFY(look(player));
    QCoreApplication::processEvents();
    QCOMPARE(m_heard->states, States{Stopped});
    QCOMPARE(m_heard->media.size(), 0);
    // Until somebody does.
    player.player["PlaybackStatus"] = "Playing";
    player.change();
    QTRY_COMPARE(m_heard->state(), Playing);
}

void MprisEndsTest::playersQueueDoesNotTakeOver()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playingListOf(2));
    player.seekTo(59'500'000);
    QVERIFY(isPastSecond(59));
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
