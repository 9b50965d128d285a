// SPDX-License-Identifier: MIT
// Started by package_test.py, which puts the back end of somebody else into the plug-in folder.
#include "KelvoPlugin.h"
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"

#include <QSignalSpy>
#include <QTest>

class ThirdPartyTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void isLoadedAndPlays();
    void oneForAnotherVersionIsRefused();

private:
    const QString m_file = QStringLiteral("silence.so");
};

void ThirdPartyTest::isLoadedAndPlays()
{
    KelvoRegistry registry;
    KelvoPluginLoader *loader = registry.pluginLoader();
    QCOMPARE(loader->status(m_file).name, QStringLiteral("Silence"));
    QSignalSpy loaded(loader, &KelvoPluginLoader::pluginLoaded);
    registry.loadPlugin(m_file);
    QTRY_COMPARE(loaded.size(), 1);
    QCOMPARE(loader->status(m_file).error, QString());

    // Made by another build, and still one of our classes.
    QCOMPARE(registry.renderers().size(), 1);
    auto *renderer = qobject_cast<KelvoRenderer *>(static_cast<QObject *>(registry.renderers().first()));
    QVERIFY(renderer);
    QSignalSpy states(renderer, &KelvoRenderer::stateChanged);
    QSignalSpy ends(renderer, &KelvoRenderer::playbackCompleted);
    const auto state = [&](qsizetype index) {
        return states.at(index).first().value<KelvoRenderer::State>();
    };
    renderer->playUri(QUrl(QStringLiteral("silence:2")));
    QTRY_COMPARE(states.size(), 2);
    QCOMPARE(state(0), KelvoRenderer::Transitioning);
    QCOMPARE(state(1), KelvoRenderer::Playing);
    // Real time: it pauses at its first second, and ends after two.
    renderer->pauseAt(1);
    QTRY_COMPARE(states.size(), 3);
    QCOMPARE(state(2), KelvoRenderer::Paused);
    renderer->resume();
    QTRY_COMPARE(ends.size(), 1);
    QCOMPARE(state(states.size() - 1), KelvoRenderer::Stopped);

    registry.unloadPlugin(m_file);
    QVERIFY(registry.renderers().isEmpty());
}

void ThirdPartyTest::oneForAnotherVersionIsRefused()
{
    qputenv("KELVO_PLUGIN_PATH", qgetenv("KELVO_TEST_OTHER_VERSION"));
    KelvoRegistry registry;
    QSignalSpy failed(registry.pluginLoader(), &KelvoPluginLoader::pluginFailed);
    LogRecorder log;
    registry.loadPlugin(m_file);
    QTRY_COMPARE(failed.size(), 1);
    const QString reason = registry.pluginLoader()->failure(m_file);
    QVERIFY2(
        reason.startsWith(QStringLiteral("made for version 7.0 of the plug-in API")), qPrintable(reason));
    QVERIFY2(reason.contains(QStringLiteral("this program has " KELVO_API_VERSION)), qPrintable(reason));
    QCOMPARE(log.warnings(), QStringList(QStringLiteral("Plug-in silence.so cannot be used: ") + reason));
    QVERIFY(registry.renderers().isEmpty());
}

QTEST_GUILESS_MAIN(ThirdPartyTest)
#include "ThirdPartyTest.moc"
