// SPDX-License-Identifier: MIT
// Players that change their names, and players whose properties contradict each other.
#include "MprisCase.h"
#include "TestGroup.h"

#include <QElapsedTimer>

namespace {
using States = QList<KelvoRenderer::State>;

class MprisContradictionsTest : public MprisCase
{
    Q_OBJECT
private Q_SLOTS:
    void followsTheName();
    void keepsNamesApartWhenTheyChange();
    void keepsTheNameWhenItCannotBeAsked();
    void followsNamesOnceASecond();
    void playerWithoutControlIsNotDriven_data();
    void playerWithoutControlIsNotDriven();
    void positionBeyondTheEndIsTheEnd();
    void positionBeyondTheEndPlaysOn();
    void rateOfZeroIsNone();
    void statusThatNobodyKnowsIsStopped();
    void unfitAddressesAreNotHandedOn_data();
    void unfitAddressesAreNotHandedOn();
    void unfitCoversAreNotHandedOn_data();
    void unfitCoversAreNotHandedOn();
};

void MprisContradictionsTest::followsTheName()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    QStringList names;
    connect(m_renderer, &KelvoRenderer::nameChanged, this, [&](const QString &name) { names << name; });
    player.rename("Kitchen");
    QTRY_COMPARE(names, QStringList{"Kitchen"});
    QCOMPARE(m_renderer->name(), QStringLiteral("Kitchen"));
    QCOMPARE(find("fake"), m_renderer.get());
    QCOMPARE(m_heard->states, States());
    // Troubles have the new name too.
    player.onCall = [&](const QDBusMessage &call) {
        if (call.member() == u"Pause")
            player.refuse(call, "not today");
        return call.member() == u"Pause";
    };
    m_renderer->pause();
    QTRY_COMPARE(m_heard->errors.size(), 1);
    QCOMPARE(m_heard->errors.constFirst().message(), QStringLiteral("Pause of Kitchen: not today"));
}

void MprisContradictionsTest::keepsNamesApartWhenTheyChange()
{
    FakeMprisPlayer first("first");
    FakeMprisPlayer second("second");
    second.root["Identity"] = "Other";
    first.appear();
    second.appear();
    QTRY_COMPARE(names(), (QStringList{"Fake", "Other"}));
    second.rename("Fake");
    QTRY_COMPARE(names(), (QStringList{"Fake", "Fake (second)"}));
}

void MprisContradictionsTest::keepsTheNameWhenItCannotBeAsked()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    int refused = 0;
    player.onCall = [&](const QDBusMessage &call) {
        const bool isName = call.member() == u"GetAll"
            && call.arguments().constFirst() == QStringLiteral("org.mpris.MediaPlayer2");
        if (isName) {
            ++refused;
            player.refuse(call, "no");
        }
        return isName;
    };
    player.rename("Kitchen");
    QTRY_COMPARE(refused, 1);
    // What comes after the refusal shows that it was passed over.
    QVERIFY(playing());
    QCOMPARE(m_renderer->name(), QStringLiteral("Fake"));
}

void MprisContradictionsTest::followsNamesOnceASecond()
{
    FakeMprisPlayer player;
    int questions = 0;
    player.onCall = [&](const QDBusMessage &call) {
        questions += call.member() == u"GetAll"
            && call.arguments().constFirst() == QStringLiteral("org.mpris.MediaPlayer2");
        return false;
    };
    player.appear();
    QVERIFY(listen());
    questions = 0;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i <= 500; ++i)
        player.rename(QStringLiteral("Name %1").arg(i));
    QTRY_COMPARE(m_renderer->name(), QStringLiteral("Name 500"));
    QVERIFY2(questions <= 2 + timer.elapsed() / 1000, qPrintable(QString::number(questions)));
}

void MprisContradictionsTest::playerWithoutControlIsNotDriven_data()
{
    QTest::addColumn<QString>("what");
    for (const char *what : {"pause", "seek", "volume"})
        QTest::newRow(what) << QString(what);
}

// Its CanPause and CanSeek are true.
void MprisContradictionsTest::playerWithoutControlIsNotDriven()
{
    QFETCH(QString, what);
    FakeMprisPlayer player;
    player.player["CanControl"] = false;
    player.player["Metadata"] = FakeMprisPlayer::metadata("http://elsewhere/theirs");
    player.player["PlaybackStatus"] = "Playing";
    player.appear();
    QVERIFY(listen());
    if (what == "pause")
        m_renderer->pause();
    else if (what == "seek")
        m_renderer->setPosition(5, KelvoRenderer::SeekAbsolute);
    else
        m_renderer->setKelvoProperty("volume", 50);
    QTRY_COMPARE(m_heard->errors.size(), 1);
    const KelvoError::Code code = what == "seek" ? KelvoError::NotSeekable : KelvoError::NotSupported;
    QCOMPARE(m_heard->errors.constFirst().code(), code);
    QCOMPARE(player.calls, QStringList());
    m_heard->violations.clear(); // The probe takes every renderer to be Stopped at first.
}

void MprisContradictionsTest::positionBeyondTheEndIsTheEnd()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    player.seekTo(1'000'000'000'000);
    QTRY_VERIFY([this] {
        m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
        return !m_heard->positionAnswers.isEmpty() && m_heard->positionAnswers.constLast() == 60;
    }());
    QCOMPARE(m_heard->states, States());
    QCOMPARE(m_heard->errors.size(), 0);
}

void MprisContradictionsTest::positionBeyondTheEndPlaysOn()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    player.seekTo(90'000'000);
    player.player["PlaybackStatus"] = "Paused";
    player.change();
    QTRY_COMPARE(m_heard->states, States{Paused});
    player.player["PlaybackStatus"] = "Stopped";
    player.change();
    // So far on, that is an end.
    QTRY_COMPARE(m_heard->completed, 1);
}

void MprisContradictionsTest::rateOfZeroIsNone()
{
    FakeMprisPlayer player;
    player.player["Rate"] = 0.0;
    player.player["MinimumRate"] = 0.0;
    player.player["MaximumRate"] = 0.0;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    player.player["Volume"] = 0.0;
    player.change();
    QTRY_COMPARE(m_heard->property("volume"), QVariant(0U));
    QVERIFY(!m_heard->property("playback-speed").isValid());
    m_renderer->setKelvoProperty("playback-speed", 2.0);
    QTRY_COMPARE(m_heard->errorsOf(KelvoError::NotSupported), 1);
    m_renderer->pause();
    QTRY_COMPARE(m_heard->states, States{Paused});
}

void MprisContradictionsTest::statusThatNobodyKnowsIsStopped()
{
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    player.player["PlaybackStatus"] = "Bogus";
    player.change();
    QTRY_COMPARE(m_heard->states, States{Stopped});
    QCOMPARE(m_heard->completed, 0);
    player.player["PlaybackStatus"] = "Playing";
    player.change();
    QTRY_COMPARE(m_heard->states, (States{Stopped, Transitioning, Playing}));
}

void MprisContradictionsTest::unfitAddressesAreNotHandedOn_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("isFit");
    QTest::newRow("script") << "JavaScript:alert(1)" << false;
    QTest::newRow("content") << "data:text/html,<b>x</b>" << false;
    QTest::newRow("relative") << "songs/one.mp3" << false;
    QTest::newRow("file") << "file:///songs/one.mp3" << true;
    QTest::newRow("player's own") << "radio:station:7" << true;
}

void MprisContradictionsTest::unfitAddressesAreNotHandedOn()
{
    QFETCH(QString, url);
    QFETCH(bool, isFit);
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    player.player["Metadata"] = FakeMprisPlayer::metadata(url, 60, "Theirs");
    player.player["PlaybackStatus"] = "Playing";
    player.change();
    QTRY_COMPARE(m_heard->state(), Playing);
    QTRY_COMPARE(m_heard->metadata("title"), QVariant("Theirs"));
    QCOMPARE(m_heard->media.size(), 1);
    QCOMPARE(m_heard->media.constFirst().content.url, isFit ? QUrl(url) : QUrl());
}

void MprisContradictionsTest::unfitCoversAreNotHandedOn_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("isFit");
    QTest::newRow("script") << "javascript:alert(1)" << false;
    QTest::newRow("content") << "data:image/png;base64,AAAA" << false;
    QTest::newRow("relative") << "cover.png" << false;
    QTest::newRow("file") << "file:///cover.png" << true;
    QTest::newRow("web") << "https://media/cover.png" << true;
}

void MprisContradictionsTest::unfitCoversAreNotHandedOn()
{
    QFETCH(QString, url);
    QFETCH(bool, isFit);
    FakeMprisPlayer player;
    player.appear();
    QVERIFY(listen());
    QVERIFY(playing());
    QVariantMap facts = FakeMprisPlayer::metadata("http://media/song", 60, "With a cover");
    facts.insert("mpris:artUrl", url);
    player.player["Metadata"] = facts;
    player.change();
    QTRY_COMPARE(m_heard->metadata("title"), QVariant("With a cover"));
    // A fact that is told comes in one go with the title.
    QCoreApplication::processEvents();
    QCOMPARE(m_heard->metadata("cover"), isFit ? QVariant(url) : QVariant());
}
} // namespace

KELVO_TEST(MprisContradictionsTest)
#include "MprisContradictionsTest.moc"
