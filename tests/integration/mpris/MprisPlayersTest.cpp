// SPDX-License-Identifier: MIT
// Players that behave well: how they are found, driven and followed.
#include "LogRecorder.h"
#include "MprisCase.h"
#include "MprisSnapshot.h"
#include "TestGroup.h"

namespace {
using States = QList<KelvoRenderer::State>;

class MprisPlayersTest : public MprisCase
{
    Q_OBJECT
private Q_SLOTS:
    void findsThoseThatAreThereAndThoseThatCome();
    void takesItsNameBeforeItsObject();
    void tellsEqualNamesApart();
    void passesOverTheProxy();
    void takesAProcessOnce();
    void drives();
    void goesOnAfterAPauseThatNobodySaw();
    void setsTheVolume();
    void volumeThatThePlayerLimitsIsAskedFor();
    void volumeDoesNotDrift();
    void lastOfManyVolumesCounts();
    void followsVolumeAndSpeed();
    void whatAPlayerSaysAgainIsToldOnce();
    void followsSeeks();
    void endIsAnEnd();
    void stopElsewhereIsNone();
    void showsWhatAnotherPlays();
    void showsWhatPlaysAtFirst();
    void tellsFacts();
    void takesTheTitleFromTheTrackList();
    void playsWhatSaysItIsStopped();
    void nudgesWhatKeepsAPause();
    void noticesWhatIsNotPlayed();
    void tellsWhatThePlayerCannot();
};

void MprisPlayersTest::findsThoseThatAreThereAndThoseThatCome()
{
    m_registry->unloadPlugin("mpris.so");
    FakeMprisPlayer first("first");
    first.root["Identity"] = "First";
    first.appear();
    m_registry->loadPlugin("mpris.so");
    QTRY_COMPARE(names(), QStringList{"First"});
    FakeMprisPlayer second("second");
    second.root["Identity"] = "Second";
    second.appear();
    QTRY_COMPARE(names(), (QStringList{"First", "Second"}));
    first.vanish();
    QTRY_COMPARE(names(), QStringList{"Second"});
}

void MprisPlayersTest::takesItsNameBeforeItsObject()
{
    FakeMprisPlayer player;
    int refused = 0;
    bool isExported = false;
    player.onCall = [&](const QDBusMessage &call) {
        if (isExported)
            return false;
        ++refused;
        player.refuse(call, "no such object path", QDBusError::UnknownObject);
        return true;
    };
    LogRecorder log;
    player.appear();
    QTRY_VERIFY(refused >= 4);
    QCOMPARE(names(), QStringList());
    isExported = true;
    QTRY_COMPARE(names(), QStringList{"Fake"});
    QCOMPARE(log.warnings(), QStringList());
    QVERIFY(listen());
    QVERIFY(playing());
}

void MprisPlayersTest::tellsEqualNamesApart()
{
    FakeMprisPlayer first("fake");
    first.appear();
    QTRY_COMPARE(names(), QStringList{"Fake"});
    FakeMprisPlayer second("fake.instance42");
    second.appear();
    QTRY_COMPARE(names(), (QStringList{"Fake", "Fake (instance42)"}));
}

void MprisPlayersTest::passesOverTheProxy()
{
    FakeMprisPlayer proxy("playerctld");
    proxy.appear();
    FakeMprisPlayer player;
    player.appear();
    QTRY_COMPARE(names(), QStringList{"Fake"});
    QCOMPARE(proxy.calls, QStringList());
}

void MprisPlayersTest::takesAProcessOnce()
{
    FakeMprisPlayer player;
    player.appear();
    player.appearAs("fake.instance7");
    FakeMprisPlayer last("last");
    last.root["Identity"] = "Last";
    last.appear();
    QTRY_COMPARE(names(), (QStringList{"Fake", "Last"}));
}

void MprisPlayersTest::drives()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    m_renderer->playUri(QUrl("http://media/a song"));
    QTRY_COMPARE(m_heard->states, (States{Transitioning, Playing}));
    QCOMPARE(player.calls.constFirst(), QStringLiteral("OpenUri http://media/a%20song"));
    m_renderer->pause();
    QTRY_COMPARE(m_heard->state(), Paused);
    m_renderer->resume();
    QTRY_COMPARE(m_heard->state(), Playing);
    m_renderer->setPosition(30, KelvoRenderer::SeekAbsolute);
    QTRY_VERIFY(player.hasCall("SetPosition /track/1 30000000"));
    m_renderer->setKelvoProperty("playback-speed", 2.0);
    QTRY_COMPARE(m_heard->property("playback-speed"), QVariant(2.0));
    QVERIFY(player.hasCall("Rate 2"));
    m_renderer->stop();
    QTRY_VERIFY(player.hasCall("Stop"));
    QTRY_COMPARE(m_heard->state(), Stopped);
    QCOMPARE(m_heard->completed, 0);
    QCOMPARE(m_heard->errors.size(), 0);
}

void MprisPlayersTest::goesOnAfterAPauseThatNobodySaw()
{
    FakeMprisPlayer player;
    int pauses = 0;
    player.onCall = [&](const QDBusMessage &call) {
        if (call.member() != u"Pause")
            return false;
        // It is told to go on before anybody looks.
        ++pauses;
        player.reply(call);
        return true;
    };
    player.appear();
    QVERIFY(listen());
    m_renderer->playUri(QUrl("http://media/song"));
    m_renderer->pause();
    QTRY_COMPARE(pauses, 1);
    QCOMPARE(m_heard->state(), Transitioning);
    m_renderer->resume();
    QTRY_COMPARE(m_heard->state(), Playing);
    QCOMPARE(m_heard->states, (States{Transitioning, Playing}));
}

void MprisPlayersTest::setsTheVolume()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    m_renderer->setKelvoProperty("volume", 50);
    QTRY_COMPARE(m_heard->property("volume"), QVariant(50U));
    QVERIFY(qAbs(player.player.value("Volume").toDouble() - 0.5051) < 0.0001);
}

// At rest, when nothing else is asked, by a player that does not tell of what it was told.
void MprisPlayersTest::volumeThatThePlayerLimitsIsAskedFor()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    player.onCall = [&player](const QDBusMessage &call) {
        if (call.member() != u"Set")
            return false;
        player.player["Volume"] = 0.5;
        player.reply(call);
        return true;
    };
    m_renderer->setKelvoProperty("volume", 95);
    QTRY_COMPARE(m_heard->property("volume"), QVariant(50U));
}

void MprisPlayersTest::volumeDoesNotDrift()
{
    for (int volume = 0; volume <= 99; ++volume)
        QCOMPARE(MprisValues::volumeOfShare(MprisValues::shareOfVolume(volume)), volume);
    QCOMPARE(MprisValues::volumeOfShare(1.7), 99);
    QCOMPARE(MprisValues::volumeOfShare(-1), 0);
}

void MprisPlayersTest::lastOfManyVolumesCounts()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    for (int volume = 1; volume <= 90; ++volume)
        m_renderer->setKelvoProperty("volume", volume);
    QTRY_COMPARE(m_heard->property("volume"), QVariant(90U));
    QVERIFY(player.calls.size() <= 3);
}

void MprisPlayersTest::followsVolumeAndSpeed()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    player.player["Volume"] = 0.5;
    player.player["Rate"] = 1.5;
    player.change();
    QTRY_COMPARE(m_heard->property("volume"), QVariant(50U));
    QTRY_COMPARE(m_heard->property("playback-speed"), QVariant(1.5));
}

void MprisPlayersTest::whatAPlayerSaysAgainIsToldOnce()
{
    FakeMprisPlayer player;
    player.player["Volume"] = 0.5;
    player.player["Rate"] = 1.5;
    player.appear();
    QVERIFY(listen());
    int questions = 0;
    player.onCall = [&questions](const QDBusMessage &call) {
        questions += call.member() == u"GetAll" ? 1 : 0;
        return false;
    };
    m_renderer->playUri(QUrl("http://media/song"));
    QTRY_COMPARE(m_heard->metadataCount("title"), 1);
    const QStringList told = m_heard->events;
    for (int i = 0; i < 3; ++i) {
        const int before = questions;
        player.change();
        player.rename(QStringLiteral("Fake"));
        QTRY_VERIFY(questions > before + 1);
        QCOMPARE(m_heard->events, told);
    }
    m_heard->clear();
    m_renderer->pause();
    QTRY_COMPARE(m_heard->state(), Paused);
    for (int i = 0; i < 3; ++i) {
        const int before = questions;
        player.change();
        QTRY_VERIFY(questions > before);
    }
    QCOMPARE(m_heard->states, States{Paused});
    QCOMPARE(m_heard->properties.size(), 0);
}

void MprisPlayersTest::followsSeeks()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    player.seekTo(42'000'000);
    QTRY_VERIFY([this] {
        m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
        return !m_heard->positionAnswers.isEmpty() && m_heard->positionAnswers.constLast() >= 42;
    }());
}

void MprisPlayersTest::endIsAnEnd()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    player.seekTo(59'500'000);
    player.change();
    QTRY_VERIFY(m_renderer);
    player.player["PlaybackStatus"] = "Stopped";
    player.player["Metadata"] = QVariantMap();
    player.change();
    QTRY_COMPARE(m_heard->completed, 1);
    QCOMPARE(m_heard->states, States{Stopped});
}

void MprisPlayersTest::stopElsewhereIsNone()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    player.player["PlaybackStatus"] = "Stopped";
    player.change();
    QTRY_COMPARE(m_heard->states, States{Stopped});
    // And somebody goes on with it.
    player.player["PlaybackStatus"] = "Playing";
    player.change();
    QTRY_COMPARE(m_heard->states, (States{Stopped, Transitioning, Playing}));
    QCOMPARE(m_heard->completed, 0);
}

void MprisPlayersTest::showsWhatAnotherPlays()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    player.player["Metadata"] = FakeMprisPlayer::metadata("http://elsewhere/theirs", 10, "Theirs");
    player.change();
    QTRY_COMPARE(m_heard->media.size(), 1);
    QCOMPARE(m_heard->media.constFirst().index, -1);
    QCOMPARE(m_heard->media.constFirst().content.url, QUrl("http://elsewhere/theirs"));
    QTRY_COMPARE(m_heard->metadata("title"), QVariant("Theirs"));
    QCOMPARE(m_heard->states, States());
    QCOMPARE(player.calls.size(), 1);
}

void MprisPlayersTest::showsWhatPlaysAtFirst()
{
    FakeMprisPlayer player;
    player.player["Metadata"] = FakeMprisPlayer::metadata("http://elsewhere/theirs");
    player.player["PlaybackStatus"] = "Paused";
    player.appear();
    QVERIFY(listen());
    m_renderer->getStatus(m_heard.get(), "statusAnswer(QString,uint,int,QString)");
    QTRY_COMPARE(m_heard->statusAnswers.size(), 1);
    QCOMPARE(m_heard->statusAnswers.constFirst().state, int(Paused));
    m_renderer->resume();
    QTRY_COMPARE(player.calls, QStringList{"Play"});
    QTRY_COMPARE(m_heard->state(), Playing);
    // The probe takes every renderer to be Stopped at first.
    m_heard->violations.clear();
}

void MprisPlayersTest::tellsFacts()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    QVariantMap facts = FakeMprisPlayer::metadata("http://media/song", 61, "New title");
    facts.insert("xesam:artist", QStringList{"One", "Two"});
    facts.insert("xesam:album", "Album");
    facts.insert("mpris:artUrl", "file:///cover.png");
    player.player["Metadata"] = facts;
    player.change();
    QTRY_COMPARE(m_heard->metadata("artist"), QVariant("One, Two"));
    QTRY_COMPARE(m_heard->metadata("cover"), QVariant("file:///cover.png"));
    QCOMPARE(m_heard->metadata("title"), QVariant("New title"));
    QCOMPARE(m_heard->metadata("album"), QVariant("Album"));
    QCOMPARE(m_heard->metadata("duration"), QVariant(61));
}

void MprisPlayersTest::takesTheTitleFromTheTrackList()
{
    FakeMprisPlayer player;
    player.root["HasTrackList"] = true;
    player.trackList = FakeMprisPlayer::metadata("http://elsewhere/theirs", 10, "From the list");
    player.appear();
    QVERIFY(listen());
    player.player["Metadata"] = FakeMprisPlayer::metadata("http://elsewhere/theirs", 10, QString());
    player.player["PlaybackStatus"] = "Playing";
    player.change();
    QTRY_COMPARE(m_heard->metadata("title"), QVariant("From the list"));
}

void MprisPlayersTest::playsWhatSaysItIsStopped()
{
    FakeMprisPlayer player;
    qlonglong position = 0;
    player.onCall = [&](const QDBusMessage &) {
        player.player["PlaybackStatus"] = "Stopped";
        player.player["Position"] = player.calls.isEmpty() ? 0 : position += 10'000;
        return false;
    };
    player.appear();
    QVERIFY(listen());
    m_renderer->playUri(QUrl("http://media/song"));
    // The command makes it say "Playing" for once; from the next question on it says "Stopped".
    QTRY_COMPARE(m_heard->states, (States{Transitioning, Playing}));
    // It ends with its track.
    player.onCall = [&](const QDBusMessage &) {
        player.player["PlaybackStatus"] = "Stopped";
        player.player["Metadata"] = QVariantMap();
        return false;
    };
    player.change();
    QTRY_COMPARE(m_heard->state(), Stopped);
}

void MprisPlayersTest::nudgesWhatKeepsAPause()
{
    FakeMprisPlayer player;
    player.onCall = [&](const QDBusMessage &call) {
        if (call.member() != u"OpenUri")
            return false;
        player.calls.append("OpenUri");
        player.player["Metadata"] = FakeMprisPlayer::metadata(call.arguments().constFirst().toString());
        player.player["PlaybackStatus"] = "Paused";
        player.reply(call);
        return true;
    };
    player.appear();
    QVERIFY(listen());
    m_renderer->playUri(QUrl("http://media/song"));
    QTRY_COMPARE(m_heard->states, (States{Transitioning, Playing}));
    QCOMPARE(player.calls, (QStringList{"OpenUri", "Play"}));
}

void MprisPlayersTest::noticesWhatIsNotPlayed()
{
    FakeMprisPlayer player;
    player.onCall = [&](const QDBusMessage &call) {
        if (call.member() != u"OpenUri")
            return false;
        player.player["Metadata"]
            = QVariantMap{{"mpris:trackid", QVariant::fromValue(QDBusObjectPath("/noplaylist"))}};
        player.reply(call);
        return true;
    };
    player.appear();
    QVERIFY(listen());
    m_renderer->playUri(QUrl("http://media/missing"));
    QTRY_COMPARE(m_heard->errors.size(), 1);
    QCOMPARE(m_heard->errors.constFirst().code(), KelvoError::ReadFailed);
    QVERIFY(m_heard->errors.constFirst().message().contains("http://media/missing"));
    QTRY_COMPARE(m_heard->states, (States{Transitioning, Stopped}));
}

void MprisPlayersTest::tellsWhatThePlayerCannot()
{
    FakeMprisPlayer player;
    player.player["CanSeek"] = false;
    player.player["CanPause"] = false;
    player.player.remove("Volume");
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    m_renderer->setPosition(5, KelvoRenderer::SeekAbsolute);
    m_renderer->pause();
    m_renderer->setKelvoProperty("volume", 5);
    QTRY_COMPARE(m_heard->errors.size(), 3);
    QCOMPARE(m_heard->errorsOf(KelvoError::NotSeekable), 1);
    QCOMPARE(m_heard->errorsOf(KelvoError::NotSupported), 2);
    QCOMPARE(player.calls.size(), 1);
}
} // namespace

KELVO_TEST(MprisPlayersTest)
#include "MprisPlayersTest.moc"
