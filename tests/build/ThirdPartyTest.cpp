// SPDX-License-Identifier: MIT
// Started by package_test.py, which puts the back end of somebody else into the plug-in folder.
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "KelvoTestCase.h"

#include <QSignalSpy>
#include <QTest>

class ThirdPartyTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void isLoadedAndPlays();
};

void ThirdPartyTest::isLoadedAndPlays()
{
    const QString file = QStringLiteral("third-party.so");
    KelvoRegistry registry;
    KelvoPluginLoader *loader = registry.pluginLoader();
    QCOMPARE(loader->status(file).name, QStringLiteral("Metronome"));
    QSignalSpy loaded(loader, &KelvoPluginLoader::pluginLoaded);
    registry.loadPlugin(file);
    QTRY_COMPARE(loaded.size(), 1);
    QCOMPARE(loader->status(file).error, QString());

    // Made by another build, and still one of our classes.
    QCOMPARE(registry.renderers().size(), 1);
    auto *renderer = qobject_cast<KelvoRenderer *>(static_cast<QObject *>(registry.renderers().first()));
    QVERIFY(renderer);
    QSignalSpy states(renderer, &KelvoRenderer::stateChanged);
    renderer->playUri(QUrl(QStringLiteral("silence:")));
    QTRY_COMPARE(states.size(), 2);
    QCOMPARE(states.last().first().value<KelvoRenderer::State>(), KelvoRenderer::Playing);

    registry.unloadPlugin(file);
    QVERIFY(registry.renderers().isEmpty());
}

QTEST_GUILESS_MAIN(ThirdPartyTest)
#include "ThirdPartyTest.moc"
