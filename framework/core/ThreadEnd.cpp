// SPDX-License-Identifier: MIT
#include "ThreadEnd.h"

#include "KelvoMessageHandler.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <algorithm>
#include <utility>
#include <vector>

namespace {
struct EndingThread
{
    std::unique_ptr<QThread> thread;
    std::chrono::milliseconds longestWait;
};

std::vector<EndingThread> &endingThreads()
{
    static std::vector<EndingThread> threads;
    return threads;
}

void waitFor(EndingThread ending)
{
    if (ending.thread->wait(QDeadlineTimer(ending.longestWait)))
        return;
    qCWarning(lcKelvo) << "Thread" << ending.thread->objectName() << "does not end";
    // Outlives the program, and what it works with must too.
    static auto &abandoned = *new std::vector<std::unique_ptr<QThread>>;
    abandoned.push_back(std::move(ending.thread));
}

void waitForAll()
{
    for (EndingThread &ending : std::exchange(endingThreads(), {}))
        waitFor(std::move(ending));
}

/// It has said that it is finished, so this waits for its very last steps. A deleteLater() would come too late when
/// the program ends with this turn of the event loop.
void forget(const QThread *thread)
{
    auto &threads = endingThreads();
    const auto found = std::find_if(threads.begin(), threads.end(),
        [thread](const EndingThread &one) { return one.thread.get() == thread; });
    if (found == threads.end())
        return;
    EndingThread ended = std::move(*found);
    threads.erase(found);
    waitFor(std::move(ended));
}
} // namespace

void deleteWhenEnded(std::unique_ptr<QThread> thread, std::chrono::milliseconds longestWait)
{
    QCoreApplication *application = QCoreApplication::instance();
    if (!application) {
        waitFor({std::move(thread), longestWait});
        return;
    }
    // Each time anew: plug-ins end their threads while the application ends, too.
    if (endingThreads().empty())
        qAddPostRoutine(waitForAll);
    QObject::connect(
        thread.get(), &QThread::finished, application, [ended = thread.get()] { forget(ended); },
        Qt::QueuedConnection);
    endingThreads().push_back({std::move(thread), longestWait});
}
