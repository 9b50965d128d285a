// SPDX-License-Identifier: MIT
// What the engine over a transport makes of what that says. That it makes a renderer is the contract's business.
#include "RemoteCase.h"
#include "TestGroup.h"

namespace {
class RemotePlayerTest : public RemoteCase
{
    Q_OBJECT
private Q_SLOTS:
    void loadsWhatIsToPlay();
    void pauseWaitsForTheItem();
    void itemThatWouldNotPausePlays();
    void resumeCallsOffAPauseOnItsWay();
    void goesOnAfterAPauseThatNobodySaw();
    void seekWaitsForTheItem();
    void dropsReportsOfAnEarlierItem();
    void dropsReportsAfterStop();
    void itemTooShortForAReportHasPlayed();
    void failuresInARowStop();
    void failuresInARowStopAfterAnItemThatPlayed();
    void falseStartsInARowStop();
    void startsThatAreTakenBackInARowStop();
    void aRoundOfEmptyItemsStops();
    void mayBeDeletedInAReport_data();
    void mayBeDeletedInAReport();
};

void RemotePlayerTest::loadsWhatIsToPlay()
{
    m_renderer->playUriWithType(QUrl("http://media/song"), QStringLiteral("audio/ogg"));
    QCOMPARE(m_transport->calls, QStringList{"load http://media/song"});
    QCOMPARE(m_transport->items.constFirst().epoch, 1U);
    QCOMPARE(m_transport->items.constFirst().info.mimeType(), QStringLiteral("audio/ogg"));
    QVERIFY(!m_transport->items.constFirst().paused);
    flush();
    QCOMPARE(m_heard->states, States{Transitioning});
    say(Playing);
    say(Playing);
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing}));
}

void RemotePlayerTest::pauseWaitsForTheItem()
{
    m_renderer->playUri(QUrl("http://media/song"));
    m_renderer->pause();
    QCOMPARE(m_transport->calls.size(), 1);
    say(Playing);
    QCOMPARE(m_transport->calls.constLast(), QStringLiteral("pause"));
    say(Playing);
    QCOMPARE(m_transport->calls.size(), 2);
    say(Paused);
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Paused}));
}

void RemotePlayerTest::itemThatWouldNotPausePlays()
{
    m_renderer->playUri(QUrl("http://media/song"));
    m_renderer->pause();
    say(Playing);
    Q_EMIT m_transport->troubled(KelvoError::CommandRefused, QStringLiteral("no"));
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing}));
    QCOMPARE(m_heard->errorsOf(KelvoError::CommandRefused), 1);
}

void RemotePlayerTest::resumeCallsOffAPauseOnItsWay()
{
    assign(2);
    m_renderer->play();
    say(Playing);
    m_renderer->pause();
    say(Paused);
    m_renderer->next();
    QVERIFY(m_transport->items.constLast().paused);
    m_renderer->resume();
    say(Paused);
    QCOMPARE(m_transport->calls.constLast(), QStringLiteral("resume"));
    say(Playing);
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing, Paused, Transitioning, Playing}));
}

void RemotePlayerTest::goesOnAfterAPauseThatNobodySaw()
{
    m_renderer->playUri(QUrl("http://media/song"));
    m_renderer->pause();
    say(Playing);
    m_renderer->resume();
    flush();
    QCOMPARE(m_transport->calls.mid(1), (QStringList{"pause", "resume"}));
    QCOMPARE(m_heard->states, (States{Transitioning, Playing}));
    // One that it did get to is shown.
    say(Paused);
    say(Playing);
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing, Paused, Playing}));
}

void RemotePlayerTest::seekWaitsForTheItem()
{
    m_renderer->playUri(QUrl("http://media/song"));
    m_renderer->setPosition(7, KelvoRenderer::SeekAbsolute);
    m_renderer->setPosition(3, KelvoRenderer::SeekRelative);
    QCOMPARE(m_transport->calls.size(), 1);
    say(Playing);
    QCOMPARE(m_transport->calls.constLast(), QStringLiteral("seek 10"));
}

void RemotePlayerTest::dropsReportsOfAnEarlierItem()
{
    playing();
    const quint64 earlier = m_transport->epoch();
    m_renderer->playUri(QUrl("http://media/other"));
    flush();
    const QStringList before = m_heard->events;
    Q_EMIT m_transport->stateReported(earlier, Stopped);
    Q_EMIT m_transport->stateReported(earlier, Paused);
    Q_EMIT m_transport->ended(earlier);
    Q_EMIT m_transport->failed(earlier, KelvoError::NotFound, QString());
    Q_EMIT m_transport->fact(earlier, QStringLiteral("title"), {QStringLiteral("old")});
    Q_EMIT m_transport->durationReported(earlier, 5);
    Q_EMIT m_transport->positionReported(earlier, 5);
    flush();
    QCOMPARE(m_heard->events, before);
}

void RemotePlayerTest::dropsReportsAfterStop()
{
    playing();
    m_renderer->stop();
    QCOMPARE(m_transport->calls, QStringList{"unload"});
    say(Playing);
    Q_EMIT m_transport->ended(m_transport->epoch());
    flush();
    QCOMPARE(m_heard->states, States{Stopped});
    QCOMPARE(m_heard->completed, 0);
    m_renderer->stop();
    QCOMPARE(m_transport->calls.size(), 1);
}

void RemotePlayerTest::itemTooShortForAReportHasPlayed()
{
    m_renderer->playUri(QUrl("http://media/blip"));
    Q_EMIT m_transport->durationReported(m_transport->epoch(), 0.1);
    Q_EMIT m_transport->ended(m_transport->epoch());
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing, Stopped}));
    QCOMPARE(m_heard->completed, 1);
}

void RemotePlayerTest::failuresInARowStop()
{
    assign(3);
    m_playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    m_renderer->play();
    for (int i = 0; i < 3; ++i)
        Q_EMIT m_transport->failed(m_transport->epoch(), KelvoError::NotFound, QString());
    flush();
    QCOMPARE(m_transport->items.size(), 3);
    QCOMPARE(m_heard->errors.size(), 4);
    QCOMPARE(m_heard->errors.constLast().code(), KelvoError::NothingPlayable);
    QCOMPARE(m_heard->states, (States{Transitioning, Stopped}));
    QCOMPARE(m_heard->completed, 0);
}

// What has played for long enough speaks for itself only, not for those after it.
void RemotePlayerTest::failuresInARowStopAfterAnItemThatPlayed()
{
    assign(2);
    m_playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    m_renderer->play();
    say(Playing);
    Q_EMIT m_transport->durationReported(m_transport->epoch(), 60);
    QVERIFY(waitMs(1100));
    Q_EMIT m_transport->ended(m_transport->epoch());
    for (int i = 0; i < 2; ++i)
        Q_EMIT m_transport->failed(m_transport->epoch(), KelvoError::NotFound, QString());
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::NothingPlayable), 1);
    QCOMPARE(m_heard->state(), Stopped);
    QCOMPARE(m_transport->items.size(), 3);
}

void RemotePlayerTest::falseStartsInARowStop()
{
    assign(2);
    m_playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    m_renderer->play();
    for (int i = 0; i < 2; ++i) {
        say(Playing);
        Q_EMIT m_transport->failed(m_transport->epoch(), KelvoError::CorruptMedia, QString());
    }
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::NothingPlayable), 1);
    QCOMPARE(m_heard->state(), Stopped);
}

void RemotePlayerTest::startsThatAreTakenBackInARowStop()
{
    assign(2);
    m_playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    m_renderer->play();
    for (int i = 0; i < 2; ++i) {
        say(Playing);
        say(Transitioning);
        // However long it takes the player to give up.
        QVERIFY(waitMs(1100));
        Q_EMIT m_transport->failed(m_transport->epoch(), KelvoError::ReadFailed, QString());
    }
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::NothingPlayable), 1);
    QCOMPARE(m_heard->state(), Stopped);
}

void RemotePlayerTest::aRoundOfEmptyItemsStops()
{
    assign(2);
    m_playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    m_renderer->play();
    for (int i = 0; i < 2; ++i) {
        say(Playing);
        Q_EMIT m_transport->durationReported(m_transport->epoch(), 0.1);
        Q_EMIT m_transport->ended(m_transport->epoch());
    }
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::NothingPlayable), 1);
    QCOMPARE(m_heard->state(), Stopped);
}

void RemotePlayerTest::mayBeDeletedInAReport_data()
{
    QTest::addColumn<QString>("signal");
    for (const char *signal : {"state", "media", "error", "completed", "property"})
        QTest::newRow(signal) << QString(signal);
}

void RemotePlayerTest::mayBeDeletedInAReport()
{
    QFETCH(QString, signal);
    const auto kill = [this] {
        m_renderer.reset();
    };
    if (signal == QLatin1String("state"))
        connect(m_renderer.get(), &KelvoRenderer::stateChanged, this, kill);
    else if (signal == QLatin1String("media"))
        connect(m_renderer.get(), &KelvoRenderer::mediaChanged, this, kill);
    else if (signal == QLatin1String("error"))
        connect(m_renderer.get(), &KelvoRenderer::error, this, kill);
    else if (signal == QLatin1String("completed"))
        connect(m_renderer.get(), &KelvoRenderer::playbackCompleted, this, kill);
    else
        connect(m_renderer.get(), &KelvoRenderer::kelvoPropertyChanged, this, kill);
    m_renderer->playUri(QUrl("http://media/song"));
    m_renderer->getPosition(m_heard.get(), "positionAnswer(uint)");
    Q_EMIT m_transport->volumeReported(5);
    Q_EMIT m_transport->troubled(KelvoError::CommandRefused, QString());
    Q_EMIT m_transport->durationReported(m_transport->epoch(), 0.1);
    Q_EMIT m_transport->ended(m_transport->epoch());
    flush();
    QVERIFY(!m_renderer);
}
} // namespace

KELVO_TEST(RemotePlayerTest)
#include "RemotePlayerTest.moc"
