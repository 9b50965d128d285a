// SPDX-License-Identifier: MIT
#include "query/QueryState.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

#include <future>

using namespace std::chrono_literals;

/// What the two threads of a query agree on.
class QueryStateTest : public KelvoTestCase
{
    Q_OBJECT
    using Rest = QueryState::Rest;
    using Demand = QueryState::Demand;
    using Outcome = QueryState::Outcome;

    static constexpr auto Long = 20s;
    const StoreError m_calledOff{StoreError::Cancelled, {}};

private Q_SLOTS:
    void restThatIsWantedBeforehandComesAtOnce()
    {
        QueryState state;
        QCOMPARE(state.demandRest(), Rest::Comes);
        QCOMPARE(state.waitForDemand(Long), Demand::Now);
        QVERIFY(state.end(Outcome::Completed, {}).isTold);
        QCOMPARE(state.demandRest(), Rest::WasComplete);
    }

    void restThatNobodyWantsIsKept()
    {
        QueryState state;
        QCOMPARE(state.waitForDemand(0ms), Demand::Later);
        QVERIFY(!state.park());
        QCOMPARE(state.demandRest(), Rest::IsKept);
        QCOMPARE(state.demandRest(), Rest::Comes); // once is enough
    }

    void restThatIsWantedWhileItIsReadIsHandedOver()
    {
        QueryState state;
        QCOMPARE(state.waitForDemand(0ms), Demand::Later);
        QCOMPARE(state.demandRest(), Rest::Comes);
        QVERIFY(state.park());
    }

    void keptRestOutlivesItsStore()
    {
        QueryState state;
        QCOMPARE(state.waitForDemand(0ms), Demand::Later);
        state.interrupt();
        QVERIFY(state.isStopped());
        QVERIFY(!state.park());
        QVERIFY(!state.isStopped());
        QVERIFY(!state.hasLostItsStore());
        QCOMPARE(state.demandRest(), Rest::IsKept);
    }

    void restOfAClosedStoreIsLost()
    {
        QueryState state;
        state.interrupt();
        QCOMPARE(state.waitForDemand(Long), Demand::Never);
        const QueryState::End end = state.end(Outcome::Failed, m_calledOff);
        QVERIFY(!end.isTold); // but by the wish for it
        QCOMPARE(end.error.kind, StoreError::Closed);
        QVERIFY(state.hasLostItsStore());
        QCOMPARE(state.demandRest(), Rest::CannotCome);
        QCOMPARE(state.failure(), "The tracker store was closed");
    }

    void restThatIsWantedFromAClosedStoreIsTold()
    {
        QueryState state;
        QCOMPARE(state.demandRest(), Rest::Comes);
        state.interrupt();
        QCOMPARE(state.waitForDemand(Long), Demand::Never);
        QVERIFY(state.end(Outcome::Failed, m_calledOff).isTold);
        QVERIFY(!state.hasLostItsStore());
        QCOMPARE(state.failure(), "The tracker store was closed");
    }

    void otherFailuresOfAnUnwantedRestAreKept()
    {
        QueryState state;
        QCOMPARE(state.waitForDemand(0ms), Demand::Later);
        const QueryState::End end = state.end(Outcome::Failed, {StoreError::Damaged, "torn"});
        QVERIFY(!end.isTold);
        QCOMPARE(end.error.kind, StoreError::Damaged);
        QVERIFY(!state.hasLostItsStore());
        QCOMPARE(state.demandRest(), Rest::CannotCome);
        QCOMPARE(state.failure(), "torn");
    }

    void workerWaitsForRoom()
    {
        QueryState state;
        for (int block = 0; block < 3; ++block)
            QVERIFY(state.waitForRoom());
        auto fourth = std::async(std::launch::async, [&state] { return state.waitForRoom(); });
        QCOMPARE(fourth.wait_for(50ms), std::future_status::timeout);
        state.noteTaken();
        QVERIFY(fourth.get());
        auto fifth = std::async(std::launch::async, [&state] { return state.waitForRoom(); });
        state.interrupt();
        QVERIFY(!fifth.get());
    }

    void nothingIsToldAfterCancel()
    {
        QueryState state;
        state.setNotice("news");
        auto demand = std::async(std::launch::async, [&state] { return state.waitForDemand(Long); });
        QCOMPARE(state.cancel(), "news");
        QCOMPARE(demand.get(), Demand::Never);
        QVERIFY(state.isCancelled() && state.isStopped());
        const QueryState::End end = state.end(Outcome::Failed, {StoreError::Damaged, "torn"});
        QVERIFY(!end.isTold && !end.error);
        state.setNotice("later news");
        QCOMPARE(state.takeNotice(), QString());
    }

    void noticeIsTakenOnce()
    {
        QueryState state;
        state.setNotice("news");
        QCOMPARE(state.takeNotice(), "news");
        QCOMPARE(state.takeNotice(), QString());
        QCOMPARE(state.cancel(), QString());
    }
};

KELVO_TEST(QueryStateTest)
#include "QueryStateTest.moc"
