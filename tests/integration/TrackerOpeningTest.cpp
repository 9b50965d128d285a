// SPDX-License-Identifier: MIT
#include "TestGroup.h"
#include "TrackerTestCase.h"
#include "store/OpeningGate.h"

#include <QSignalSpy>
#include <QTest>

#include <future>

using namespace std::chrono_literals;

/// When a store is opened, while the program has something else to do first.
class TrackerOpeningTest : public TrackerTestCase
{
    Q_OBJECT

    static constexpr int aWhile = 200;

private Q_SLOTS:
    void nobodyWaitsAtAnOpenGate()
    {
        OpeningGate gate;
        gate.wait();
        gate.close();
        gate.open();
        gate.wait();
    }

    void aClosedGateKeepsWaitingUntilItIsOpened()
    {
        OpeningGate gate(1min);
        gate.close();
        std::future<void> waiter = std::async(std::launch::async, [&] { gate.wait(); });
        const auto before = waiter.wait_for(std::chrono::milliseconds(aWhile));
        gate.open();
        QCOMPARE(before, std::future_status::timeout);
        QCOMPARE(waiter.wait_for(20s), std::future_status::ready);
    }

    void aGateOpensByItself()
    {
        const auto start = std::chrono::steady_clock::now();
        OpeningGate gate(50ms);
        gate.close();
        gate.wait();
        QVERIFY(std::chrono::steady_clock::now() - start >= 50ms);
    }

    void aStoreIsOpenedWhenItIsNoLongerHeldBack()
    {
        QObject user;
        QSignalSpy opened(&store(), &KelvoTrackerStore::opened);
        KelvoTrackerModelFactory::holdBack(true);
        store().hold(&user);
        const bool isEarly = opened.wait(aWhile);
        QCOMPARE(store().state(), KelvoTrackerStore::Opening);
        // A query of that time is answered, too.
        const std::unique_ptr<KelvoTrackerModel> model(
            KelvoTrackerModelFactory("A", "B", 10).getModel(Type::AllSongs, 0, 0));
        QSignalSpy completed(model.get(), &KelvoTrackerModel::completed);
        KelvoTrackerModelFactory::holdBack(false);
        QVERIFY(!isEarly);
        QVERIFY(opened.wait(Patience));
        QCOMPARE(store().state(), KelvoTrackerStore::Open);
        QVERIFY(completed.count() == 1 || completed.wait(Patience));
    }

    void aStoreThatIsHeldBackCanBeClosed()
    {
        KelvoTrackerModelFactory::holdBack(true);
        QSignalSpy closed(&store(), &KelvoTrackerStore::closed);
        auto user = std::make_unique<QObject>();
        store().hold(user.get());
        user.reset();
        QTRY_COMPARE(store().state(), KelvoTrackerStore::Closed);
        KelvoTrackerModelFactory::holdBack(false);
        QVERIFY(closed.count() == 1 || closed.wait(Patience));
        QVERIFY(openStore());
    }
};

KELVO_TEST(TrackerOpeningTest)
#include "TrackerOpeningTest.moc"
