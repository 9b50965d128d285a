// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "FakePlaylist.h"
#include "FatalCall.h"
#include "KelvoRegistry.h"
#include "KelvoRendererController.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "RecordingRenderer.h"
#include "TestGroup.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QListView>
#include <QProgressBar>
#include <QPushButton>
#include <QSlider>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTest>
#include <QTextEdit>
#include <QToolButton>

#include <algorithm>
#include <ctime>

/// What the display makes of the reports and answers of the current renderer.
class RendererReportsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_renderer = std::make_unique<RecordingRenderer>("r1", "one");
        m_playlist = std::make_unique<FakePlaylist>("p1", "list one", QStringList{"a", "b", "c"});
        m_secondPlaylist = std::make_unique<FakePlaylist>("p2", "list two", QStringList{"d", "e"});
        KelvoRegistry::instance()->addRenderer(m_renderer.get());
        KelvoRegistry::instance()->addPlaylist(m_playlist.get());
        KelvoRegistry::instance()->addPlaylist(m_secondPlaylist.get());
        m_console = std::make_unique<ConsoleFixture>();
        m_controller = m_console->application()->renderers();
        m_timer = m_controller->findChild<QTimer *>();
        m_renderer->takeCalls();
    }

    void cleanup()
    {
        m_console.reset();
        m_renderer.reset();
        m_playlist.reset();
        m_secondPlaylist.reset();
    }

    void states_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<QString>("caption"); // empty: unchanged
        QTest::addColumn<bool>("timerRuns");
        QTest::addColumn<QColor>("color");
        QTest::addColumn<QString>("line");
        const QColor none = QApplication::palette().color(QPalette::Window);
        QTest::newRow("stopped") << 0 << "Play" << false << none << "Stopped.";
        QTest::newRow("playing") << 1 << "Pause" << true << QColor("#000010") << "Playing.";
        QTest::newRow("paused") << 2 << "Resume" << true << none << "Paused.";
        QTest::newRow("transitioning") << 3 << "Pause" << true << none << "Transitioning.";
        QTest::newRow("unknown") << 4 << "Pause" << true << none << QString();
        QTest::newRow("far beyond") << 1000000 << "Pause" << true << none << QString();
    }

    void states()
    {
        QFETCH(int, state);
        QFETCH(QString, caption);
        QFETCH(bool, timerRuns);
        QFETCH(QColor, color);
        QFETCH(QString, line);
        Q_EMIT m_renderer->kelvoPropertyChanged("colorkey", 0x10U);
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        m_renderer->takeCalls();
        LogRecorder log;
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::State(state));
        QCOMPARE(m_console->find<QToolButton>("m_music_playButton")->text(), caption);
        QCOMPARE(m_console->find<QToolButton>("m_video_playButton")->text(), caption);
        QCOMPARE(m_timer->isActive(), timerRuns);
        QCOMPARE(label("m_video_videoLabel")->palette().color(QPalette::Window), color);
        QVERIFY(log.containsInOrder(
            {"KelvoRendererController::rendererStateChanged", "KelvoRendererController::handleVideoPlayback",
                "KelvoMainWindow::getVideoRectangle", "void KelvoMainWindow::setVideoLabelColorKey(uint)"}));
        if (!line.isEmpty())
            QCOMPARE(log.lines().last(), line);
        QCOMPARE(m_renderer->calls(), QStringList(rectangleCall())); // sent again with each report
    }

    void stoppedResetsPositionAndPendingPosition()
    {
        m_console->window()->showDuration(100);
        m_controller->seek(42);
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        m_controller->rendererMediaPositionChanged(30);
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Stopped);
        QCOMPARE(label("m_music_durationLabel")->text(), QStringLiteral("0:00 /\n1:40"));
        LogRecorder log;
        m_controller->play();
        QVERIFY(log.contains("KelvoRendererController::play -1"));
    }

    void stateWithoutACurrentRendererStillClearsTheColourKey()
    {
        KelvoRegistry::instance()->removeRenderer(m_renderer.get());
        m_console->window()->setVideoLabelColorKey(0x10);
        m_controller->rendererStateChanged(KelvoRenderer::Paused);
        QCOMPARE(label("m_video_videoLabel")->palette().color(QPalette::Window),
            QApplication::palette().color(QPalette::Window));
    }

    void colourKeyTakesEffectAtTheNextPlaying()
    {
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        const QColor before = label("m_video_videoLabel")->palette().color(QPalette::Window);
        LogRecorder log;
        Q_EMIT m_renderer->kelvoPropertyChanged("colorkey", 0x123456U);
        QCOMPARE(log.lines(),
            QStringList(
                "KelvoRendererController::rendererPropertyChanged \"colorkey\" QVariant(uint, 1193046)"));
        QCOMPARE(label("m_video_videoLabel")->palette().color(QPalette::Window), before);
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        QCOMPARE(label("m_video_videoLabel")->palette().color(QPalette::Window), QColor("#123456"));
    }

    void rectangleIsSentAgainWhenTheLabelMoves()
    {
        m_console->find<QTabWidget>("m_tabs")->setCurrentIndex(1);
        QCoreApplication::processEvents();
        m_renderer->takeCalls();
        m_console->window()->resize(1111, 666);
        QTRY_VERIFY(m_renderer->calls().contains(rectangleCall()));
    }

    void positionTimerPollsTheRenderer()
    {
        QCOMPARE(m_timer->interval(), 1000);
        QVERIFY(!m_timer->isActive());
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        m_renderer->takeCalls();
        QTRY_COMPARE(m_renderer->calls(), QStringList("getPosition()"));
    }

    void positionAnswerIsShown()
    {
        m_console->window()->showDuration(236);
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        m_controller->invokeGetPosition();
        QVERIFY(m_renderer->answerPosition(65));
        QTRY_COMPARE(label("m_music_durationLabel")->text(), QStringLiteral("1:05 /\n3:56"));
        QCOMPARE(m_console->find<QSlider>("m_video_durationSlider")->value(), 65);
    }

    void positionAnswerAfterAStopIsDropped()
    {
        m_console->window()->showDuration(236);
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        m_controller->invokeGetPosition();
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Stopped);
        QVERIFY(m_renderer->answerPosition(65));
        QCoreApplication::processEvents();
        QCOMPARE(label("m_music_durationLabel")->text(), QStringLiteral("0:00 /\n3:56"));
    }

    void statusAnswerAtStart()
    {
        LogRecorder log;
        QVERIFY(m_renderer->answerStatus("p2", 1, KelvoRenderer::Playing, "obj"));
        QTRY_COMPARE(m_console->find<QToolButton>("m_music_playButton")->text(), QStringLiteral("Pause"));
        QVERIFY(log.contains("KelvoRendererController::rendererStatusChanged, (playlistId, index, "
                             "playbackState, objectId) = ( "
                             "\"p2\" , 1 , 1 , \"obj\" )"));
        QCOMPARE(m_console->find<QComboBox>("m_music_playlistCombo")->currentIndex(), 1);
        QCOMPARE(m_console->find<QListView>("m_music_playlistView")->currentIndex().row(), 1);
    }

    void statusOfAnUnknownPlaylistStillAppliesTheState()
    {
        QVERIFY(m_renderer->answerStatus("unknown", 1, KelvoRenderer::Paused, QString()));
        QTRY_COMPARE(m_console->find<QToolButton>("m_music_playButton")->text(), QStringLiteral("Resume"));
        QCOMPARE(m_console->find<QComboBox>("m_music_playlistCombo")->currentIndex(), 0);
        QCOMPARE(m_console->find<QListView>("m_music_playlistView")->currentIndex().row(), -1);
    }

    void mediaChangeMovesTheSelection()
    {
        LogRecorder log;
        m_console->window()->showMetadata("title", "old");
        Q_EMIT m_renderer->mediaChanged(2, KelvoContent());
        QVERIFY(log.contains("KelvoRendererController::rendererMediaChanged, index 2"));
        QCOMPARE(m_console->find<QListView>("m_music_playlistView")->currentIndex().row(), 2);
        QCOMPARE(metadata(), QString());
    }

    void mediaChangeFetchesTheCurrentPlaylistOnceMore()
    {
        const QStringList fetching({"KelvoGUIMain::playlists", "KelvoPlaylistController::currentPlaylist"});
        LogRecorder log;
        Q_EMIT m_renderer->mediaChanged(2, KelvoContent());
        QCOMPARE(log.lines(),
            QStringList("KelvoRendererController::rendererMediaChanged, index 2") + fetching
                + QStringList({"KelvoMainWindow::clearMetadata",
                    "KelvoMainWindow::updateCurrentPlaylistIndex (index= 2 )",
                    "KelvoMainWindow::int getCurrentPlaylistIndex"})
                + fetching);
        log.clear();
        Q_EMIT m_renderer->mediaChanged(-1, KelvoContent());
        QCOMPARE(log.lines(),
            QStringList("KelvoRendererController::rendererMediaChanged, index -1") + fetching
                + QStringList({"KelvoMainWindow::clearMetadata",
                    "KelvoMainWindow::updateCurrentPlaylistIndex (index= -1 )",
                    "KelvoMainWindow::int getCurrentPlaylistIndex"}));
    }

    void sameMediaAgainKeepsItsMetadata()
    {
        Q_EMIT m_renderer->mediaChanged(2, KelvoContent());
        m_console->window()->showMetadata("title", "c");
        Q_EMIT m_renderer->mediaChanged(2, KelvoContent());
        QCOMPARE(metadata(), QStringLiteral("title: c"));
        Q_EMIT m_renderer->mediaChanged(0, KelvoContent());
        QCOMPARE(metadata(), QString());
    }

    void mediaOutsideThePlaylistClears()
    {
        Q_EMIT m_renderer->mediaChanged(2, KelvoContent());
        m_console->window()->showMetadata("title", "c");
        Q_EMIT m_renderer->mediaChanged(-1, KelvoContent());
        QCOMPARE(metadata(), QString());
        QVERIFY(m_console->find<QListView>("m_music_playlistView")->selectionModel()->selection().isEmpty());
        m_console->window()->showMetadata("title", "x");
        Q_EMIT m_renderer->mediaChanged(2, KelvoContent());
        QCOMPARE(metadata(), QString());
    }

    void eachReportOfNoMediaClears()
    {
        Q_EMIT m_renderer->mediaChanged(-1, KelvoContent());
        m_console->window()->showMetadata("title", "x");
        Q_EMIT m_renderer->mediaChanged(-1, KelvoContent());
        QCOMPARE(metadata(), QString());
    }

    void mediaChangeWithoutACurrentPlaylist()
    {
        m_playlist.reset();
        m_secondPlaylist.reset();
        m_console->window()->showMetadata("title", "old");
        Q_EMIT m_renderer->mediaChanged(1, KelvoContent());
        QCOMPARE(metadata(), QStringLiteral("title: old"));
    }

    void mediaIndexBeyondThePlaylist()
    {
        Q_EMIT m_renderer->mediaChanged(99, KelvoContent());
        QCOMPARE(m_console->find<QListView>("m_music_playlistView")->currentIndex().row(), -1);
    }

    void playlistOfTheRendererGone()
    {
        m_console->window()->showMetadata("title", "old");
        LogRecorder log;
        Q_EMIT m_renderer->playlistChanged(m_playlist.get());
        QCOMPARE(log.lines(), QStringList());
        QCOMPARE(metadata(), QStringLiteral("title: old"));
        Q_EMIT m_renderer->playlistChanged(nullptr);
        QCOMPARE(metadata(), QString());
    }

    void metadataShowsTheFirstValue()
    {
        LogRecorder log;
        Q_EMIT m_renderer->metadataChanged("artist", {"first", "second"});
        QCOMPARE(metadata(), QStringLiteral("artist: first"));
        QCOMPARE(log.lines(), QStringList());
    }

    void metadataDurationIsShownTwice()
    {
        Q_EMIT m_renderer->metadataChanged("duration", {236});
        QCOMPARE(metadata(), QStringLiteral("duration: 236"));
        QCOMPARE(label("m_music_durationLabel")->text(), QStringLiteral("0:00 /\n3:56"));
        Q_EMIT m_renderer->metadataChanged("Duration", {5});
        QCOMPARE(label("m_music_durationLabel")->text(), QStringLiteral("0:00 /\n3:56"));
    }

    void bufferingAndScanning()
    {
        m_console->window()->showDuration(100);
        LogRecorder log;
        Q_EMIT m_renderer->bufferingInfo(0.5F);
        QCOMPARE(m_console->find<QProgressBar>("m_music_rendererProgress")->value(), 50);
        QCOMPARE(label("m_music_durationLabel")->text(), QStringLiteral("0:00 /\n1:40"));
        Q_EMIT m_renderer->scanningInfo(0.75F);
        QCOMPARE(m_console->find<QProgressBar>("m_video_rendererProgress")->value(), 75);
        QCOMPARE(label("m_music_durationLabel")->text(), QStringLiteral("Scan\n..."));
        QCOMPARE(label("m_video_durationLabel")->text(), QStringLiteral("Scanning"));
        QCOMPARE(log.lines(), QStringList());
    }

    void policyOverrideColoursTheButtons()
    {
        const auto color = [this] {
            return m_console->find<QToolButton>("m_music_playButton")->palette().color(QPalette::ButtonText);
        };
        Q_EMIT m_renderer->kelvoPropertyChanged(KelvoRenderer::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, true);
        QCOMPARE(color(), QColor(Qt::red));
        Q_EMIT m_renderer->kelvoPropertyChanged(
            KelvoRenderer::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, false);
        QCOMPARE(color(), QColor(Qt::black));
    }

    void pauseFrameReportChecksTheAction()
    {
        const auto *action = m_console->find<QAction>("m_actionShowPauseFrame");
        QVERIFY(m_renderer->answerProperty("current-frame-on-pause", true));
        QTRY_VERIFY(action->isChecked());
        Q_EMIT m_renderer->kelvoPropertyChanged("current-frame-on-pause", false);
        QVERIFY(!action->isChecked());
    }

    void otherPropertiesAreIgnored()
    {
        LogRecorder log;
        Q_EMIT m_renderer->kelvoPropertyChanged("bitrate", "x");
        QVERIFY(m_renderer->answerProperty("volume", QVariant())); // not known to the renderer
        QTRY_COMPARE(log.lines(),
            QStringList(
                {"KelvoRendererController::rendererPropertyChanged \"bitrate\" QVariant(QString, \"x\")",
                    "KelvoRendererController::rendererPropertyChanged \"volume\" QVariant(Invalid)"}));
    }

    void valuesOfTheWrongKindAreSurvived_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<int>("volume");
        QTest::addColumn<bool>("pauseFrame");
        QTest::addColumn<QString>("warning");
        const QString illegal = QStringLiteral("Illegal colorkey value: %1");
        QTest::newRow("negative volume") << "volume" << QVariant(-5) << 0 << false << "";
        QTest::newRow("volume beyond the scale") << "volume" << QVariant(120) << 99 << false << "";
        QTest::newRow("volume in words") << "volume" << QVariant("loud") << 0 << false << "";
        QTest::newRow("no volume") << "volume" << QVariant() << 0 << false << "";
        QTest::newRow("list of volumes") << "volume" << QVariant(QVariantList({1, 2})) << 0 << false << "";
        QTest::newRow("pause frame in words")
            << "current-frame-on-pause" << QVariant("maybe") << 7 << true << "";
        QTest::newRow("no pause frame") << "current-frame-on-pause" << QVariant() << 7 << false << "";
        QTest::newRow("colour key of seven digits")
            << "colorkey" << QVariant(0x1234567U) << 7 << false << illegal.arg(0x1234567);
        QTest::newRow("negative colour key")
            << "colorkey" << QVariant(-1) << 7 << false << illegal.arg(0xffffffffU);
        QTest::newRow("colour key in words") << "colorkey" << QVariant("red") << 7 << false << "";
    }

    void valuesOfTheWrongKindAreSurvived()
    {
        QFETCH(QString, name);
        QFETCH(QVariant, value);
        QFETCH(QString, warning);
        Q_EMIT m_renderer->kelvoPropertyChanged("volume", 7U);
        LogRecorder log;
        Q_EMIT m_renderer->kelvoPropertyChanged(name, value);
        QVERIFY(log.lines().constFirst().startsWith(
            QStringLiteral("KelvoRendererController::rendererPropertyChanged \"%1\" QVariant(").arg(name)));
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        QCOMPARE(log.warnings(), warning.isEmpty() ? QStringList() : QStringList(warning));
        QCOMPARE(label("m_video_videoLabel")->palette().color(QPalette::Window),
            QApplication::palette().color(QPalette::Window));
        QTEST(m_console->find<QAction>("m_actionShowPauseFrame")->isChecked(), "pauseFrame");
        const ModalCloser closer;
        m_controller->adjustVolume();
        QCOMPARE(closer.seen(), QStringList("Adjust volume"));
        QTEST(m_console->find<QSlider>("m_volumeSlider")->value(), "volume");
    }

    /// These two a renderer must never do.
    void reportsThatAreFatal()
    {
        const QString policy = fatalMessage([this] {
            Q_EMIT m_renderer->kelvoPropertyChanged(
                KelvoRenderer::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, "true");
        });
        QVERIFY2(isAssertion(policy, "value.type() == QVariant::Bool", "src/KelvoRendererController"),
            qPrintable(policy));
        const QString metadata
            = fatalMessage([this] { Q_EMIT m_renderer->metadataChanged("title", QList<QVariant>()); });
        QVERIFY2(metadata.contains("QList::at: \"index out of range\""), qPrintable(metadata));
        QCOMPARE(
            fatalMessage([this] { Q_EMIT m_renderer->metadataChanged("title", {QVariant()}); }), QString());
    }

    void aThousandErrorsOpenOneDialog()
    {
        const auto isOpenDialog = [](const QWidget *widget) {
            return widget->isVisible() && qobject_cast<const QDialog *>(widget);
        };
        const std::clock_t start = std::clock();
        for (int i = 0; i < 1000; ++i) {
            Q_EMIT m_renderer->error(KelvoError(KelvoError::UnknownError, QString::number(i)));
            QCoreApplication::processEvents(); // the window goes on in between
        }
        const double seconds = double(std::clock() - start) / CLOCKS_PER_SEC;
        QVERIFY2(seconds < 1, qPrintable(QString::number(seconds)));
        const QWidgetList windows = QApplication::topLevelWidgets();
        QCOMPARE(std::count_if(windows.cbegin(), windows.cend(), isOpenDialog), 1);
        const QStringList lines = m_console->find<QTextEdit>("m_errorLogField")->toPlainText().split('\n');
        QCOMPARE(lines.size(), 1000);
        QCOMPARE(lines.last(), QStringLiteral("Code 1, 999"));
    }

    void errorsCollectInTheLog()
    {
        auto *dialog = m_console->find<QDialog>("RendererErrorLogDialog");
        auto *field = m_console->find<QTextEdit>("m_errorLogField");
        LogRecorder log;
        const QString description = KelvoError::codeToString(KelvoError::NotFound);
        QVERIFY(!description.isEmpty());
        Q_EMIT m_renderer->error(KelvoError(KelvoError::NotFound, "the message"));
        QVERIFY(log.containsInOrder(
            {"KelvoRendererController::rendererOperationFailed", "KelvoMainWindow::showRendererErrorLog"}));
        QVERIFY(dialog->isVisible());
        QVERIFY(dialog->isModal());
        Q_EMIT m_renderer->error(KelvoError(KelvoError::UnknownError, "<i>the message</i>"));
        QCOMPARE(field->toPlainText(),
            QStringLiteral("Code 100, %1\nCode 1, <i>the message</i>").arg(description));
        m_console->find<QPushButton>("m_clearButton")->click();
        QCOMPARE(field->toPlainText(), QString());
        dialog->findChild<QPushButton *>("m_okButton")->click();
        QVERIFY(!dialog->isVisible());
        Q_EMIT m_renderer->error(KelvoError(KelvoError::Code(9999), "again"));
        QVERIFY(dialog->isVisible());
        QCOMPARE(field->toPlainText(), QStringLiteral("Code 9999, again"));
    }

    void reportsAfterTheWindowIsGone()
    {
        m_controller->invokeGetPosition();
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Playing);
        delete m_console->window();
        QVERIFY(m_renderer->answerPosition(3));
        QVERIFY(m_renderer->answerStatus("p1", 0, 1, QString()));
        QVERIFY(m_renderer->answerProperty("volume", 3U));
        Q_EMIT m_renderer->stateChanged(KelvoRenderer::Stopped);
        Q_EMIT m_renderer->error(KelvoError(KelvoError::NotFound, "late"));
        Q_EMIT m_playlist->contentsChanged(0, 0, 1);
        m_renderer->rename("late");
        KelvoRegistry::instance()->removeRenderer(m_renderer.get());
        KelvoRegistry::instance()->removePlaylist(m_playlist.get());
        QCoreApplication::processEvents();
        QVERIFY(!m_timer->isActive());
    }

private:
    QLabel *label(const char *name) const { return m_console->find<QLabel>(name); }
    QString metadata() const { return m_console->find<QTextEdit>("m_music_metadataField")->toPlainText(); }
    QString rectangleCall() const
    {
        const QRect place = label("m_video_videoLabel")->geometry();
        return QStringLiteral("setKelvoProperty(render-rectangle,QString,%1,%2,%3,%4)")
            .arg(place.left())
            .arg(place.top())
            .arg(place.width())
            .arg(place.height());
    }

    std::unique_ptr<RecordingRenderer> m_renderer;
    std::unique_ptr<FakePlaylist> m_playlist;
    std::unique_ptr<FakePlaylist> m_secondPlaylist;
    std::unique_ptr<ConsoleFixture> m_console;
    KelvoRendererController *m_controller = nullptr;
    QTimer *m_timer = nullptr;
};

KELVO_WIDGET_TEST(RendererReportsTest)
#include "RendererReportsTest.moc"
