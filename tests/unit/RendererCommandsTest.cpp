// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "KelvoRegistry.h"
#include "KelvoRendererController.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "RecordingRenderer.h"
#include "TestGroup.h"

#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QTest>
#include <QToolButton>

#include <optional>

using Command = std::function<void(KelvoRendererController &)>;
Q_DECLARE_METATYPE(Command)

/// What each command sends to the current renderer, and that it sends nothing without one.
class RendererCommandsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_renderer = std::make_unique<RecordingRenderer>("r1", "one");
        KelvoRegistry::instance()->addRenderer(m_renderer.get());
        m_console = std::make_unique<ConsoleFixture>();
        m_controller = m_console->application()->renderers();
        m_timer = m_controller->findChild<QTimer *>();
        m_renderer->takeCalls();
    }

    void cleanup()
    {
        m_console.reset();
        m_renderer.reset();
    }

    void command_data()
    {
        QTest::addColumn<Command>("command");
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("calls");
        using C = KelvoRendererController;
        const auto row
            = [](const char *name, const Command &command, const char *line, const QStringList &calls) {
                  QTest::newRow(name) << command << QString::fromLatin1(line) << calls;
              };
        row("play", &C::play, "KelvoRendererController::play 0", {"play()"});
        row("pause", &C::pause, "KelvoRendererController::pause", {"pause()"});
        row("resume", &C::resume, "KelvoRendererController::resume", {"resume()"});
        row("stop", &C::stop, "KelvoRendererController::stop", {"stop()"});
        row("next", &C::next, "KelvoRendererController::next", {"next()"});
        row("prev", &C::prev, "KelvoRendererController::prev", {"previous()"});
        row("goToIndex", [](C &c) { c.goToIndex(3); }, "KelvoRendererController::goToIndex",
            {"gotoIndex(3)"});
        row("pauseAt", [](C &c) { c.pauseAt(6); }, "KelvoRendererController::pauseAt( 6 )", {"pauseAt(6)"});
        row("uri", [](C &c) { c.playUri(QUrl("http://h/a"), QString()); }, "KelvoRendererController::playUri",
            {"playUri(http://h/a)"});
        row("uri of a type", [](C &c) { c.playUri(QUrl("http://h/a"), "audio/x-scpls"); },
            "KelvoRendererController::playUri", {"playUriWithType(http://h/a,audio/x-scpls)"});
        row("seek back", &C::seekBack, "void KelvoRendererController::seekBack()",
            {"setPosition(-10,1)", "getPosition()"});
        row("seek forward", &C::seekForw, "void KelvoRendererController::seekForw()",
            {"setPosition(10,1)", "getPosition()"});
        row("seek", [](C &c) { c.seek(42); }, "void KelvoRendererController::seek(int)",
            {"setPosition(42,0)"});
        row("auto advance on", [](C &c) { c.setAutoAdvance(true); }, "",
            {"setKelvoProperty(auto-advance,bool,true)"});
        row("auto advance off", [](C &c) { c.setAutoAdvance(false); }, "",
            {"setKelvoProperty(auto-advance,bool,false)"});
        row("position", &C::invokeGetPosition, "", {"getPosition()"});
        row("pause frame", &C::showPauseFrame, "KelvoRendererController::showPauseFrame",
            {"setKelvoProperty(current-frame-on-pause,bool,true)"});
        row("video window", [](C &c) { c.videoScreenXIDChanged(77); },
            "KelvoRendererController::videoScreenXIDChanged, xid =  77", {"setKelvoProperty(xid,uint,77)"});
    }

    void command()
    {
        QFETCH(Command, command);
        QFETCH(QString, line);
        QFETCH(QStringList, calls);
        LogRecorder log;
        command(*m_controller);
        QCOMPARE(log.lines().mid(0, 1).join(QString()), line);
        QCOMPARE(m_renderer->calls(), calls);
    }

    void withoutARendererOnlyTheLogLine_data() { command_data(); }

    void withoutARendererOnlyTheLogLine()
    {
        QFETCH(Command, command);
        QFETCH(QString, line);
        {
            // The box would report that its last entry went, which resets the state.
            const QSignalBlocker blocker(m_console->window());
            KelvoRegistry::instance()->removeRenderer(m_renderer.get());
        }
        m_renderer->takeCalls();
        LogRecorder log;
        command(*m_controller);
        QCOMPARE(log.lines(), line.isEmpty() ? QStringList() : QStringList(line));
        QCOMPARE(m_renderer->calls(), QStringList());
    }

    void handlePlay_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("call");
        QTest::addColumn<bool>("timerRuns");
        QTest::newRow("stopped plays") << int(KelvoRenderer::Stopped) << "play()" << false;
        QTest::newRow("playing pauses") << int(KelvoRenderer::Playing) << "pause()" << false;
        QTest::newRow("paused resumes") << int(KelvoRenderer::Paused) << "resume()" << true;
        QTest::newRow("transitioning pauses") << int(KelvoRenderer::Transitioning) << "pause()" << false;
        QTest::newRow("unknown state does nothing") << 4 << QString() << true;
    }

    void handlePlay()
    {
        QFETCH(int, state);
        QFETCH(QString, call);
        QFETCH(bool, timerRuns);
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing); // the position timer runs
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::State(state));
        m_renderer->takeCalls();
        LogRecorder log;
        m_controller->handlePlay();
        QCOMPARE(log.lines().first(), QStringLiteral("KelvoRendererController::handlePlay"));
        QCOMPARE(m_renderer->calls(), call.isEmpty() ? QStringList() : QStringList(call));
        QCOMPARE(m_timer->isActive(), timerRuns);
    }

    void handlePlayWithoutARenderer()
    {
        KelvoRegistry::instance()->removeRenderer(m_renderer.get());
        LogRecorder log;
        m_controller->handlePlay();
        QCOMPARE(log.lines(), QStringList("KelvoRendererController::handlePlay"));
    }

    void buttonTextFollowsTheReportNotTheCommand()
    {
        m_console->find<QToolButton>("m_music_playButton")->click();
        QCOMPARE(m_console->find<QToolButton>("m_music_playButton")->text(), QStringLiteral("Play"));
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        QCOMPARE(m_console->find<QToolButton>("m_music_playButton")->text(), QStringLiteral("Pause"));
    }

    void stopResetsTheDisplayAtOnce()
    {
        m_console->window()->showDuration(100);
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        m_controller->rendererMediaPositionChanged(50);
        QVERIFY(m_timer->isActive());
        m_controller->stop();
        QVERIFY(!m_timer->isActive());
        QCOMPARE(m_console->find<QToolButton>("m_music_playButton")->text(), QStringLiteral("Play"));
        QCOMPARE(m_console->find<QLabel>("m_music_durationLabel")->text(), QStringLiteral("0:00 /\n1:40"));
    }

    /// The renderer is asked between the two, so that no tick and no late report finds a half reset display.
    void stopKeepsItsOrder()
    {
        const auto *button = m_console->find<QToolButton>("m_music_playButton");
        const auto *label = m_console->find<QLabel>("m_music_durationLabel");
        const auto display = [&] {
            return QStringLiteral("%1 %2 %3").arg(m_timer->isActive()).arg(button->text(), label->text());
        };
        QStringList seen;
        m_console->window()->showDuration(100);
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        m_controller->rendererMediaPositionChanged(50);
        QCOMPARE(display(), QStringLiteral("1 Pause 0:50 /\n1:40"));
        m_renderer->onCall = [&] {
            seen.append(display());
        };
        connect(m_console->find<QSlider>("m_music_durationSlider"), &QSlider::valueChanged, this,
            [&] { seen.append(button->text()); });
        m_controller->stop();
        m_renderer->onCall = {};
        m_console->find<QSlider>("m_music_durationSlider")->disconnect(this);
        QCOMPARE(seen, QStringList({"0 Pause 0:50 /\n1:40", "Play"}));
    }

    void seekWhileStoppedIsRememberedAndSent()
    {
        m_controller->seek(42);
        QCOMPARE(m_renderer->takeCalls(), QStringList("setPosition(42,0)"));
        LogRecorder log;
        m_controller->play();
        QVERIFY(log.contains("KelvoRendererController::play 42"));
        QCOMPARE(m_renderer->calls(), QStringList("play()")); // the position is not sent again
    }

    void seekWhilePlayingIsNotRemembered()
    {
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        m_controller->seek(42);
        LogRecorder log;
        m_controller->play();
        QVERIFY(log.contains("KelvoRendererController::play 0"));
    }

    void seekWithoutARendererIsRemembered()
    {
        KelvoRegistry::instance()->removeRenderer(m_renderer.get());
        m_controller->seek(42);
        LogRecorder log;
        m_controller->play();
        QVERIFY(log.contains("KelvoRendererController::play 42"));
    }

    void pauseAtForgetsThePendingPosition()
    {
        m_controller->seek(42);
        m_controller->pauseAt(6);
        LogRecorder log;
        m_controller->play();
        QVERIFY(log.contains("KelvoRendererController::play -1"));
    }

    void pauseAtWithoutARendererKeepsThePendingPosition()
    {
        KelvoRegistry::instance()->removeRenderer(m_renderer.get());
        m_controller->seek(42);
        m_controller->pauseAt(6);
        LogRecorder log;
        m_controller->play();
        QVERIFY(log.contains("KelvoRendererController::play 42"));
    }

    void twoSeekBackClicks()
    {
        m_console->find<QToolButton>("m_music_seekBackButton")->click();
        m_console->find<QToolButton>("m_video_seekBackButton")->click();
        QCOMPARE(m_renderer->calls(),
            QStringList({"setPosition(-10,1)", "getPosition()", "setPosition(-10,1)", "getPosition()"}));
    }

    void fastPlayback_data()
    {
        QTest::addColumn<Command>("start");
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("call");
        QTest::newRow("forward") << Command(&KelvoRendererController::startFastForward)
                                 << "void KelvoRendererController::startFastForward()"
                                 << "setKelvoProperty(playback-speed,double,2)";
        QTest::newRow("rewind") << Command(&KelvoRendererController::startFastRewind)
                                << "void KelvoRendererController::startFastRewind()"
                                << "setKelvoProperty(playback-speed,double,-2)";
    }

    void fastPlayback()
    {
        QFETCH(Command, start);
        QFETCH(QString, line);
        QFETCH(QString, call);
        LogRecorder log;
        // Timers of one loop fire in their order, however late all of them are.
        QObject others;
        std::optional<QStringList> early;
        std::optional<QStringList> late;
        QTimer::singleShot(650, Qt::PreciseTimer, &others, [&] { early = m_renderer->calls(); });
        start(*m_controller);
        QTimer::singleShot(750, Qt::PreciseTimer, &others, [&] { late = m_renderer->calls(); });
        QCOMPARE(log.lines(), QStringList(line));
        QCOMPARE(m_renderer->calls(), QStringList());
        QCOMPARE(m_timer->interval(), 1000);
        QTRY_VERIFY(late);
        QCOMPARE(early, QStringList());
        QCOMPARE(late, QStringList(call));
        QCOMPARE(m_timer->interval(), 500);
        m_renderer->takeCalls();

        m_controller->seekForw(); // the click that ends the press
        QCOMPARE(m_renderer->calls(), QStringList());
        m_controller->stopFastPlayback();
        QVERIFY(log.contains("void KelvoRendererController::stopFastPlayback()"));
        QCOMPARE(m_renderer->takeCalls(), QStringList("setKelvoProperty(playback-speed,double,1)"));
        QCOMPARE(m_timer->interval(), 1000);
        m_controller->seekBack();
        QCOMPARE(m_renderer->calls(), QStringList({"setPosition(-10,1)", "getPosition()"}));
    }

    void swallowedClickCountsForBothDirections()
    {
        m_controller->startFastRewind();
        m_controller->startFastRewind();
        m_renderer->takeCalls();
        m_controller->seekBack();
        QCOMPARE(m_renderer->calls(), QStringList());
        m_controller->seekBack();
        QCOMPARE(m_renderer->calls().size(), 2);
    }

    void stopWithoutActiveFastPlaybackSendsNoSpeed()
    {
        m_controller->stopFastPlayback();
        m_controller->startFastForward(); // only armed
        m_controller->stopFastPlayback();
        QCOMPARE(m_renderer->calls(), QStringList());
    }

    void delayedStartAfterAStopArmsAgain()
    {
        m_controller->startFastForward();
        m_controller->stopFastPlayback();
        LogRecorder log;
        QTRY_COMPARE(log.count("void KelvoRendererController::startFastForward()"), 1);
        QCOMPARE(m_renderer->calls(), QStringList()); // armed again, not active
        QTRY_COMPARE(m_renderer->calls(), QStringList("setKelvoProperty(playback-speed,double,2)"));
        m_controller->stopFastPlayback();
    }

    void fastPlaybackWithoutARenderer()
    {
        KelvoRegistry::instance()->removeRenderer(m_renderer.get());
        m_controller->startFastForward();
        m_controller->startFastForward();
        QCOMPARE(m_timer->interval(), 500);
        m_controller->stopFastPlayback();
        QCOMPARE(m_timer->interval(), 1000);
    }

    void volumeDialogOpensWithTheReportedVolume()
    {
        Q_EMIT m_renderer->kelvoPropertyChanged("volume", 120U);
        ModalCloser closer;
        m_controller->adjustVolume();
        QCOMPARE(closer.seen(), QStringList("Adjust volume"));
        // The dialog goes to 99 only, and what it shows it sends.
        QCOMPARE(m_renderer->calls(), QStringList("setKelvoProperty(volume,int,99)"));
    }

    void volumeDialogWithoutARenderer()
    {
        KelvoRegistry::instance()->removeRenderer(m_renderer.get());
        ModalCloser closer;
        m_controller->adjustVolume();
        QCOMPARE(closer.seen(), QStringList("Adjust volume"));
    }

    void rendererGoesWhileTheVolumeDialogIsOpen()
    {
        Q_EMIT m_renderer->kelvoPropertyChanged("volume", 40U);
        ModalCloser closer;
        closer.whenOpen = [this](const QWidget *dialog) {
            KelvoRegistry::instance()->removeRenderer(m_renderer.get());
            m_renderer.reset();
            dialog->findChild<QPushButton *>("m_upButton")->click();
            QCOMPARE(dialog->findChild<QLabel *>("m_volumeField")->text(), QStringLiteral("41"));
        };
        m_controller->adjustVolume();
        QCOMPARE(closer.seen(), QStringList("Adjust volume"));
    }

    void pauseFrameTwiceWithoutAReportSendsTheSame()
    {
        m_controller->showPauseFrame();
        m_controller->showPauseFrame();
        QCOMPARE(m_renderer->takeCalls(),
            QStringList({"setKelvoProperty(current-frame-on-pause,bool,true)",
                "setKelvoProperty(current-frame-on-pause,bool,true)"}));
        Q_EMIT m_renderer->kelvoPropertyChanged("current-frame-on-pause", true);
        m_controller->showPauseFrame();
        QCOMPARE(m_renderer->calls(), QStringList("setKelvoProperty(current-frame-on-pause,bool,false)"));
    }

private:
    std::unique_ptr<RecordingRenderer> m_renderer;
    std::unique_ptr<ConsoleFixture> m_console;
    KelvoRendererController *m_controller = nullptr;
    QTimer *m_timer = nullptr;
};

KELVO_WIDGET_TEST(RendererCommandsTest)
#include "RendererCommandsTest.moc"
