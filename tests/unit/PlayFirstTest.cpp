// SPDX-License-Identifier: MIT
#include "platform/PlayFirst.h"
#include "KelvoRegistry.h"
#include "KelvoTestCase.h"
#include "KelvoTrackerModelFactory.h"
#include "KelvoTrackerStore.h"
#include "MinimalObjects.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QTest>

/// What the command line names plays before the store is opened.
class PlayFirstTest : public KelvoTestCase
{
    Q_OBJECT

    static constexpr int aWhile = 200;
    static constexpr int patience = 20'000;

private Q_SLOTS:
    void cleanup() { QTRY_COMPARE(KelvoTrackerStore::instance()->state(), KelvoTrackerStore::Closed); }

    void theStoreIsOpenedOnceARendererPlays()
    {
        KelvoRegistry registry;
        const PlayFirst first(&registry);
        KelvoTrackerModelFactory factory("A", "B", 10);
        QSignalSpy initialised(&factory, &KelvoTrackerModelFactory::initCompleted);
        factory.init();
        MinimalRenderer renderer("a", "A");
        MinimalRenderer other("b", "B");
        QVERIFY(registry.addRenderer(&renderer) && registry.addRenderer(&other));
        for (const auto state : {KelvoRenderer::Stopped, KelvoRenderer::Transitioning})
            Q_EMIT renderer.stateChanged(state);
        QVERIFY(!initialised.wait(aWhile));
        Q_EMIT renderer.stateChanged(KelvoRenderer::Playing);
        QVERIFY(initialised.wait(patience));
        QVERIFY(initialised.first().first().toBool());
    }

    void theStoreIsOpenedWhenNobodyIsWaitedForAnyMore()
    {
        KelvoRegistry registry;
        auto first = std::make_unique<PlayFirst>(&registry);
        KelvoTrackerModelFactory factory("A", "B", 10);
        QSignalSpy initialised(&factory, &KelvoTrackerModelFactory::initCompleted);
        factory.init();
        QVERIFY(!initialised.wait(aWhile));
        first.reset();
        QVERIFY(initialised.wait(patience));
    }
};

KELVO_WIDGET_TEST(PlayFirstTest)
#include "PlayFirstTest.moc"
