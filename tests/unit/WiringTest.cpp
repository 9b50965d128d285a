// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "FakePlaylist.h"
#include "KelvoPluginController.h"
#include "KelvoRegistry.h"
#include "KelvoSourceController.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "RecordingRenderer.h"
#include "TestGroup.h"

#include <QAbstractItemModel>
#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QListView>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <QToolButton>

namespace {
using Trigger = std::function<void(const ConsoleFixture &)>;

Trigger click(const char *button)
{
    return [button](const ConsoleFixture &console) {
        console.find<QToolButton>(button)->click();
    };
}

Trigger choose(const char *action)
{
    return [action](const ConsoleFixture &console) {
        console.find<QAction>(action)->trigger();
    };
}

Trigger select(const char *combo)
{
    return [combo](const ConsoleFixture &console) {
        console.find<QComboBox>(combo)->setCurrentIndex(1);
    };
}

Trigger release(const char *slider)
{
    return [slider](const ConsoleFixture &console) {
        console.find<QSlider>(slider)->setSliderDown(true);
        console.find<QSlider>(slider)->setSliderPosition(7);
        console.find<QSlider>(slider)->setSliderDown(false);
    };
}
} // namespace
Q_DECLARE_METATYPE(Trigger)

/// Each connection of the window to the controllers, seen at the receiving end and counted there.
class WiringTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_renderer = std::make_unique<RecordingRenderer>("r1", "one");
        m_secondRenderer = std::make_unique<RecordingRenderer>("r2", "two");
        m_playlist = std::make_unique<FakePlaylist>("p1", "list one", QStringList{"a", "b", "c"});
        m_secondPlaylist = std::make_unique<FakePlaylist>("p2", "list two");
        KelvoRegistry *registry = KelvoRegistry::instance();
        registry->addRenderer(m_renderer.get());
        registry->addRenderer(m_secondRenderer.get());
        registry->addPlaylist(m_playlist.get());
        registry->addPlaylist(m_secondPlaylist.get());
        m_console = std::make_unique<ConsoleFixture>();
        m_renderer->takeCalls();
        m_playlist->takeCalls();
    }

    void cleanup()
    {
        delete m_console->application()->sources()->queryModel(); // nobody else's: results live on
        m_console.reset();
        m_renderer.reset();
        m_secondRenderer.reset();
        m_playlist.reset();
        m_secondPlaylist.reset();
    }

    void logged_data()
    {
        QTest::addColumn<Trigger>("trigger");
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("count");
        const auto row = [](const char *name, const Trigger &trigger, const char *line, int count = 1) {
            QTest::newRow(name) << trigger << QString::fromLatin1(line) << count;
        };
        row("plug-ins", choose("m_actionPlugins"), "KelvoPluginController::showPluginsDialog");
        row("music playlist box", select("m_music_playlistCombo"), "KelvoMainWindow::syncPlaylists", 3);
        row("browse playlist box", select("m_browse_playlistCombo"), "KelvoMainWindow::syncPlaylists", 3);
        row("query playlist box", select("m_query_playlistCombo"), "KelvoMainWindow::syncPlaylists", 3);
        row("current playlist", select("m_music_playlistCombo"),
            "KelvoPlaylistController::playlistChanged \"p2\"", 3);
        row("create from results", click("m_query_createPlaylistButton"),
            "KelvoPlaylistController::createNewModelPlaylist");
        row("create empty", choose("m_actionCreateNew"), "KelvoPlaylistController::createNewEmptyPlaylist");
        row("load", choose("m_actionLoad"), "KelvoPlaylistController::showLoadPlaylistDialog");
        row("delete persistent", choose("m_actionDeletePersistent"),
            "void KelvoPlaylistController::deletePersistentPlaylist()");
        row("delete", choose("m_actionDelete"), "KelvoPlaylistController::deletePlaylist");
        row("clear", choose("m_actionClear"), "KelvoPlaylistController::clearPlaylist");
        row("remove current", choose("m_actionRemoveCurrent"), "KelvoPlaylistController::removeCurrentItem");
        row("remove several", choose("m_actionRemoveSeveralSelected"),
            "KelvoPlaylistController::removeSeveralItems");
        row("play uri dialog", choose("m_actionPlayUri"), "KelvoMainWindow::showPlayUriDialog");
        row("play uri request", choose("m_actionPlayUri"), "KelvoPlaylistController::invokeGetPlaylistUris");
        row(
            "play uri accepted",
            [](const ConsoleFixture &console) { console.find<QDialog>("PlayUriDialog")->accept(); },
            "KelvoMainWindow::playUriDialogAccepted");
        row("shuffle", choose("m_actionShuffle"), "KelvoPlaylistController::shufflePlaylist");
        row("repeat", choose("m_actionRepeat"), "KelvoPlaylistController::repeatPlaylist");

        row("renderer box", select("m_music_rendererCombo"), "KelvoMainWindow::currentRendererChanged");
        row("current renderer", select("m_music_rendererCombo"),
            "KelvoRendererController::rendererChanged  \"r2\"");
        for (const QByteArray tab : {"music", "video"}) {
            const auto button = [&row, &tab](const char *role, const char *line) {
                const QByteArray name = "m_" + tab + '_' + role + "Button";
                row(
                    name, [name](const ConsoleFixture &console) { console.find<QToolButton>(name)->click(); },
                    line);
            };
            button("play", "KelvoRendererController::handlePlay");
            button("stop", "KelvoRendererController::stop");
            button("next", "KelvoRendererController::next");
            button("prev", "KelvoRendererController::prev");
            button("seekBack", "void KelvoRendererController::seekBack()");
            button("seekForw", "void KelvoRendererController::seekForw()");
        }
        row(
            "uri",
            [](const ConsoleFixture &console) { Q_EMIT console.window()->playUri(QUrl("file:///a"), "t"); },
            "KelvoRendererController::playUri");
        const Trigger doubleClick = [](const ConsoleFixture &console) {
            auto *view = console.find<QListView>("m_music_playlistView");
            Q_EMIT view->doubleClicked(view->model()->index(2, 1));
        };
        row("double click", doubleClick, "KelvoMainWindow::emitIndex");
        row("go to index", doubleClick, "KelvoRendererController::goToIndex");
        row(
            "video window",
            [](const ConsoleFixture &console) { Q_EMIT console.window()->videoScreenXIDChanged(7); },
            "KelvoRendererController::videoScreenXIDChanged, xid =  7");
        row("volume", choose("m_actionVolume"), "KelvoRendererController::adjustVolume");
        row("pause frame", choose("m_actionShowPauseFrame"), "KelvoRendererController::showPauseFrame");
        row("music slider", release("m_music_durationSlider"), "KelvoMainWindow::emitPosition");
        row("video slider", release("m_video_durationSlider"), "KelvoMainWindow::emitPosition");
        row("pause at", choose("m_action6_sec"), "KelvoRendererController::pauseAt( 6 )");

        row("query timer", click("m_query_executeButton"), "startQueryDebugTimer()");
        row("execute query", click("m_query_executeButton"), "KelvoSourceController::executeQuery");
        row("extend query", click("m_query_extendButton"), "KelvoSourceController::extendQuery");
        row("append results", click("m_query_addButton"), "KelvoSourceController::addQueryToPlaylist");
        row("append browse results", click("m_browse_addButton"),
            "KelvoSourceController::addBrowseToPlaylist");
        row("browse", click("m_browse_executeButton"), "KelvoSourceController::executeBrowse");
        row("clear browse results", click("m_browse_clearButton"),
            "KelvoSourceController::clearBrowseResults");
        row("select sources", choose("m_actionSelectSources"), "KelvoSourceController::selectSources");
        row("search", choose("m_actionSearch"), "KelvoSourceController::search");
        row("source properties", choose("m_actionSourceProperties"),
            "KelvoSourceController::showSourceProperties");
        row(
            "browse result",
            [](const ConsoleFixture &console) {
                Q_EMIT console.find<QListView>("m_browse_resultsView")->clicked(QModelIndex());
            },
            "KelvoSourceController::browseResultItemActivated");
        row(
            "query results",
            [](const ConsoleFixture &console) { Q_EMIT console.window()->queryResultsAvailable(); },
            "stopQueryDebugtimer()");
        row("help", choose("m_actionHelp"), "KelvoMainWindow::showHelpDialog");
        row("launch browser", choose("m_actionLaunchBrowser"), "KelvoMainWindow::launchBrowser");
        row("query properties", choose("m_actionQuery_properties"),
            "void KelvoMainWindow::showQueryPropertiesDialog()");
    }

    void logged()
    {
        QFETCH(Trigger, trigger);
        QFETCH(QString, line);
        QFETCH(int, count);
        const ModalCloser closer(ModalCloser::Reject);
        LogRecorder log;
        trigger(*m_console);
        QCOMPARE(log.count(line), count);
    }

    void silentSlots_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("call");
        QTest::newRow("A-Z") << "m_actionAtoZ"
                             << "sort(title,0)";
        QTest::newRow("Z-A") << "m_actionZtoA"
                             << "sort(title,1)";
        QTest::newRow("short first") << "m_actionShortToLong"
                                     << "sort(duration,4)";
        QTest::newRow("long first") << "m_actionLongToShort"
                                    << "sort(duration,5)";
        QTest::newRow("auto advance") << "m_actionAutoAdvance"
                                      << "setKelvoProperty(auto-advance,bool,false)";
    }

    void silentSlots()
    {
        QFETCH(QString, action);
        QFETCH(QString, call);
        m_console->window()->findChild<QAction *>(action)->trigger();
        QCOMPARE(m_renderer->takeCalls() + m_playlist->takeCalls(), QStringList(call));
    }

    void eachReleaseOfASliderSeeksTwice_data()
    {
        QTest::addColumn<QByteArray>("slider");
        for (const QByteArray slider : {"m_music_durationSlider", "m_video_durationSlider"})
            QTest::newRow(slider) << slider;
    }

    void eachReleaseOfASliderSeeksTwice()
    {
        QFETCH(QByteArray, slider);
        QSignalSpy seek(m_console->window(), SIGNAL(seek(int)));
        release(slider)(*m_console);
        QCOMPARE(seek.count(), 1);
        QCOMPARE(m_renderer->takeCalls(), QStringList({"setPosition(7,0)", "setPosition(7,0)"}));
    }

    void playUriShowsTheDialogBeforeTheControllerIsAsked()
    {
        LogRecorder log;
        choose("m_actionPlayUri")(*m_console);
        QVERIFY(log.containsInOrder(
            {"KelvoMainWindow::showPlayUriDialog", "KelvoPlaylistController::invokeGetPlaylistUris"}));
        auto *dialog = m_console->find<QDialog>("PlayUriDialog");
        QVERIFY(dialog->isVisible());
        QVERIFY(!dialog->isModal());
        dialog->reject();
    }

    void oneChoiceOfAPlaylistIsReportedThreeTimes_data()
    {
        QTest::addColumn<QByteArray>("box");
        for (const QByteArray box :
            {"m_music_playlistCombo", "m_browse_playlistCombo", "m_query_playlistCombo"})
            QTest::newRow(box) << box;
    }

    void oneChoiceOfAPlaylistIsReportedThreeTimes()
    {
        QFETCH(QByteArray, box);
        QSignalSpy changed(m_console->window(), SIGNAL(currentPlaylistChanged(QString)));
        select(box)(*m_console);
        QCOMPARE(changed, QList<QVariantList>({{"p2"}, {"p2"}, {"p2"}}));
        for (const char *combo : {"m_music_playlistCombo", "m_browse_playlistCombo", "m_query_playlistCombo"})
            QCOMPARE(m_console->find<QComboBox>(combo)->currentIndex(), 1);
    }

    void theTimerStartsBeforeTheQuery()
    {
        LogRecorder log;
        click("m_query_executeButton")(*m_console);
        QVERIFY(log.containsInOrder({"startQueryDebugTimer()", "KelvoSourceController::executeQuery"}));
    }

    void pauseAtSendsItsSecond_data()
    {
        QTest::addColumn<uint>("second");
        QTest::newRow("m_action0_sec") << 0U;
        QTest::newRow("m_action1_sec") << 1U;
        QTest::newRow("m_action3_sec") << 3U;
        QTest::newRow("m_action6_sec") << 6U;
        QTest::newRow("m_action10_sec") << 10U;
    }

    void pauseAtSendsItsSecond()
    {
        QFETCH(uint, second);
        choose(QTest::currentDataTag())(*m_console);
        QCOMPARE(m_renderer->takeCalls(), QStringList(QStringLiteral("pauseAt(%1)").arg(second)));
    }

    void inertActionsStartNothing()
    {
        LogRecorder log;
        for (const char *action : {"m_actionMute", "m_actionSave", "m_actionShowAllMetadata",
                 "m_actionRepeatOne", "action2_sec", "m_actionForceAspectRatio", "actionStream_block_size"})
            choose(action)(*m_console);
        click("m_browse_metadataButton")(*m_console);
        m_console->find<QComboBox>("m_query_queryCombo")->setCurrentIndex(3);
        QCOMPARE(log.lines(), QStringList());
        QCOMPARE(m_renderer->takeCalls() + m_playlist->takeCalls(), QStringList());
    }

    void exitClosesTheWindow()
    {
        QPointer<KelvoMainWindow> window = m_console->window();
        choose("m_actionExit")(*m_console);
        QTRY_VERIFY(!window);
    }

    void wiringIsLogged()
    {
        m_console.reset();
        LogRecorder log;
        m_console = std::make_unique<ConsoleFixture>();
        QVERIFY(log.containsInOrder({"KelvoMainWindow::connectRendererSignals",
            "KelvoMainWindow::connectPlaylistSignals", "KelvoMainWindow::connectSourceSignals"}));
        QCOMPARE(log.count("KelvoMainWindow::connectRendererSignals"), 1);
        QCOMPARE(log.count("KelvoMainWindow::connectPlaylistSignals"), 1);
        QCOMPARE(log.count("KelvoMainWindow::connectSourceSignals"), 1);
    }

    void wiringOfPluginsAndTheQueryTimerIsNotLogged()
    {
        LogRecorder log;
        const KelvoPluginController controller(m_console->window());
        QCOMPARE(log.lines(), QStringList("KelvoPluginController::KelvoPluginController"));
        log.clear();
        m_console.reset();
        m_console = std::make_unique<ConsoleFixture>();
        const QStringList wiring = log.lines().filter(QRegularExpression("^KelvoMainWindow::connect"));
        QCOMPARE(wiring,
            QStringList({"KelvoMainWindow::connectRendererSignals", "KelvoMainWindow::connectPlaylistSignals",
                "KelvoMainWindow::connectSourceSignals"}));
    }

private:
    std::unique_ptr<RecordingRenderer> m_renderer;
    std::unique_ptr<RecordingRenderer> m_secondRenderer;
    std::unique_ptr<FakePlaylist> m_playlist;
    std::unique_ptr<FakePlaylist> m_secondPlaylist;
    std::unique_ptr<ConsoleFixture> m_console;
};

KELVO_WIDGET_TEST(WiringTest)
#include "WiringTest.moc"
