// SPDX-License-Identifier: MIT
#include "ThreadEnd.h"

#include "KelvoMessageHandler.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>
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
    if (!ending.thread->wait(QDeadlineTimer(ending.longestWait)))
        leaveRunning(std::move(ending.thread));
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

// What is left alone may use static objects, and may hold a lock that the last steps of exit() take (the dynamic
// linker's, while a library is being loaded). So none of those steps is made; the exit code stays.
void endWithoutCleaningUp()
{
    static const int registered = ::on_exit(
        [](int status, void *) {
            std::fflush(stdout);
            ::_exit(status);
        },
        nullptr);
    Q_UNUSED(registered)
}
} // namespace

void leaveRunning(const QString &name)
{
    qCWarning(lcKelvo).noquote() << "Work does not end and is left alone:" << name;
    endWithoutCleaningUp();
}

void leaveRunning(std::unique_ptr<QThread> thread)
{
    leaveRunning(thread->objectName());
    static_cast<void>(thread.release());
}

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
