// SPDX-License-Identifier: MIT
#include "ThreadEnd.h"

#include "KelvoMessageHandler.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>
#include <vector>

namespace {
using Thread = std::unique_ptr<QThread>;
constexpr int LongestWait = 5000; // milliseconds

std::vector<Thread> &endingThreads()
{
    static std::vector<Thread> threads;
    return threads;
}

void waitFor(Thread thread)
{
    if (thread->wait(LongestWait))
        return;
    qCWarning(lcKelvo) << "Thread" << thread->objectName() << "does not end";
    // Outlives the program, as said above.
    static_cast<void>(thread.release());
}

void waitForAll()
{
    for (Thread &thread : std::exchange(endingThreads(), {}))
        waitFor(std::move(thread));
}

/// It has said that it is finished, so this waits for its very last steps. A deleteLater() would come too late when
/// the program ends with this turn of the event loop.
void forget(const QThread *thread)
{
    auto &threads = endingThreads();
    const auto found = std::find_if(
        threads.begin(), threads.end(), [thread](const Thread &one) { return one.get() == thread; });
    if (found == threads.end())
        return;
    Thread ended = std::move(*found);
    threads.erase(found);
    waitFor(std::move(ended));
}
} // namespace

void deleteWhenEnded(std::unique_ptr<QThread> thread)
{
    QCoreApplication *application = QCoreApplication::instance();
    if (!application) {
        waitFor(std::move(thread));
        return;
    }
    // Each time anew: plug-ins end their threads while the application ends, too.
    if (endingThreads().empty())
        qAddPostRoutine(waitForAll);
    QObject::connect(
        thread.get(), &QThread::finished, application, [ended = thread.get()] { forget(ended); },
        Qt::QueuedConnection);
    endingThreads().push_back(std::move(thread));
}
