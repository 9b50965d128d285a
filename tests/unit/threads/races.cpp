// SPDX-License-Identifier: MIT
// races CASE: the GUI thread and a thread of the toolbox, with Qt between them. All cases but "none" have one race, which is
// in the function of the same name and in what it has given to the other thread.
#include "Mailbox.h"
#include "WorkerPool.h"
#include "WorkerThread.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QHash>
#include <QProcess>
#include <QThread>

#include <atomic>
#include <cstdio>
#include <functional>
#include <memory>

namespace {
/// Lets one thread go first. The sanitizer takes neither this nor time that passes for an order: relaxed operations have
/// none.
class Turn
{
public:
    void isOver() { m_isOver.store(true, std::memory_order_relaxed); }
    void wait() const
    {
        while (!m_isOver.load(std::memory_order_relaxed))
            QThread::msleep(1);
    }

private:
    std::atomic<bool> m_isOver = false;
};

struct Item
{
    int seconds = 0;
};

/// The other thread, and the way back from it.
struct Bench
{
    Turn firstTurn; ///< the GUI thread's
    QObject receiver;
    Mailbox mailbox{&receiver};
    WorkerThread worker{std::make_unique<QObject>(), QStringLiteral("races")};
    WorkerPool pool{QStringLiteral("races"), 1};
    QEventLoop loop; ///< runs until the call is back

    /// Makes the call on the worker's thread, then `back` on this one.
    void thereAndBack(
        const std::function<void()> &call, const std::function<void()> &back = [] {})
    {
        worker.post([this, call, back] {
            firstTurn.wait();
            call();
            mailbox.post([this, back] {
                back();
                loop.quit();
            });
        });
    }
};

/// Both threads count without anything between them.
[[gnu::noinline]] void sharedMemory(Bench &bench)
{
    static int counter = 0;
    bench.thereAndBack([] { ++counter; });
    ++counter;
    bench.firstTurn.isOver();
    bench.loop.exec();
}

/// The GUI thread goes on writing into what it has put into the queue.
[[gnu::noinline]] void touchedAfterHandOver(Bench &bench)
{
    const auto item = std::make_shared<Item>();
    bench.thereAndBack([item] { item->seconds += 1; });
    item->seconds = 10;
    bench.firstTurn.isOver();
    bench.loop.exec();
}

/// The other thread goes on writing into what it has given back.
[[gnu::noinline]] void touchedAfterReturn(Bench &bench)
{
    const auto item = std::make_shared<Item>();
    Turn secondTurn;
    bench.worker.post([&bench, &secondTurn, item] {
        bench.mailbox.post([&bench, &secondTurn, item] {
            item->seconds += 1;
            bench.firstTurn.isOver();
            // What this thread does must still be known when the other has its turn.
            secondTurn.wait();
            bench.loop.quit();
        });
        bench.firstTurn.wait();
        // Nothing is posted after this: that would order it before what the GUI thread does from then on.
        item->seconds = 10;
        secondTurn.isOver();
    });
    bench.loop.exec();
}

/// The GUI thread looks at a piece of work that it has not waited for.
[[gnu::noinline]] void notWaitedFor(Bench &bench)
{
    const auto item = std::make_shared<Item>();
    bench.pool.start([item, &bench] {
        bench.firstTurn.wait();
        item->seconds += 1;
    });
    item->seconds = 10;
    bench.firstTurn.isOver();
    bench.pool.waitForDone();
}

/// As sharedMemory, by a thread that has made a child before: it is still watched.
[[gnu::noinline]] void afterChild(Bench &bench)
{
    QProcess::execute(QStringLiteral("true"));
    static int counter = 0;
    bench.thereAndBack([] { ++counter; });
    ++counter;
    bench.firstTurn.isOver();
    bench.loop.exec();
}

/// Everything in order: what is given away is not touched until it has come back.
[[gnu::noinline]] void none(Bench &bench)
{
    const auto item = std::make_shared<Item>();
    item->seconds = 1;
    bench.firstTurn.isOver();
    bench.thereAndBack([item] { item->seconds += 1; }, [item] { item->seconds += 1; });
    bench.loop.exec();
    item->seconds += 1;
    bench.pool.start([item] { item->seconds += 1; });
    bench.pool.waitForDone();
    item->seconds += 1;
}
} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QHash<QString, void (*)(Bench &)> cases = {
        {QStringLiteral("sharedMemory"), sharedMemory},
        {QStringLiteral("touchedAfterHandOver"), touchedAfterHandOver},
        {QStringLiteral("touchedAfterReturn"), touchedAfterReturn},
        {QStringLiteral("notWaitedFor"), notWaitedFor},
        {QStringLiteral("afterChild"), afterChild},
        {QStringLiteral("none"), none},
    };
    const auto chosen = cases.value(QCoreApplication::arguments().value(1));
    if (!chosen) {
        std::fputs("usage: races CASE\n", stderr);
        return 2;
    }
    Bench bench;
    chosen(bench);
    return 0;
}
