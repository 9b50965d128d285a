// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "FakePlaylist.h"
#include "KelvoRendererController.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "RecordingRenderer.h"
#include "TestGroup.h"
#include "TestRegistry.h"

#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <QToolButton>
#include <QWindow>

namespace {
QStringList entries(const ConsoleFixture &console)
{
    QStringList texts;
    const auto *combo = console.find<QComboBox>("m_music_rendererCombo");
    for (int i = 0; i < combo->count(); ++i)
        texts.append(combo->itemText(i));
    return texts;
}

/// What a renderer is told when the user chooses it; the window id differs from run to run.
QStringList withoutXid(QStringList calls)
{
    for (QString &call : calls) {
        if (call.startsWith(QLatin1String("setKelvoProperty(xid,uint,")))
            call = QStringLiteral("xid");
    }
    return calls;
}

/// Three renderers, registered: "r1", "r2" and "r3", named as their uuids.
class ThreeRenderers
{
public:
    ThreeRenderers()
    {
        for (const char *uuid : {"r1", "r2", "r3"}) {
            m_renderers.push_back(std::make_unique<RecordingRenderer>(uuid, uuid));
            KelvoRegistry::instance()->addRenderer(m_renderers.back().get());
        }
    }

    RecordingRenderer *at(int index) const { return m_renderers.at(size_t(index)).get(); }
    QStringList takeCalls() const
    {
        QStringList calls;
        for (const auto &renderer : m_renderers)
            calls += renderer->takeCalls();
        return calls;
    }

private:
    std::vector<std::unique_ptr<RecordingRenderer>> m_renderers;
};
} // namespace

/// How renderers come, go and become current.
class RendererSelectionTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void slotsInTheirOrder()
    {
        QStringList found;
        const QMetaObject &meta = KelvoRendererController::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            const QMetaMethod method = meta.method(i);
            QCOMPARE(method.methodType(), QMetaMethod::Slot);
            QCOMPARE(method.access(), QMetaMethod::Public);
            found.append(
                QString::fromLatin1(method.methodSignature() + ' ' + method.parameterNames().join(',')));
        }
        QCOMPARE(found,
            QStringList({"rendererAdded(QString,QString) uuid,name",
                "rendererRemoved(QString,QString) uuid,name", "rendererChanged(QString) uuid",
                "rendererMediaChanged(int,KelvoContent) index,content",
                "rendererPlaylistChanged(KelvoPlaylist*) playlist",
                "rendererMediaMetadataChanged(QString,QVariantList) key,values",
                "rendererMediaPositionChanged(uint) position",
                "rendererStateChanged(KelvoRenderer::State) state",
                "rendererPropertyChanged(QString,QVariant) name,value", "rendererNameChanged(QString) name",
                "rendererStatusChanged(QString,uint,int,QString) playlistId,index,playbackState,objectId",
                "rendererBuffering(float) status", "rendererScanning(float) status",
                "rendederOperationFailed(KelvoError) error", "videoScreenXIDChanged(uint) xid",
                "handlePlay() ", "play() ", "playUri(QUrl,QString) item,contentType", "pause() ",
                "pauseAt(uint) ", "resume() ", "stop() ", "next() ", "prev() ", "goToIndex(uint) index",
                "seekBack() ", "seekForw() ", "seek(int) ", "startFastRewind() ", "startFastForward() ",
                "stopFastPlayback() ", "adjustVolume() ", "showPauseFrame() ", "setAutoAdvance(bool) enabled",
                "invokeGetPosition() "}));
    }

    void startWithNoRenderers()
    {
        LogRecorder log;
        const ConsoleFixture console;
        QCOMPARE(console.application()->renderers()->currentRenderer(), nullptr);
        QVERIFY(log.containsInOrder(
            {"KelvoRendererController::initRenderers", "KelvoMainWindow::connectRendererSignals"}));
        QVERIFY(!log.contains("KelvoRendererController::connectRendererSignals"));
        QVERIFY(!log.contains("KelvoRendererController::getRendererProperties"));
    }

    void rendererAddedToAnEmptyListBecomesCurrentThroughTheBox()
    {
        const ConsoleFixture console;
        RecordingRenderer renderer("r1", "one");
        LogRecorder log;
        registry()->addRenderer(&renderer);
        QVERIFY(log.containsInOrder({"KelvoRendererController::rendererAdded \"r1\" \"one\"",
            "KelvoMainWindow::currentRendererChanged", "KelvoRendererController::rendererChanged  \"r1\""}));
        QCOMPARE(console.application()->renderers()->currentRenderer(), &renderer);
        QVERIFY(!renderer.calls().contains("getStatus()"));
    }

    void secondRendererIsListedAndNotSelected()
    {
        RecordingRenderer first("r1", "one");
        registry()->addRenderer(&first);
        const ConsoleFixture console;
        RecordingRenderer second("r2", "two");
        registry()->addRenderer(&second);
        QCOMPARE(entries(console), QStringList({"one", "two"}));
        QCOMPARE(console.application()->renderers()->currentRenderer(), &first);
        QCOMPARE(second.calls(), QStringList());
    }

    void firstRendererAtStartIsCurrent()
    {
        RecordingRenderer first("r1", "one");
        RecordingRenderer second("r2", "two");
        registry()->addRenderer(&first);
        registry()->addRenderer(&second);
        const ConsoleFixture console;
        QCOMPARE(entries(console), QStringList({"one", "two"}));
        QCOMPARE(console.application()->renderers()->currentRenderer(), &first);
        // Neither a playlist nor Stopped: what it does already goes on.
        QCOMPARE(withoutXid(first.calls()),
            QStringList({"getStatus()", "xid", "setKelvoProperty(autopaint,bool,false)",
                "kelvoProperty(volume)", "kelvoProperty(current-frame-on-pause)"}));
        QVERIFY(first.calls().contains(
            QStringLiteral("setKelvoProperty(xid,uint,%1)").arg(console.window()->getVideoXID())));
        QCOMPARE(second.calls(), QStringList());
    }

    void startIsLoggedInOrder()
    {
        RecordingRenderer renderer("r1", "one");
        registry()->addRenderer(&renderer);
        LogRecorder log;
        const ConsoleFixture console;
        QVERIFY(log.containsInOrder({"KelvoRendererController::initRenderers",
            "KelvoMainWindow::showRendererName, \"one\" \"r1\" true",
            "KelvoRendererController::connectRendererSignals", "KelvoMainWindow::getVideoXID",
            "KelvoRendererController::getRendererProperties", "KelvoMainWindow::connectRendererSignals"}));
        QCOMPARE(log.lines().filter("KelvoRendererController::KelvoRendererController (").size(), 1);
    }

    void unnamedRenderersShowTheNumberOfAll()
    {
        RecordingRenderer first("r1");
        RecordingRenderer second("r2", "named");
        RecordingRenderer third("r3");
        for (RecordingRenderer *renderer : {&first, &second, &third})
            registry()->addRenderer(renderer);
        const ConsoleFixture console;
        QCOMPARE(entries(console), QStringList({"empty 3", "named", "empty 3"}));
        RecordingRenderer fourth("r4");
        registry()->addRenderer(&fourth);
        QCOMPARE(entries(console).last(), QStringLiteral("empty 4"));
    }

    void choosingAnotherRenderer()
    {
        RecordingRenderer first("r1", "one");
        RecordingRenderer second("r2", "two");
        FakePlaylist playlist("p1", "list");
        registry()->addRenderer(&first);
        registry()->addRenderer(&second);
        registry()->addPlaylist(&playlist);
        const ConsoleFixture console;
        first.takeCalls();
        LogRecorder log;
        console.find<QComboBox>("m_music_rendererCombo")->setCurrentIndex(1);
        const QRect place = console.window()->getVideoRectangle();
        const QString rectangle = QStringLiteral("setKelvoProperty(render-rectangle,QString,%1,%2,%3,%4)")
                                      .arg(place.left())
                                      .arg(place.top())
                                      .arg(place.width())
                                      .arg(place.height());
        QCOMPARE(first.calls(), QStringList({"stop()", rectangle}));
        QCOMPARE(withoutXid(second.calls()),
            QStringList({"kelvoProperty(volume)", "kelvoProperty(current-frame-on-pause)", "xid",
                "setKelvoProperty(autopaint,bool,false)", "assignPlaylist(p1)"}));
        QVERIFY(log.containsInOrder({"KelvoRendererController::rendererChanged  \"r2\"",
            "KelvoRendererController::stop", "KelvoRendererController::rendererStateChanged",
            "KelvoRendererController::handleVideoPlayback", "Stopped.",
            "KelvoRendererController::connectRendererSignals",
            "KelvoRendererController::getRendererProperties", "KelvoMainWindow::getVideoXID",
            "KelvoGUIMain::playlists", "KelvoPlaylistController::currentPlaylist"}));
    }

    void noPlaylistIsAssignedWhenThereIsNone()
    {
        RecordingRenderer first("r1", "one");
        RecordingRenderer second("r2", "two");
        registry()->addRenderer(&first);
        registry()->addRenderer(&second);
        const ConsoleFixture console;
        console.find<QComboBox>("m_music_rendererCombo")->setCurrentIndex(1);
        QCOMPARE(second.calls().filter("assignPlaylist").size(), 0);
    }

    void formerRendererIsNotHeardAnyMore()
    {
        RecordingRenderer first("r1", "one");
        RecordingRenderer second("r2", "two");
        registry()->addRenderer(&first);
        registry()->addRenderer(&second);
        const ConsoleFixture console;
        console.find<QComboBox>("m_music_rendererCombo")->setCurrentIndex(1);
        LogRecorder log;
        Q_EMIT first.stateChanged(KelvoRenderer::Playing);
        first.rename("renamed"); // this connection went with the others
        QCOMPARE(log.lines(), QStringList());
        QCOMPARE(entries(console), QStringList({"one", "two"}));
    }

    void completionOfRenderersChosenBefore()
    {
        RecordingRenderer a("a", "A");
        RecordingRenderer b("b", "B");
        registry()->addRenderer(&a);
        registry()->addRenderer(&b);
        const ConsoleFixture console;
        auto *combo = console.find<QComboBox>("m_music_rendererCombo");
        combo->setCurrentIndex(1);
        combo->setCurrentIndex(0);
        {
            const ModalCloser closer;
            Q_EMIT a.playbackCompleted();
            QCOMPARE(closer.seen(), QStringList({"Playback completed!", "Playback completed!"}));
        }
        const ModalCloser closer;
        Q_EMIT b.playbackCompleted();
        QCOMPARE(closer.seen(), QStringList("Playback completed!"));
    }

    void unknownUuidLeavesNoCurrentRenderer()
    {
        RecordingRenderer renderer("r1", "one");
        registry()->addRenderer(&renderer);
        const ConsoleFixture console;
        Q_EMIT renderer.stateChanged(KelvoRenderer::Playing);
        QCOMPARE(console.find<QToolButton>("m_music_playButton")->text(), QStringLiteral("Pause"));
        renderer.takeCalls();
        console.application()->renderers()->rendererChanged("unknown");
        QCOMPARE(renderer.calls().first(), QStringLiteral("stop()"));
        QCOMPARE(console.application()->renderers()->currentRenderer(), nullptr);
        QCOMPARE(console.find<QToolButton>("m_music_playButton")->text(), QStringLiteral("Play"));
        LogRecorder log;
        Q_EMIT renderer.stateChanged(KelvoRenderer::Playing);
        QCOMPARE(log.lines(), QStringList());
    }

    void removingTheCurrentRenderer()
    {
        RecordingRenderer first("r1", "one");
        registry()->addRenderer(&first);
        const ConsoleFixture console;
        LogRecorder log;
        registry()->removeRenderer(&first);
        QVERIFY(log.containsInOrder({"KelvoRendererController::rendererRemoved  \"one\" \"r1\"",
            "KelvoMainWindow::showRendererName, \"one\" \"r1\" false"}));
        QCOMPARE(entries(console), QStringList());
        QCOMPARE(console.application()->renderers()->currentRenderer(), nullptr);
        first.takeCalls();
        console.find<QToolButton>("m_music_playButton")->click();
        QCOMPARE(first.calls(), QStringList());
    }

    void removingAnotherRendererLeavesTheCurrentOne_data()
    {
        QTest::addColumn<int>("current");
        QTest::addColumn<QList<int>>("removed");
        QTest::newRow("behind it") << 0 << QList<int>({1});
        QTest::newRow("before it") << 1 << QList<int>({0});
        QTest::newRow("two before it") << 2 << QList<int>({0, 1});
        QTest::newRow("next before it") << 2 << QList<int>({1});
        QTest::newRow("all others") << 1 << QList<int>({2, 0});
    }

    void removingAnotherRendererLeavesTheCurrentOne()
    {
        QFETCH(int, current);
        QFETCH(QList<int>, removed);
        const ThreeRenderers three;
        const ConsoleFixture console;
        auto *combo = console.find<QComboBox>("m_music_rendererCombo");
        combo->setCurrentIndex(current);
        Q_EMIT three.at(current)->stateChanged(KelvoRenderer::Playing);
        three.at(current)->takeCalls();
        LogRecorder log;
        QStringList lines;
        for (const int index : removed) {
            const QString uuid = three.at(index)->uuid();
            registry()->removeRenderer(three.at(index));
            lines += {QStringLiteral("KelvoRendererController::rendererRemoved  \"%1\" \"%1\"").arg(uuid),
                QStringLiteral("KelvoMainWindow::showRendererName, \"%1\" \"%1\" false").arg(uuid)};
        }
        QCOMPARE(log.lines(), lines);
        QCOMPARE(three.at(current)->calls(), QStringList());
        QCOMPARE(combo->currentData().toString(), three.at(current)->uuid());
        QCOMPARE(combo->count(), 3 - removed.size());
        QCOMPARE(console.application()->renderers()->currentRenderer(), three.at(current));
        QCOMPARE(console.find<QToolButton>("m_music_playButton")->text(), QStringLiteral("Pause"));
        const ModalCloser closer;
        Q_EMIT three.at(current)->playbackCompleted();
        QCOMPARE(closer.seen(), QStringList("Playback completed!"));
    }

    void afterTheCurrentRendererNoneIsCurrent_data()
    {
        QTest::addColumn<int>("current");
        QTest::newRow("first") << 0;
        QTest::newRow("middle") << 1;
        QTest::newRow("last") << 2;
    }

    void afterTheCurrentRendererNoneIsCurrent()
    {
        QFETCH(int, current);
        const ThreeRenderers three;
        const ConsoleFixture console;
        auto *combo = console.find<QComboBox>("m_music_rendererCombo");
        combo->setCurrentIndex(current);
        Q_EMIT three.at(current)->stateChanged(KelvoRenderer::Playing);
        three.takeCalls();
        const QSignalSpy choices(console.window(), SIGNAL(currentRendererChanged(QString)));
        registry()->removeRenderer(three.at(current));
        RecordingRenderer another("r4", "another");
        registry()->addRenderer(&another);
        registry()->addRenderer(three.at(current)); // it comes back
        QCOMPARE(combo->currentIndex(), -1);
        QCOMPARE(combo->count(), 4);
        QCOMPARE(choices.count(), 0);
        QCOMPARE(console.application()->renderers()->currentRenderer(), nullptr);
        QCOMPARE(three.takeCalls() + another.calls(), QStringList());
        combo->setCurrentIndex(3); // now the user picks it
        QCOMPARE(choices, QList<QVariantList>({{three.at(current)->uuid()}}));
        QCOMPARE(console.application()->renderers()->currentRenderer(), three.at(current));
    }

    void displayAfterTheCurrentRendererIsThatOfStopped_data()
    {
        QTest::addColumn<bool>("destroyed");
        QTest::newRow("removed") << false;
        QTest::newRow("destroyed without a word") << true;
    }

    void displayAfterTheCurrentRendererIsThatOfStopped()
    {
        QFETCH(bool, destroyed);
        auto first = std::make_unique<RecordingRenderer>("r1", "one");
        RecordingRenderer second("r2", "two");
        registry()->addRenderer(first.get());
        registry()->addRenderer(&second);
        const ConsoleFixture console;
        Q_EMIT first->stateChanged(KelvoRenderer::Playing);
        console.window()->showDuration(100);
        console.window()->showPosition(40);
        if (destroyed)
            first.reset();
        else
            registry()->removeRenderer(first.get());
        QCOMPARE(console.find<QToolButton>("m_music_playButton")->text(), QStringLiteral("Play"));
        QCOMPARE(console.find<QLabel>("m_music_durationLabel")->text(), QStringLiteral("0:00 /\n1:40"));
        QCOMPARE(console.find<QSlider>("m_music_durationSlider")->value(), 0);
        QVERIFY(!console.application()->renderers()->findChild<QTimer *>()->isActive());
        QVERIFY(console.find<QMenu>("m_menuPause_At")->isEnabled());
        QCOMPARE(console.find<QComboBox>("m_music_rendererCombo")->currentIndex(), -1);
        QCOMPARE(second.calls(), QStringList());
    }

    void sliderHeldWhileItsRendererGoesSeeksNowhere()
    {
        const ThreeRenderers three;
        const ConsoleFixture console;
        console.find<QComboBox>("m_music_rendererCombo")->setCurrentIndex(1);
        Q_EMIT three.at(1)->stateChanged(KelvoRenderer::Playing);
        console.window()->showDuration(100);
        auto *slider = console.find<QSlider>("m_music_durationSlider");
        slider->setSliderDown(true);
        slider->setSliderPosition(50);
        three.takeCalls();
        registry()->removeRenderer(three.at(1));
        LogRecorder log;
        slider->setSliderDown(false);
        QCOMPARE(log.lines(),
            QStringList({"KelvoMainWindow::emitPosition", "void KelvoRendererController::seek(int)",
                "void KelvoRendererController::seek(int)"}));
        QCOMPARE(three.takeCalls(), QStringList());
    }

    void firstRendererAfterAllHaveGoneIsCurrent_data()
    {
        QTest::addColumn<QList<int>>("removed");
        QTest::newRow("the current one last") << QList<int>({1, 2, 0});
        QTest::newRow("the current one first") << QList<int>({0, 1, 2});
        QTest::newRow("the current one in between") << QList<int>({2, 0, 1});
    }

    void firstRendererAfterAllHaveGoneIsCurrent()
    {
        QFETCH(QList<int>, removed);
        const ThreeRenderers three;
        const ConsoleFixture console;
        const QSignalSpy choices(console.window(), SIGNAL(currentRendererChanged(QString)));
        const LogRecorder log;
        for (const int index : removed)
            registry()->removeRenderer(three.at(index));
        QCOMPARE(choices.count(), 0);
        QCOMPARE(log.count("KelvoRendererController::rendererStateChanged"), 0); // nothing played
        QCOMPARE(console.application()->renderers()->currentRenderer(), nullptr);
        RecordingRenderer next("r4", "next");
        registry()->addRenderer(&next);
        QCOMPARE(choices, QList<QVariantList>({{"r4"}}));
        QCOMPARE(console.application()->renderers()->currentRenderer(), &next);
    }

    void rendererDestroyedInMidPlay()
    {
        auto renderer = std::make_unique<RecordingRenderer>("r1", "one");
        registry()->addRenderer(renderer.get());
        const ConsoleFixture console;
        Q_EMIT renderer->stateChanged(KelvoRenderer::Playing);
        renderer.reset();
        QCOMPARE(console.application()->renderers()->currentRenderer(), nullptr);
        console.application()->renderers()->invokeGetPosition();
        console.application()->renderers()->handlePlay();
    }

    /// The window has no native part any more and is deleted from the event loop.
    void rendererAddedWhileTheWindowCloses()
    {
        const ConsoleFixture console;
        console.window()->show();
        QVERIFY(QTest::qWaitForWindowExposed(console.window()));
        console.window()->windowHandle()->close(); // as the window manager does
        RecordingRenderer renderer("r1", "one");
        registry()->addRenderer(&renderer);
        QVERIFY(renderer.calls().contains("setKelvoProperty(xid,uint,0)"));
    }

    void renamedRenderer()
    {
        RecordingRenderer renderer("r1", "one");
        registry()->addRenderer(&renderer);
        const ConsoleFixture console;
        LogRecorder log;
        renderer.rename("uno");
        QVERIFY(log.contains("KelvoRendererController::rendererNameChanged \"uno\""));
        QCOMPARE(entries(console), QStringList("uno"));
        renderer.rename(QString()); // shown as it is
        QCOMPARE(entries(console), QStringList(QString()));
    }

    void nameChangeWithoutASenderDoesNothing()
    {
        RecordingRenderer renderer("r1", "one");
        registry()->addRenderer(&renderer);
        const ConsoleFixture console;
        console.application()->renderers()->rendererNameChanged("uno");
        QCOMPARE(entries(console), QStringList("one"));
    }

    void startUriPlaysOnEachRendererOfThatName()
    {
        const ConsoleFixture console;
        console.application()->renderers()->setStartUri(QUrl("file:///a.pls"), "audio/x-scpls", "wanted");
        RecordingRenderer other("r0", "other");
        registry()->addRenderer(&other);
        RecordingRenderer first("r1", "wanted");
        registry()->addRenderer(&first);
        QCOMPARE(first.calls(), QStringList("playUriWithType(file:///a.pls,audio/x-scpls)"));
        QCOMPARE(console.application()->renderers()->currentRenderer(), &other);
        registry()->removeRenderer(&first);
        first.takeCalls();
        registry()->addRenderer(&first);
        QCOMPARE(first.calls(), QStringList("playUriWithType(file:///a.pls,audio/x-scpls)"));
        QCOMPARE(other.calls().filter("playUri").size(), 0);
    }

    void unnamedRendererGetsNoStartUri()
    {
        const ConsoleFixture console;
        RecordingRenderer renderer("r1");
        registry()->addRenderer(&renderer);
        QCOMPARE(renderer.calls().filter("playUri").size(), 0);
    }

    void manyRenderersComeAndGo()
    {
        const ConsoleFixture console;
        std::vector<std::unique_ptr<RecordingRenderer>> renderers;
        for (int i = 0; i < 200; ++i) {
            renderers.push_back(
                std::make_unique<RecordingRenderer>(QString::number(i), QStringLiteral("r%1").arg(i)));
            registry()->addRenderer(renderers.back().get());
        }
        QCOMPARE(entries(console).size(), 200);
        renderers.clear();
        QCOMPARE(entries(console), QStringList());
        QCOMPARE(console.application()->renderers()->currentRenderer(), nullptr);
    }
};

KELVO_WIDGET_TEST(RendererSelectionTest)
#include "RendererSelectionTest.moc"
