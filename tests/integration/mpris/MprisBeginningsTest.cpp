// SPDX-License-Identifier: MIT
// What players say between the moment they are given an item and the moment it plays, or will never play.
#include "MprisCase.h"
#include "TestGroup.h"

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>

namespace {
using States = QList<KelvoRenderer::State>;

/// A player that says what a test gives it, some time after it took the item.
class MprisBeginningsTest : public MprisCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        MprisCase::init();
        m_player = std::make_unique<FakeMprisPlayer>();
    }
    void cleanup()
    {
        m_player.reset();
        MprisCase::cleanup();
    }
    void slowOneIsWaitedFor_data();
    void slowOneIsWaitedFor();
    void busyOneIsWaitedFor();
    void oneThatPlaysOnForAWhileIsWaitedFor();
    void unplayableItemIsAnError_data();
    void unplayableItemIsAnError();
    void itemThatIsGivenUpLateIsAnError();
    void sameItemUnderAnotherAddress_data();
    void sameItemUnderAnotherAddress();
    void playIsRepeatedWhileItRestsPaused();
    void refusalToPlayIsOneError();
    void oneThatBeginsByItselfIsNotToldTo();
    void pauseThatNobodyMeantIsTakenBack_data();
    void pauseThatNobodyMeantIsTakenBack();
    void pauseThatSomebodyMeansIsShown_data();
    void pauseThatSomebodyMeansIsShown();
    void pausesWhereThePlayerIs();
    void pauseIsPossibleOnlyWhileItPlays_data();
    void pauseIsPossibleOnlyWhileItPlays();

private:
    using Call = std::function<void()>;
    /// It begins paused, is about to go on by itself when it is told to play, and takes that for so many times the other way.
    void beginByItself(int mistakes);
    /// From now on, what follows when it is given an item.
    void whenOpened(const std::function<void(const QString &url)> &says);
    void later(int milliseconds, Call call)
    {
        QTimer::singleShot(milliseconds, m_player.get(), [this, call] {
            call();
            m_player->change();
        });
    }
    void show(const QString &url, const char *status)
    {
        m_player->player["Metadata"] = url.isEmpty() ? QVariantMap() : FakeMprisPlayer::metadata(url, 0);
        m_player->player["Position"] = qlonglong(0);
        m_player->player["PlaybackStatus"] = QString::fromLatin1(status);
    }

    std::unique_ptr<FakeMprisPlayer> m_player;
};

void MprisBeginningsTest::whenOpened(const std::function<void(const QString &url)> &says)
{
    m_player->onCall = [this, says](const QDBusMessage &call) {
        if (call.member() != u"OpenUri" && call.member() != u"Play")
            return false;
        m_player->calls.append(call.member());
        m_player->reply(call);
        if (call.member() == u"OpenUri")
            says(call.arguments().constFirst().toString());
        return true;
    };
}

void MprisBeginningsTest::slowOneIsWaitedFor_data()
{
    QTest::addColumn<QVariantMap>("meanwhile");
    const auto track = [](const char *path) {
        return QVariantMap{{"mpris:trackid", QVariant::fromValue(QDBusObjectPath(path))}};
    };
    QTest::newRow("says nothing") << QVariantMap();
    QTest::newRow("says that there is no track") << track("/org/mpris/MediaPlayer2/TrackList/NoTrack");
    QTest::newRow("shows what it had") << FakeMprisPlayer::metadata("http://elsewhere/theirs");
}

void MprisBeginningsTest::slowOneIsWaitedFor()
{
    QFETCH(QVariantMap, meanwhile);
    m_player->player["Metadata"] = meanwhile;
    m_player->appear();
    QVERIFY(listen());
    whenOpened([this](const QString &url) {
        later(2600, [this, url] { show(url, "Stopped"); });
        later(2800, [this, url] { show(url, "Playing"); });
    });
    m_renderer->playUri(QUrl("http://media/slow"));
    QTRY_COMPARE(m_heard->state(), Playing);
    QCOMPARE(m_heard->states, (States{Transitioning, Playing}));
    QCOMPARE(m_heard->errors.size(), 0);
    // And it is ours.
    QCOMPARE(m_heard->media.size(), 1);
    QCOMPARE(m_heard->media.constFirst().content.url, QUrl("http://media/slow"));
}

// It says for a moment that it is stopped with our item, and nothing more until the server has answered.
void MprisBeginningsTest::busyOneIsWaitedFor()
{
    m_player->appear();
    QVERIFY(listen());
    QList<QDBusMessage> waiting;
    bool isBusy = false;
    m_player->onCall = [&](const QDBusMessage &call) {
        if (call.member() == u"OpenUri") {
            show(call.arguments().constFirst().toString(), "Stopped");
            m_player->reply(call);
            QTimer::singleShot(100, m_player.get(), [&] { isBusy = true; });
            QTimer::singleShot(2700, m_player.get(), [&] {
                isBusy = false;
                // First what was asked meanwhile, as of before.
                for (const QDBusMessage &question : std::exchange(waiting, {}))
                    m_player->handleMessage(question, QDBusConnection(QString()));
                m_player->player["PlaybackStatus"] = "Playing";
                m_player->change();
            });
            return true;
        }
        if (isBusy)
            waiting.append(call);
        return isBusy || call.member() == u"Play";
    };
    m_renderer->playUri(QUrl("http://media/slow"));
    QTRY_COMPARE(m_heard->states, (States{Transitioning, Playing}));
    QCOMPARE(m_heard->errors.size(), 0);
}

// It plays what it had until it has fetched enough of ours.
void MprisBeginningsTest::oneThatPlaysOnForAWhileIsWaitedFor()
{
    m_player->appear();
    QVERIFY(listen());
    QVERIFY(playing());
    whenOpened([this](const QString &url) { later(2600, [this, url] { show(url, "Playing"); }); });
    m_renderer->playUri(QUrl("http://media/slow"));
    QTRY_COMPARE(m_heard->states, (States{Transitioning, Playing}));
    QCOMPARE(m_heard->errors.size(), 0);
    QCOMPARE(m_heard->media.size(), 1);
    QCOMPARE(m_heard->media.constFirst().content.url, QUrl("http://media/slow"));
    QCOMPARE(m_player->player["Metadata"].toMap().value("xesam:url").toString(), "http://media/slow");
}

void MprisBeginningsTest::unplayableItemIsAnError_data()
{
    QTest::addColumn<QStringList>("says");
    QTest::addColumn<QVariantMap>("shows");
    const QVariantMap ours = FakeMprisPlayer::metadata("http://media/missing", 0);
    const QVariantMap nameless{{"mpris:trackid", QVariant::fromValue(QDBusObjectPath("/track/0"))}};
    QTest::newRow("stopped with its address") << QStringList{"Stopped"} << ours;
    QTest::newRow("tries, then stops") << QStringList{"Playing", "Stopped"} << ours;
    QTest::newRow("stopped with a track without an address") << QStringList{"Stopped"} << nameless;
    QTest::newRow("tries and shows nothing") << QStringList{"Playing", "Stopped"} << QVariantMap();
}

void MprisBeginningsTest::unplayableItemIsAnError()
{
    QFETCH(QStringList, says);
    QFETCH(QVariantMap, shows);
    m_player->player["Metadata"] = shows.contains("xesam:url") ? QVariantMap() : shows;
    m_player->appear();
    QVERIFY(listen());
    whenOpened([&](const QString &) {
        m_player->player["Metadata"] = shows;
        m_player->player["PlaybackStatus"] = says.constFirst();
        // Text, which the player does not move on.
        m_player->player["Position"] = QStringLiteral("0");
        m_player->change();
        later(300, [&] { m_player->player["PlaybackStatus"] = says.constLast(); });
    });
    QElapsedTimer timer;
    timer.start();
    m_renderer->playUri(QUrl("http://media/missing"));
    QTRY_COMPARE(m_heard->errors.size(), 1);
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(m_heard->errors.constFirst().code(), KelvoError::ReadFailed);
    QVERIFY(m_heard->errors.constFirst().message().contains("http://media/missing"));
    QTRY_COMPARE(m_heard->states, (States{Transitioning, Stopped}));
    QCOMPARE(m_heard->completed, 0);
}

// A server that cannot be reached: some say for long that they play.
void MprisBeginningsTest::itemThatIsGivenUpLateIsAnError()
{
    m_player->appear();
    QVERIFY(listen());
    whenOpened([this](const QString &url) {
        show(url, "Playing");
        m_player->player["Position"] = QStringLiteral("0");
        m_player->change();
        later(2500, [this] { m_player->player["PlaybackStatus"] = "Stopped"; });
    });
    m_renderer->playUri(QUrl("http://media/unreachable"));
    QTRY_COMPARE(m_heard->errors.size(), 1);
    QCOMPARE(m_heard->errors.constFirst().code(), KelvoError::ReadFailed);
    QTRY_COMPARE(m_heard->state(), Stopped);
    QCOMPARE(m_heard->completed, 0);
}

void MprisBeginningsTest::sameItemUnderAnotherAddress_data()
{
    QTest::addColumn<QString>("ours");
    QTest::addColumn<QString>("theirs");
    QTest::newRow("path") << "file:///songs/a b.ogg"
                          << "/songs/a b.ogg";
    QTest::newRow("path with a percent sign") << "file:///songs/100%25.ogg"
                                              << "/songs/100%.ogg";
    QTest::newRow("host of a file") << "file:///songs/a.ogg"
                                    << "file://localhost/songs/a.ogg";
    QTest::newRow("more is escaped") << "file:///songs/a(b)'c.ogg"
                                     << "file:///songs/a%28b%29%27c.ogg";
    QTest::newRow("more is escaped on the web") << "http://media/a(b).ogg"
                                                << "http://media/a%28b%29.ogg";
}

void MprisBeginningsTest::sameItemUnderAnotherAddress()
{
    QFETCH(QString, ours);
    QFETCH(QString, theirs);
    // The one before was the same, so that nothing changes in what the player shows.
    m_player->player["Metadata"] = FakeMprisPlayer::metadata(theirs);
    m_player->appear();
    QVERIFY(listen());
    whenOpened([&](const QString &) { show(theirs, "Playing"); });
    m_renderer->playUri(QUrl(ours));
    QTRY_COMPARE(m_heard->states, (States{Transitioning, Playing}));
    // Written in the other way it is still ours.
    m_player->player["Metadata"] = FakeMprisPlayer::metadata(ours, 0, "Other title");
    m_player->change();
    QTRY_COMPARE(m_heard->metadata("title"), QVariant("Other title"));
    QCOMPARE(m_heard->media.size(), 1);
}

void MprisBeginningsTest::playIsRepeatedWhileItRestsPaused()
{
    m_player->appear();
    QVERIFY(listen());
    int ignored = 0;
    m_player->onCall = [&](const QDBusMessage &call) {
        if (call.member() == u"Play" && ++ignored <= 2) {
            m_player->reply(call); // Not there yet.
            return true;
        }
        if (call.member() != u"OpenUri")
            return false;
        show(call.arguments().constFirst().toString(), "Paused");
        m_player->reply(call);
        return true;
    };
    m_renderer->playUri(QUrl("http://media/song"));
    QTRY_COMPARE(m_heard->states, (States{Transitioning, Playing}));
    QCOMPARE(ignored, 3);
}

void MprisBeginningsTest::refusalToPlayIsOneError()
{
    m_player->appear();
    QVERIFY(listen());
    m_player->onCall = [&](const QDBusMessage &call) {
        if (call.member() == u"Play")
            m_player->refuse(call, "what is this");
        else if (call.member() == u"OpenUri")
            show(call.arguments().constFirst().toString(), "Paused");
        if (call.member() == u"OpenUri")
            m_player->reply(call);
        return call.member() == u"OpenUri" || call.member() == u"Play";
    };
    QElapsedTimer timer;
    timer.start();
    m_renderer->playUri(QUrl("http://media/junk"));
    QTRY_COMPARE(m_heard->errors.size(), 1);
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(m_heard->errors.constFirst().code(), KelvoError::ReadFailed);
    QVERIFY(m_heard->errors.constFirst().message().contains("http://media/junk"));
    QVERIFY(m_heard->errors.constFirst().message().contains("what is this"));
    QTRY_COMPARE(m_heard->states, (States{Transitioning, Stopped}));
}

void MprisBeginningsTest::beginByItself(int mistakes)
{
    m_player->onCall = [this, mistakes](const QDBusMessage &call) {
        if (call.member() != u"OpenUri" && call.member() != u"Play")
            return false;
        m_player->calls.append(call.member());
        m_player->reply(call);
        if (call.member() == u"OpenUri") {
            show(call.arguments().constFirst().toString(), "Paused");
        } else if (m_player->calls.count("Play") <= mistakes) {
            later(20, [this] { m_player->player["PlaybackStatus"] = "Playing"; });
            later(150, [this] { m_player->player["PlaybackStatus"] = "Paused"; });
        } else {
            m_player->player["PlaybackStatus"] = "Playing";
        }
        m_player->change();
        return true;
    };
}

void MprisBeginningsTest::oneThatBeginsByItselfIsNotToldTo()
{
    m_player->appear();
    QVERIFY(listen());
    whenOpened([this](const QString &url) {
        show(url, "Paused");
        m_player->change();
        later(50, [this] { m_player->player["PlaybackStatus"] = "Playing"; });
    });
    m_renderer->playUri(QUrl("http://media/song"));
    QTRY_COMPARE(m_heard->states, (States{Transitioning, Playing}));
    QVERIFY(!m_player->hasCall("Play"));
}

void MprisBeginningsTest::pauseThatNobodyMeantIsTakenBack_data()
{
    QTest::addColumn<int>("mistakes");
    QTest::addColumn<int>("sent");
    QTest::addColumn<States>("states");
    QTest::addColumn<int>("plays");
    QTest::newRow("takes it right") << 0 << 0 << States{Transitioning, Playing} << 1;
    QTest::newRow("takes one wrong") << 1 << 0 << States{Transitioning, Playing} << 2;
    QTest::newRow("takes one wrong, and is sent elsewhere") << 1 << 7 << States{Transitioning, Playing} << 2;
    // Then it is left alone.
    QTest::newRow("takes all wrong") << 9 << 0 << States{Transitioning, Playing, Paused} << 2;
}

void MprisBeginningsTest::pauseThatNobodyMeantIsTakenBack()
{
    QFETCH(int, mistakes);
    QFETCH(int, sent);
    QFETCH(States, states);
    QFETCH(int, plays);
    m_player->appear();
    QVERIFY(listen());
    beginByItself(mistakes);
    m_renderer->playUri(QUrl("http://media/song"));
    if (sent > 0)
        m_renderer->setPosition(sent, KelvoRenderer::SeekAbsolute);
    QTRY_COMPARE(m_heard->states, states);
    // And stays.
    QVERIFY(isPastSecond(states.endsWith(Playing) ? uint(sent) + 1 : 0));
    QCOMPARE(m_heard->states, states);
    QCOMPARE(m_player->calls.count("Play"), plays);
    QCOMPARE(m_heard->errors.size(), 0);
}

void MprisBeginningsTest::pauseThatSomebodyMeansIsShown_data()
{
    QTest::addColumn<bool>("isNudged");
    QTest::addColumn<bool>("isOurs");
    QTest::addColumn<qlonglong>("position");
    QTest::newRow("ours") << true << true << qlonglong(20'000);
    QTest::newRow("theirs in the midst") << true << false << qlonglong(700'000);
    QTest::newRow("theirs where nobody told it to play") << false << false << qlonglong(20'000);
}

void MprisBeginningsTest::pauseThatSomebodyMeansIsShown()
{
    QFETCH(bool, isNudged);
    QFETCH(bool, isOurs);
    QFETCH(qlonglong, position);
    m_player->appear();
    QVERIFY(listen());
    if (isNudged)
        beginByItself(0);
    QVERIFY(playing());
    const auto plays = m_player->calls.count("Play");
    QCOMPARE(plays, isNudged ? 1 : 0);
    m_player->player["Position"] = position;
    if (isOurs) {
        m_renderer->pause();
    } else {
        m_player->player["PlaybackStatus"] = "Paused";
        m_player->change();
    }
    QTRY_COMPARE(m_heard->state(), Paused);
    QCOMPARE(m_player->calls.count("Play"), plays);
}

// It says that it plays while its sound device is still waiting.
void MprisBeginningsTest::pausesWhereThePlayerIs()
{
    m_player->appear();
    QVERIFY(listen());
    QElapsedTimer sinceOpened;
    m_player->onCall = [&](const QDBusMessage &call) {
        if (call.member() == u"OpenUri")
            sinceOpened.start();
        if (call.member() == u"GetAll" && sinceOpened.isValid()
            && m_player->player["PlaybackStatus"] == QStringLiteral("Playing"))
            m_player->player["Position"] = 1000 * std::max<qlonglong>(100, sinceOpened.elapsed() - 900);
        return false;
    };
    m_renderer->pauseAt(1);
    m_renderer->playUri(QUrl("http://media/song"));
    QTRY_COMPARE(m_heard->state(), Paused);
    QVERIFY(m_player->player["Position"].toLongLong() >= 1'000'000);
    m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
    QTRY_COMPARE(m_heard->positionAnswers, QList<uint>{1});
    QCOMPARE(m_heard->states, (States{Transitioning, Playing, Paused}));
}

void MprisBeginningsTest::pauseIsPossibleOnlyWhileItPlays_data()
{
    QTest::addColumn<bool>("atSecond");
    QTest::newRow("at once") << false;
    QTest::newRow("at a second") << true;
}

void MprisBeginningsTest::pauseIsPossibleOnlyWhileItPlays()
{
    QFETCH(bool, atSecond);
    QElapsedTimer sinceOpened;
    m_player->onCall = [&](const QDBusMessage &call) {
        if (call.member() == u"OpenUri")
            sinceOpened.start();
        if (call.member() == u"GetAll") {
            m_player->player["CanPause"] = m_player->player["PlaybackStatus"] != QStringLiteral("Stopped");
            m_player->player["Position"]
                = sinceOpened.isValid() ? 1000 * qlonglong(sinceOpened.elapsed()) : 0;
        }
        return false;
    };
    m_player->appear();
    QVERIFY(listen());
    if (atSecond)
        m_renderer->pauseAt(1);
    m_renderer->playUri(QUrl("http://media/song"));
    if (!atSecond)
        m_renderer->pause();
    QTRY_VERIFY(m_player->hasCall("Pause"));
    QTRY_COMPARE(m_heard->state(), Paused);
    QCOMPARE(m_heard->errors.size(), 0);
}
} // namespace

KELVO_TEST(MprisBeginningsTest)
#include "MprisBeginningsTest.moc"
