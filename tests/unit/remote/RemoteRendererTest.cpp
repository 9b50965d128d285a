// SPDX-License-Identifier: MIT
// What the renderer makes of what a transport says. That it is a renderer like any other is the contract's business.
#include "RemoteRenderer.h"
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoTestCase.h"
#include "RendererProbe.h"
#include "ScriptedTransport.h"
#include "TestGroup.h"

#include <QStandardItemModel>
#include <QTest>

#include <memory>

namespace {
using States = QList<KelvoRenderer::State>;
constexpr auto Stopped = KelvoRenderer::Stopped;
constexpr auto Playing = KelvoRenderer::Playing;
constexpr auto Paused = KelvoRenderer::Paused;
constexpr auto Transitioning = KelvoRenderer::Transitioning;

class RemoteRendererTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void loadsWhatIsToPlay();
    void pauseWaitsForTheItem();
    void itemThatWouldNotPausePlays();
    void resumeCallsOffAPauseOnItsWay();
    void seekWaitsForTheItem();
    void dropsReportsOfAnEarlierItem();
    void dropsReportsAfterStop();
    void itemTooShortForAReportHasPlayed();

    void stopElsewhereIsNoEnd();
    void goesOnWhenResumedElsewhere();
    void pauseElsewhereIsShown();
    void anotherControllersItemIsShown();
    void anotherControllersItemEndsOurPlaylist();
    void anotherControllersItemIsDriven();
    void playTakesOurPlaylistUpAgain();
    void playingWithoutAnItemIsShown();
    void previousInAnotherControllersItemBeginsItAgain();

    void tellsWhatThePlayerCannot_data();
    void tellsWhatThePlayerCannot();
    void refusesASpeedThatThePlayerHasNot();
    void takesNoNoticeOfTheWindow_data();
    void takesNoNoticeOfTheWindow();
    void hasNoPolicyOverride();
    void reportsTheVolumeItWasGiven();
    void reportsTheSameVolumeToo();
    void reportsVolumeSetElsewhere();
    void takesTheSpeedAlong();
    void refusedCommandsAreErrors();
    void renamesItself();

    void asksNobodyWhileNobodyWantsToKnow();
    void asksAtMostOnceASecond();
    void answersWithThePlayersPosition();
    void answersWhenThePlayerIsSilent();
    void staleReportAfterASeekIsIgnored();
    void pausesBetweenPolls();
    void doesNotAskWhilePaused();

    void failuresInARowStop();
    void falseStartsInARowStop();
    void aRoundOfEmptyItemsStops();
    void mayBeDeletedInAReport_data();
    void mayBeDeletedInAReport();

private:
    void playing(const QUrl &uri = QUrl("http://media/song"));
    void assign(int count);
    void say(KelvoRenderer::State state) { Q_EMIT m_transport->stateReported(m_transport->epoch(), state); }
    void flush() { QCoreApplication::processEvents(); }
    bool waitMs(int milliseconds);
    double position();

    ScriptedTransport *m_transport = nullptr;
    std::unique_ptr<RemoteRenderer> m_renderer;
    std::unique_ptr<RendererProbe> m_heard;
    std::unique_ptr<KelvoGeneralSourcePlaylist> m_playlist;
};

void RemoteRendererTest::init()
{
    KelvoTestCase::init();
    auto transport = std::make_unique<ScriptedTransport>();
    m_transport = transport.get();
    m_renderer = std::make_unique<RemoteRenderer>(
        std::move(transport), QStringLiteral("remote"), QStringLiteral("Player"));
    m_heard = std::make_unique<RendererProbe>(*m_renderer);
}

void RemoteRendererTest::cleanup()
{
    QCOMPARE(m_heard->violations, QStringList());
    m_renderer.reset();
    m_heard.reset();
    m_playlist.reset();
}

void RemoteRendererTest::playing(const QUrl &uri)
{
    m_renderer->playUri(uri);
    say(Playing);
    flush();
    m_transport->calls.clear();
    m_heard->clear();
}

void RemoteRendererTest::assign(int count)
{
    m_playlist = std::make_unique<KelvoGeneralSourcePlaylist>(
        KelvoPlaylist::getNewPlaylistId(), QStringLiteral("list"), QStringLiteral("KelvoTrackerSource"));
    auto *model = new QStandardItemModel(m_playlist.get());
    for (int i = 0; i < count; ++i) {
        model->appendRow({new QStandardItem(QString::number(i)), new QStandardItem(QString::number(i)),
            new QStandardItem(QStringLiteral("http://media/%1").arg(i))});
    }
    m_playlist->setUnderlyingModel(model);
    m_renderer->assignPlaylist(m_playlist.get());
}

/// Lets that time pass; for what must not happen meanwhile.
bool RemoteRendererTest::waitMs(int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    return QTest::qWaitFor([&] { return timer.elapsed() >= milliseconds; }, 5 * milliseconds);
}

double RemoteRendererTest::position()
{
    const qsizetype before = m_heard->propertyAnswers.size();
    m_renderer->kelvoProperty(
        KelvoRenderer::PropertyPosition, m_heard.get(), "propertyAnswer(QString,QVariant)");
    if (!QTest::qWaitFor([&] { return m_heard->propertyAnswers.size() > before; }))
        return -1;
    return m_heard->propertyAnswers.constLast().second.toDouble();
}

void RemoteRendererTest::loadsWhatIsToPlay()
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

void RemoteRendererTest::pauseWaitsForTheItem()
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

void RemoteRendererTest::itemThatWouldNotPausePlays()
{
    m_renderer->playUri(QUrl("http://media/song"));
    m_renderer->pause();
    say(Playing);
    Q_EMIT m_transport->troubled(KelvoError::CommandRefused, QStringLiteral("no"));
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing}));
    QCOMPARE(m_heard->errorsOf(KelvoError::CommandRefused), 1);
}

void RemoteRendererTest::resumeCallsOffAPauseOnItsWay()
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

void RemoteRendererTest::seekWaitsForTheItem()
{
    m_renderer->playUri(QUrl("http://media/song"));
    m_renderer->setPosition(7, KelvoRenderer::SeekAbsolute);
    m_renderer->setPosition(3, KelvoRenderer::SeekRelative);
    QCOMPARE(m_transport->calls.size(), 1);
    say(Playing);
    QCOMPARE(m_transport->calls.constLast(), QStringLiteral("seek 10"));
}

void RemoteRendererTest::dropsReportsOfAnEarlierItem()
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

void RemoteRendererTest::dropsReportsAfterStop()
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

void RemoteRendererTest::itemTooShortForAReportHasPlayed()
{
    m_renderer->playUri(QUrl("http://media/blip"));
    Q_EMIT m_transport->ended(m_transport->epoch());
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing, Stopped}));
    QCOMPARE(m_heard->completed, 1);
}

void RemoteRendererTest::stopElsewhereIsNoEnd()
{
    assign(2);
    m_renderer->play();
    say(Playing);
    say(Stopped);
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing, Stopped}));
    QCOMPARE(m_heard->completed, 0);
    // Nothing is fought, nothing follows.
    QCOMPARE(m_transport->calls, QStringList{"load http://media/0"});
    QCOMPARE(position(), 0.0);
}

void RemoteRendererTest::goesOnWhenResumedElsewhere()
{
    playing();
    say(Stopped);
    say(Playing);
    flush();
    QCOMPARE(m_heard->states, (States{Stopped, Transitioning, Playing}));
}

void RemoteRendererTest::pauseElsewhereIsShown()
{
    playing();
    say(Paused);
    say(Playing);
    flush();
    QCOMPARE(m_heard->states, (States{Paused, Playing}));
    QCOMPARE(m_transport->calls, QStringList());
}

void RemoteRendererTest::anotherControllersItemIsShown()
{
    playing();
    Q_EMIT m_transport->replaced(KelvoMediaInfo({}, QUrl("http://elsewhere/song")));
    Q_EMIT m_transport->stateReported(0, Paused);
    Q_EMIT m_transport->fact(0, QStringLiteral("title"), {QStringLiteral("Theirs")});
    flush();
    QCOMPARE(m_heard->media.size(), 1);
    QCOMPARE(m_heard->media.constFirst().index, -1);
    QCOMPARE(m_heard->media.constFirst().content.url, QUrl("http://elsewhere/song"));
    QVERIFY(!m_heard->playlists.constLast());
    QCOMPARE(m_heard->states, States{Paused});
    QCOMPARE(m_heard->metadata("title"), QVariant(QStringLiteral("Theirs")));
}

void RemoteRendererTest::anotherControllersItemEndsOurPlaylist()
{
    assign(3);
    m_renderer->play();
    say(Playing);
    Q_EMIT m_transport->replaced(KelvoMediaInfo({}, QUrl("http://elsewhere/song")));
    Q_EMIT m_transport->stateReported(0, Playing);
    Q_EMIT m_transport->ended(0);
    flush();
    QCOMPARE(m_transport->items.size(), 1);
    QCOMPARE(m_heard->state(), Stopped);
    // Edits of a playlist that is not in play change nothing.
    m_playlist->clear();
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing, Stopped}));
}

void RemoteRendererTest::anotherControllersItemIsDriven()
{
    Q_EMIT m_transport->replaced(KelvoMediaInfo({}, QUrl("http://elsewhere/song")));
    Q_EMIT m_transport->stateReported(0, Playing);
    Q_EMIT m_transport->durationReported(0, 60);
    m_renderer->pause();
    Q_EMIT m_transport->stateReported(0, Paused);
    m_renderer->resume();
    m_renderer->setPosition(100, KelvoRenderer::SeekAbsolute);
    m_renderer->stop();
    QCOMPARE(m_transport->calls, (QStringList{"pause", "resume", "seek 60", "unload"}));
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing, Paused, Stopped}));
}

void RemoteRendererTest::playTakesOurPlaylistUpAgain()
{
    assign(3);
    m_renderer->gotoIndex(1);
    say(Playing);
    Q_EMIT m_transport->replaced(KelvoMediaInfo({}, QUrl("http://elsewhere/song")));
    Q_EMIT m_transport->stateReported(0, Playing);
    m_renderer->play();
    say(Playing);
    flush();
    QCOMPARE(m_transport->calls.constLast(), QStringLiteral("load http://media/1"));
    QCOMPARE(m_heard->media.constLast().index, 1);
    QCOMPARE(m_heard->playlists.constLast(), m_playlist.get());
}

void RemoteRendererTest::playingWithoutAnItemIsShown()
{
    Q_EMIT m_transport->stateReported(0, Stopped);
    Q_EMIT m_transport->stateReported(0, Playing);
    flush();
    QCOMPARE(m_heard->states, (States{Transitioning, Playing}));
    QCOMPARE(m_heard->media.size(), 1);
    QCOMPARE(m_heard->media.constFirst().index, -1);
}

void RemoteRendererTest::previousInAnotherControllersItemBeginsItAgain()
{
    Q_EMIT m_transport->replaced(KelvoMediaInfo({}, QUrl("http://elsewhere/song")));
    Q_EMIT m_transport->stateReported(0, Playing);
    m_renderer->previous();
    QCOMPARE(m_transport->calls, QStringList{"seek 0"});
    m_renderer->next();
    QCOMPARE(m_transport->calls.constLast(), QStringLiteral("unload"));
}

void RemoteRendererTest::tellsWhatThePlayerCannot_data()
{
    QTest::addColumn<int>("what");
    QTest::addColumn<int>("code");
    QTest::newRow("pause") << 0 << int(KelvoError::NotSupported);
    QTest::newRow("pauseAt") << 1 << int(KelvoError::NotSupported);
    QTest::newRow("seek") << 2 << int(KelvoError::NotSeekable);
    QTest::newRow("volume") << 3 << int(KelvoError::NotSupported);
}

void RemoteRendererTest::tellsWhatThePlayerCannot()
{
    QFETCH(int, what);
    QFETCH(int, code);
    playing();
    m_transport->can = {false, false, false, 1.0, 1.0};
    if (what == 0)
        m_renderer->pause();
    else if (what == 1)
        m_renderer->pauseAt(3);
    else if (what == 2)
        m_renderer->setPosition(3, KelvoRenderer::SeekAbsolute);
    else
        m_renderer->setKelvoProperty("volume", 3);
    flush();
    QCOMPARE(m_heard->errors.size(), 1);
    QCOMPARE(int(m_heard->errors.constFirst().code()), code);
    QVERIFY(!m_heard->errors.constFirst().message().isEmpty());
    QCOMPARE(m_transport->calls, QStringList());
    QCOMPARE(m_heard->states, States());
}

void RemoteRendererTest::refusesASpeedThatThePlayerHasNot()
{
    playing();
    m_renderer->setKelvoProperty("playback-speed", 8.0);
    m_renderer->setKelvoProperty("playback-speed", -1.0);
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::NotSupported), 2);
    QVERIFY(m_heard->errors.constFirst().message().contains(QLatin1String("0.5 to 2")));
    m_renderer->setKelvoProperty("playback-speed", 2.0);
    QCOMPARE(m_transport->calls, QStringList{"rate 2"});
    Q_EMIT m_transport->rateReported(2.0);
    flush();
    QCOMPARE(m_heard->property("playback-speed"), QVariant(2.0));
}

void RemoteRendererTest::takesNoNoticeOfTheWindow_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("errors");
    QTest::newRow("xid") << "xid" << QVariant(1U) << 0;
    QTest::newRow("autopaint") << "autopaint" << QVariant(true) << 0;
    QTest::newRow("render-rectangle") << "render-rectangle" << QVariant(QStringLiteral("0,0,1,1")) << 0;
    QTest::newRow("current-frame-on-pause") << "current-frame-on-pause" << QVariant(true) << 1;
}

// The console offers its window to every renderer that is chosen; a frame is only asked for by a tester.
void RemoteRendererTest::takesNoNoticeOfTheWindow()
{
    QFETCH(QString, name);
    QFETCH(QVariant, value);
    QFETCH(int, errors);
    m_renderer->setKelvoProperty(name, value);
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::NotSupported), errors);
    QCOMPARE(m_heard->errors.size(), errors);
}

void RemoteRendererTest::hasNoPolicyOverride()
{
    m_renderer->kelvoProperty("policy-override", m_heard.get(), "propertyAnswer(QString,QVariant)");
    m_renderer->setKelvoProperty("policy-override", true);
    flush();
    QTRY_COMPARE(m_heard->propertyAnswers.size(), 1);
    QVERIFY(!m_heard->propertyAnswers.constFirst().second.isValid());
    QCOMPARE(m_heard->errorsOf(KelvoError::NotSupported), 1);
}

void RemoteRendererTest::reportsTheVolumeItWasGiven()
{
    m_renderer->setKelvoProperty("volume", 42);
    flush();
    QCOMPARE(m_heard->properties.size(), 0);
    Q_EMIT m_transport->volumeReported(42);
    Q_EMIT m_transport->volumeReported(42);
    flush();
    QCOMPARE(m_heard->properties.size(), 1);
    QCOMPARE(m_heard->property("volume"), QVariant(42U));
}

void RemoteRendererTest::reportsTheSameVolumeToo()
{
    Q_EMIT m_transport->volumeReported(42);
    flush();
    m_heard->clear();
    m_renderer->setKelvoProperty("volume", 42);
    flush();
    QCOMPARE(m_heard->property("volume"), QVariant(42U));
}

void RemoteRendererTest::reportsVolumeSetElsewhere()
{
    Q_EMIT m_transport->volumeReported(42);
    Q_EMIT m_transport->volumeReported(43);
    flush();
    QCOMPARE(m_heard->properties.size(), 2);
    QCOMPARE(m_heard->property("volume"), QVariant(43U));
}

void RemoteRendererTest::takesTheSpeedAlong()
{
    m_renderer->setKelvoProperty("playback-speed", 1.5);
    QCOMPARE(m_transport->calls, QStringList());
    m_renderer->playUri(QUrl("http://media/song"));
    QCOMPARE(m_transport->items.constFirst().rate, 1.5);
    m_transport->can = {true, true, true, 1.0, 1.0};
    m_renderer->playUri(QUrl("http://media/other"));
    flush();
    QCOMPARE(m_transport->items.constLast().rate, 1.0);
    QCOMPARE(m_heard->property("playback-speed"), QVariant(1.0));
}

void RemoteRendererTest::refusedCommandsAreErrors()
{
    playing();
    m_renderer->setKelvoProperty("volume", 3);
    Q_EMIT m_transport->troubled(KelvoError::Timeout, QStringLiteral("Volume of Player: no answer"));
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::Timeout), 1);
    QCOMPARE(m_heard->errors.constFirst().message(), QStringLiteral("Volume of Player: no answer"));
    QCOMPARE(m_heard->states, States());
    QCOMPARE(m_heard->properties.size(), 0);
}

void RemoteRendererTest::renamesItself()
{
    QStringList names;
    connect(m_renderer.get(), &KelvoRenderer::nameChanged, this, [&](const QString &name) { names << name; });
    Q_EMIT m_transport->nameReported(QStringLiteral("Player"));
    Q_EMIT m_transport->nameReported(QStringLiteral("Kitchen"));
    QCOMPARE(names, QStringList());
    flush();
    QCOMPARE(names, QStringList{"Kitchen"});
    QCOMPARE(m_renderer->name(), QStringLiteral("Kitchen"));
}

void RemoteRendererTest::asksNobodyWhileNobodyWantsToKnow()
{
    playing();
    Q_EMIT m_transport->durationReported(m_transport->epoch(), 600);
    QVERIFY(waitMs(300));
    QCOMPARE(m_transport->polls, 0);
    // Near the end the position matters.
    Q_EMIT m_transport->positionReported(m_transport->epoch(), 598);
    QTRY_COMPARE(m_transport->polls, 1);
}

void RemoteRendererTest::asksAtMostOnceASecond()
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

void RemoteRendererTest::answersWithThePlayersPosition()
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

void RemoteRendererTest::answersWhenThePlayerIsSilent()
{
    playing();
    QElapsedTimer timer;
    timer.start();
    QVERIFY(position() < 2);
    QVERIFY(timer.elapsed() < 1500);
}

void RemoteRendererTest::staleReportAfterASeekIsIgnored()
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

void RemoteRendererTest::pausesBetweenPolls()
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

void RemoteRendererTest::doesNotAskWhilePaused()
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

void RemoteRendererTest::failuresInARowStop()
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

void RemoteRendererTest::falseStartsInARowStop()
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

void RemoteRendererTest::aRoundOfEmptyItemsStops()
{
    assign(2);
    m_playlist->setRepeatMode(KelvoPlaylist::RepeatAll);
    m_renderer->play();
    for (int i = 0; i < 2; ++i) {
        say(Playing);
        Q_EMIT m_transport->ended(m_transport->epoch());
    }
    flush();
    QCOMPARE(m_heard->errorsOf(KelvoError::NothingPlayable), 1);
    QCOMPARE(m_heard->state(), Stopped);
}

void RemoteRendererTest::mayBeDeletedInAReport_data()
{
    QTest::addColumn<QString>("signal");
    for (const char *signal : {"state", "media", "error", "completed", "property"})
        QTest::newRow(signal) << QString(signal);
}

void RemoteRendererTest::mayBeDeletedInAReport()
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
    Q_EMIT m_transport->ended(m_transport->epoch());
    flush();
    QVERIFY(!m_renderer);
}
} // namespace

KELVO_TEST(RemoteRendererTest)
#include "RemoteRendererTest.moc"
