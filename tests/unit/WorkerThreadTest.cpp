// SPDX-License-Identifier: MIT
#include "WorkerThread.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QSemaphore>
#include <QTest>

#include <atomic>
#include <memory>

namespace {
/// What the thread leaves behind. It may end after the test that started it.
struct Traces
{
    QSemaphore hold;
    QSemaphore done;
    QStringList calls;
    std::atomic<QThread *> calledOn = nullptr;
    std::atomic<QThread *> deletedOn = nullptr;
};

class Worker : public QObject
{
public:
    explicit Worker(std::shared_ptr<Traces> traces)
        : m_traces(std::move(traces))
    {
    }
    ~Worker() override { m_traces->deletedOn = QThread::currentThread(); }

private:
    const std::shared_ptr<Traces> m_traces;
};
} // namespace

/// A thread with the one object that lives in it.
class WorkerThreadTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void worksInOrderOnItsThread()
    {
        const auto traces = std::make_shared<Traces>();
        WorkerThread thread(std::make_unique<Worker>(traces), QStringLiteral("test-worker"));
        thread.post([traces] { traces->calls.append(QStringLiteral("first")); });
        thread.post([traces] {
            traces->calls.append(QStringLiteral("second"));
            traces->calledOn = QThread::currentThread();
            traces->done.release();
        });
        QVERIFY(traces->done.tryAcquire(1, 5000));
        QCOMPARE(traces->calls, (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
        QCOMPARE(traces->calledOn.load(), thread.worker<Worker>()->thread());
        QVERIFY(traces->calledOn != QThread::currentThread());
        QCOMPARE(traces->calledOn.load()->objectName(), QStringLiteral("test-worker"));
    }

    void finishesWhatItWasToldAndDeletesOnItsThread()
    {
        const auto traces = std::make_shared<Traces>();
        {
            WorkerThread thread(std::make_unique<Worker>(traces), QStringLiteral("test-worker"));
            thread.post([traces] { traces->hold.acquire(); });
            thread.post([traces] { traces->calledOn = QThread::currentThread(); });
        } // does not wait, else it would never come back
        const bool wasDeleted = traces->deletedOn;
        traces->hold.release();
        QVERIFY(!wasDeleted);
        QTRY_VERIFY(traces->deletedOn);
        QVERIFY(traces->calledOn);
        QCOMPARE(traces->deletedOn.load(), traces->calledOn.load());
    }
};

KELVO_TEST(WorkerThreadTest)
#include "WorkerThreadTest.moc"
