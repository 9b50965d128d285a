// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "KelvoRenderer.h"
#include "KelvoTestCase.h"
#include "RendererProbe.h"
#include "TestGroup.h"
#include "TestRegistry.h"

#include <QComboBox>
#include <QLabel>
#include <QTest>
#include <QTextEdit>
#include <QToolButton>

namespace {
const QString pluginFile = QStringLiteral("simulator.so");
const QUrl song(QStringLiteral("sim:song?title=Song&artist=Singer&duration=30"));
} // namespace

/// The window when a renderer is chosen that plays already: real renderers, which hear nothing but what the console
/// says when one is chosen.
class RendererChoiceTest : public KelvoTestCase
{
    Q_OBJECT
private:
    KelvoRenderer *renderer(const char *uuid) { return registry()->findRendererByUuid(QLatin1String(uuid)); }
    void choose(const ConsoleFixture &console, const char *uuid)
    {
        auto *combo = console.find<QComboBox>("m_music_rendererCombo");
        combo->setCurrentIndex(combo->findText(renderer(uuid)->name()));
    }
    QString caption(const ConsoleFixture &console)
    {
        return console.find<QToolButton>("m_music_playButton")->text();
    }
    QColor captionColor(const ConsoleFixture &console)
    {
        return console.find<QToolButton>("m_music_playButton")->palette().color(QPalette::ButtonText);
    }
    QStringList metadata(const ConsoleFixture &console)
    {
        return console.find<QTextEdit>("m_music_metadataField")->toPlainText().split(QLatin1Char('\n'));
    }
    QString position(const ConsoleFixture &console)
    {
        return console.find<QLabel>("m_music_durationLabel")
            ->text()
            .section(QLatin1Char('/'), 0, 0)
            .trimmed();
    }
    /// Brings a renderer that is not current into a state.
    bool play(KelvoRenderer *renderer, KelvoRenderer::State wanted)
    {
        RendererProbe probe(*renderer);
        renderer->playUri(song);
        if (!QTest::qWaitFor([&] { return probe.state() == KelvoRenderer::Playing; }))
            return false;
        renderer->setPosition(10, KelvoRenderer::SeekAbsolute);
        if (wanted == KelvoRenderer::Paused)
            renderer->pause();
        return QTest::qWaitFor([&] { return probe.state() == wanted; });
    }

private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        registry()->loadPlugin(pluginFile);
        QTRY_VERIFY(renderer("KelvoSimulatorB"));
    }
    void cleanup() { registry()->unloadPlugin(pluginFile); }

    void showsWhatPlaysAlready()
    {
        const ConsoleFixture console;
        QVERIFY(play(renderer("KelvoSimulatorB"), KelvoRenderer::Playing));
        QCOMPARE(caption(console), QStringLiteral("Play"));
        choose(console, "KelvoSimulatorB");
        QTRY_COMPARE(caption(console), QStringLiteral("Pause"));
        QTRY_COMPARE(metadata(console), QStringList({"title: Song", "artist: Singer", "duration: 30"}));
        QTRY_VERIFY(position(console) >= QLatin1String("0:11"));
        console.find<QToolButton>("m_music_playButton")->click();
        QTRY_COMPARE(caption(console), QStringLiteral("Resume"));
    }

    void showsWhereAPausedOneStands()
    {
        const ConsoleFixture console;
        QVERIFY(play(renderer("KelvoSimulatorB"), KelvoRenderer::Paused));
        choose(console, "KelvoSimulatorB");
        QTRY_COMPARE(caption(console), QStringLiteral("Resume"));
        QTRY_COMPARE(position(console), QStringLiteral("0:10"));
    }

    void redCaptionsBelongToTheirRenderer()
    {
        const ConsoleFixture console;
        KelvoRenderer *const first = renderer("KelvoSimulatorA");
        first->setKelvoProperty(KelvoRenderer::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, true);
        QTRY_COMPARE(captionColor(console), QColor(Qt::red));
        choose(console, "KelvoSimulatorB");
        QTRY_COMPARE(captionColor(console), QColor(Qt::black));
        choose(console, "KelvoSimulatorA");
        QTRY_COMPARE(captionColor(console), QColor(Qt::red));
    }

    void factsOfTheFormerRendererAreNotMixedIn()
    {
        const ConsoleFixture console;
        QVERIFY(play(renderer("KelvoSimulatorA"), KelvoRenderer::Playing));
        QTRY_VERIFY(metadata(console).contains(QLatin1String("title: Song")));
        choose(console, "KelvoSimulatorB");
        QTRY_COMPARE(metadata(console), QStringList(QString()));
        renderer("KelvoSimulatorB")->playUri(song);
        QTRY_COMPARE(metadata(console).count(QLatin1String("title: Song")), 1);
    }
};

KELVO_WIDGET_TEST(RendererChoiceTest)
#include "RendererChoiceTest.moc"
