// SPDX-License-Identifier: MIT
// What whoever listens to commands hears of a renderer.
#include "FakePlaylist.h"
#include "ItemRenderer.h"
#include "KelvoCommandListener.h"
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoTestCase.h"
#include "MinimalObjects.h"
#include "NotingListener.h"
#include "RendererProbe.h"
#include "ScriptedEngine.h"
#include "TestGroup.h"

#include <QTest>

namespace {
/// Whether it was asked for its uuid.
class AskedRenderer : public MinimalRenderer
{
public:
    AskedRenderer()
        : MinimalRenderer(QStringLiteral("asked"), {})
    {
    }
    QString uuid() const override
    {
        ++timesAsked;
        return MinimalRenderer::uuid();
    }
    void next() override { KelvoCommandListener::noteCommand(*this, "next", 7); }
    mutable int timesAsked = 0;
};

class CommandNotesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void eachCommandByItsName();
    void commandsOfAPlaylist();
    void answersWhenTheyAreGiven();
    void answerOfARendererThatIsGone();
    void nobodyListens();
    void listenerIsReplaced();

private:
    std::unique_ptr<NotingListener> m_listener;
    std::unique_ptr<ItemRenderer> m_renderer;
};

void CommandNotesTest::init()
{
    KelvoTestCase::init();
    m_listener = std::make_unique<NotingListener>();
    KelvoCommandListener::install(m_listener.get());
    m_renderer = std::make_unique<ItemRenderer>(std::make_unique<ScriptedEngine>(), QStringLiteral("uuid"));
}

void CommandNotesTest::cleanup()
{
    m_renderer.reset();
    m_listener.reset();
}

void CommandNotesTest::eachCommandByItsName()
{
    FakePlaylist playlist(QStringLiteral("list"), QStringLiteral("name"));
    KelvoRenderer &renderer = *m_renderer;
    renderer.play();
    renderer.playUri(QUrl("http://media/song"));
    renderer.playUriWithType(QUrl("http://media/list"), QStringLiteral("audio/x-scpls"));
    renderer.pause();
    renderer.resume();
    renderer.stop();
    renderer.next();
    renderer.previous();
    renderer.pauseAt(3);
    renderer.gotoIndex(2);
    renderer.setPosition(-10, KelvoRenderer::SeekRelative);
    renderer.assignPlaylist(&playlist);
    renderer.assignPlaylist(nullptr);
    renderer.setKelvoProperty(KelvoRenderer::PropertyVolume, 40);
    renderer.setKelvoProperty(QStringLiteral("unknown"), QStringLiteral("text"));
    QCOMPARE(m_listener->takeHeard(),
        QStringList({"uuid play()", "uuid playUri(http://media/song)",
            "uuid playUriWithType(http://media/list,audio/x-scpls)", "uuid pause()", "uuid resume()",
            "uuid stop()", "uuid next()", "uuid previous()", "uuid pauseAt(3)", "uuid gotoIndex(2)",
            "uuid setPosition(-10,1)", "uuid assignPlaylist(list)", "uuid assignPlaylist(none)",
            "uuid setKelvoProperty(volume,40)", "uuid setKelvoProperty(unknown,text)"}));
}

void CommandNotesTest::commandsOfAPlaylist()
{
    KelvoGeneralSourcePlaylist playlist(QStringLiteral("list"), QStringLiteral("name"), {});
    playlist.shuffle();
    playlist.unshuffle();
    playlist.setRepeatMode(KelvoPlaylist::RepeatOne);
    playlist.sort(KelvoPlaylist::SortKeyTitle, KelvoPlaylist::TitleDescending);
    playlist.clear();
    // Also what it cannot do.
    playlist.removeItem(7);
    playlist.removeItems(3, 5);
    QCOMPARE(m_listener->takeHeard(),
        QStringList({"list shuffle()", "list unshuffle()", "list setRepeatMode(2)", "list sort(title,1)",
            "list clear()", "list removeItem(7)", "list removeItems(3,5)"}));
}

void CommandNotesTest::answersWhenTheyAreGiven()
{
    RendererProbe probe(*m_renderer);
    m_renderer->getStatus(&probe, "statusAnswer(QString,uint,int,QString)");
    m_renderer->getPosition(&probe, "positionAnswer(uint)");
    m_renderer->kelvoProperty(QStringLiteral("position"), &probe, "propertyAnswer(QString,QVariant)");
    m_renderer->kelvoProperty(KelvoRenderer::PropertyVolume, nullptr, nullptr);
    QCOMPARE(m_listener->takeHeard(),
        QStringList({"uuid getStatus()", "uuid getPosition()", "uuid kelvoProperty(position)",
            "uuid kelvoProperty(volume)"}));
    QTRY_COMPARE(probe.propertyAnswers.size(), 1);
    const QStringList answers = m_listener->takeHeard();
    QCOMPARE(answers.size(), 4);
    // The state as such: a number means nothing to whoever reads it.
    QCOMPARE(answers.at(0), "=uuid getStatus(,0,state 0,)");
    QCOMPARE(answers.at(1), "=uuid getPosition(0)");
    QCOMPARE(answers.at(2), "=uuid kelvoProperty(position,0)");
    QVERIFY2(answers.at(3).startsWith("=uuid kelvoProperty(volume,"), qPrintable(answers.at(3)));
}

void CommandNotesTest::answerOfARendererThatIsGone()
{
    RendererProbe probe(*m_renderer);
    m_renderer->getPosition(&probe, "positionAnswer(uint)");
    m_renderer->getStatus(&probe, "statusAnswer(QString,uint,int,QString)");
    m_renderer.reset();
    QCoreApplication::processEvents();
    QCOMPARE(m_listener->takeHeard(), QStringList({"uuid getPosition()", "uuid getStatus()"}));
}

void CommandNotesTest::nobodyListens()
{
    AskedRenderer renderer;
    m_listener.reset();
    renderer.next();
    QCOMPARE(renderer.timesAsked, 0);
    m_listener = std::make_unique<NotingListener>();
    KelvoCommandListener::install(m_listener.get());
    renderer.next();
    QCOMPARE(m_listener->takeHeard(), QStringList("asked next(7)"));
    KelvoCommandListener::install(nullptr);
    renderer.next();
    QCOMPARE(m_listener->takeHeard(), QStringList());
}

void CommandNotesTest::listenerIsReplaced()
{
    NotingListener other;
    KelvoCommandListener::install(&other);
    // The one that was replaced does not end the listening of the other.
    m_listener.reset();
    m_renderer->play();
    QCOMPARE(other.takeHeard(), QStringList("uuid play()"));
}
} // namespace

KELVO_TEST(CommandNotesTest)
#include "CommandNotesTest.moc"
