// SPDX-License-Identifier: MIT
#include "StallMeter.h"

#include <QEvent>
#include <QThread>

#include <array>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <glib.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {
constexpr double nanosecondsOfOne = 1e6; // of a millisecond
constexpr double millisecondsOfOne = 1e3; // of a second
StallMeter *watching = nullptr; // the poll function is given no object
} // namespace

StallMeter::StallMeter()
    : m_file(::open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC))
{
    forget();
}

StallMeter::~StallMeter()
{
    if (watching)
        g_main_context_set_poll_func(nullptr, nullptr);
    watching = nullptr;
    if (m_file >= 0)
        ::close(m_file);
}

void StallMeter::watchEventLoop()
{
    watching = this;
    // The toolkit's own signals come once for all that a turn of this loop does.
    g_main_context_set_poll_func(nullptr, pollWatched);
}

int StallMeter::pollWatched(GPollFD *files, unsigned count, int timeout)
{
    watching->mark(QStringLiteral("outside of events"));
    const int result = g_poll(files, count, timeout);
    if (!watching->m_isLeftOut)
        watching->forget();
    return result;
}

/// How long the thread could have run and did not: the second number of its schedstat.
double StallMeter::delayed() const
{
    std::array<char, 64> text{};
    if (m_file < 0 || ::pread(m_file, text.data(), text.size() - 1, 0) <= 0)
        return 0;
    char *second = nullptr;
    std::strtoull(text.data(), &second, 10);
    return double(std::strtoull(second, nullptr, 10)) / nanosecondsOfOne;
}

StallMeter::Time StallMeter::time() const
{
    using namespace std::chrono;
    const auto since = steady_clock::now().time_since_epoch();
    timespec busy{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &busy);
    rusage usage{};
    ::getrusage(RUSAGE_THREAD, &usage);
    return {double(busy.tv_sec) * millisecondsOfOne + double(busy.tv_nsec) / nanosecondsOfOne,
        double(duration_cast<nanoseconds>(since).count()) / nanosecondsOfOne - delayed(), usage.ru_nvcsw};
}

void StallMeter::forget()
{
    m_last = time();
}

void StallMeter::reset()
{
    m_longest = {};
    m_recent = {};
    forget();
}

void StallMeter::note(Stall &stall, const Time &span, const QString &what)
{
    if (span.busy > stall.busy) {
        stall.busy = span.busy;
        stall.busyWith = what;
    }
    if (span.all > stall.stopped) {
        stall.stopped = span.all;
        stall.stoppedBy = what;
    }
}

void StallMeter::mark(const QString &what)
{
    if (m_isLeftOut)
        return;
    const Time end = time();
    // Who has not given up the processor has not waited: a machine that is itself one of several loses time untold.
    const double busy = end.busy - m_last.busy;
    const bool hasWaited = end.waits != m_last.waits;
    const Time span{busy, hasWaited ? end.all - m_last.all : busy, 0};
    m_last = end;
    note(m_recent, span, what);
    note(m_longest, span, what);
}

void StallMeter::eventBegins(const QObject *receiver, const QEvent *event)
{
    const int level = QThread::currentThread()->loopLevel();
    const bool isTurn = m_events.isEmpty() || m_events.top().loopLevel != level;
    m_events.push({level, isTurn});
    if (!isTurn)
        return;
    mark(QStringLiteral("before an event"));
    // The receiver may be gone when the event ends.
    m_what = QStringLiteral("%1 %2, event %3")
                 .arg(QLatin1String(receiver->metaObject()->className()), receiver->objectName())
                 .arg(int(event->type()));
}

void StallMeter::eventEnds()
{
    if (m_events.pop().isTurn)
        mark(m_what);
}

bool MeteredApplication::notify(QObject *receiver, QEvent *event)
{
    if (QThread::currentThread() != thread())
        return QApplication::notify(receiver, event);
    m_meter->eventBegins(receiver, event);
    const bool done = QApplication::notify(receiver, event);
    m_meter->eventEnds();
    return done;
}
