// SPDX-License-Identifier: MIT
#include "WorkerThread.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QSemaphore>
#include <QTest>

#include <atomic>

namespace {
/// Says on which thread it is deleted.
class Worker : public QObject
{
public:
    explicit Worker(std::atomic<QThread *> *deletedOn)
        : m_deletedOn(deletedOn)
    {
    }
    ~Worker() override { *m_deletedOn = QThread::currentThread(); }

private:
    std::atomic<QThread *> *const m_deletedOn;
};
} // namespace

/// A thread with the one object that lives in it.
class WorkerThreadTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void worksInOrderOnItsThread()
    {
        std::atomic<QThread *> deletedOn = nullptr;
        WorkerThread thread(std::make_unique<Worker>(&deletedOn), QStringLiteral("test-worker"));
        QSemaphore done;
        QStringList calls;
        QThread *calledOn = nullptr;
        thread.post([&] { calls.append(QStringLiteral("first")); });
        thread.post([&] {
            calls.append(QStringLiteral("second"));
            calledOn = QThread::currentThread();
            done.release();
        });
        QVERIFY(done.tryAcquire(1, 5000));
        QCOMPARE(calls, (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
        QCOMPARE(calledOn, thread.worker<Worker>()->thread());
        QVERIFY(calledOn != QThread::currentThread());
        QCOMPARE(calledOn->objectName(), QStringLiteral("test-worker"));
    }

    void finishesWhatItWasToldAndDeletesOnItsThread()
    {
        std::atomic<QThread *> deletedOn = nullptr;
        std::atomic<QThread *> calledOn = nullptr;
        QSemaphore hold;
        {
            WorkerThread thread(std::make_unique<Worker>(&deletedOn), QStringLiteral("test-worker"));
            thread.post([&hold] { hold.acquire(); });
            thread.post([&calledOn] { calledOn = QThread::currentThread(); });
        } // does not wait, else it would never come back
        QVERIFY(!deletedOn);
        hold.release();
        QTRY_VERIFY(deletedOn);
        QVERIFY(calledOn);
        QCOMPARE(deletedOn.load(), calledOn.load());
    }
};

KELVO_TEST(WorkerThreadTest)
#include "WorkerThreadTest.moc"
