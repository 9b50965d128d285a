// SPDX-License-Identifier: MIT
#include "StandardErrorLog.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {
constexpr qsizetype mostWaiting = 4 * 1024 * 1024; // bytes
// A reader that takes nothing for so long is taken for stopped when the program ends.
constexpr auto patience = 500ms;

/// Standard error, written to without waiting.
class Output
{
public:
    Output()
    {
        struct stat status = {};
        if (::fstat(STDERR_FILENO, &status) != 0)
            return;
        m_socket = S_ISSOCK(status.st_mode);
        // The same pipe or terminal opened once more: its own flags may be changed, those of standard error belong to
        // other processes as well.
        if (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode)) {
            const int own = ::open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
            if (own >= 0)
                m_descriptor = own;
        }
    }

    /// How much was taken: -1 when nobody will ever read again.
    qsizetype write(const char *data, qsizetype size) const
    {
        const ssize_t written = m_socket
            ? ::send(m_descriptor, data, size_t(size), MSG_DONTWAIT | MSG_NOSIGNAL)
            : canTake() ? ::write(m_descriptor, data, size_t(size))
                        : 0;
        if (written >= 0)
            return written;
        return errno == EAGAIN || errno == EINTR ? 0 : -1;
    }

    /// Waits until something can be taken.
    void wait() const
    {
        pollfd entry{m_descriptor, POLLOUT, 0};
        ::poll(&entry, 1, -1);
    }

private:
    /// What could not be opened once more (another user's pipe) is asked before.
    bool canTake() const
    {
        if (m_descriptor != STDERR_FILENO)
            return true;
        pollfd entry{m_descriptor, POLLOUT, 0};
        return ::poll(&entry, 1, 0) > 0;
    }

    int m_descriptor = STDERR_FILENO;
    bool m_socket = false;
};

class Log
{
public:
    void add(QByteArray line)
    {
        const std::lock_guard lock(m_mutex);
        if (m_gone)
            return;
        if (m_waiting.empty()) {
            const qsizetype written = write(line);
            if (m_gone || written == line.size())
                return;
            line.remove(0, written);
        }
        enqueue(std::move(line));
    }

    void flush()
    {
        std::unique_lock lock(m_mutex);
        while (!m_waiting.empty()) {
            const qsizetype before = m_size;
            if (!m_changed.wait_for(lock, patience, [&] { return m_size != before; }))
                return;
        }
    }

private:
    qsizetype write(const QByteArray &text)
    {
        const qsizetype written = m_output.write(text.constData(), text.size());
        m_gone = written < 0;
        return written;
    }

    void enqueue(QByteArray line)
    {
        if (m_size + line.size() > mostWaiting) {
            ++m_leftOut;
            return;
        }
        noteLeftOut();
        push(std::move(line));
        if (!m_threadRuns)
            startThread();
        m_changed.notify_all();
    }

    void push(QByteArray line)
    {
        m_size += line.size();
        m_waiting.push_back(std::move(line));
    }

    /// Where the system has none to give, the lines wait for the next one, with which it is tried again.
    void startThread()
    {
        try {
            std::thread([this] { work(); }).detach();
            m_threadRuns = true;
        } catch (const std::system_error &) {
            m_threadRuns = false;
        }
    }

    void noteLeftOut()
    {
        if (m_leftOut > 0)
            push(QByteArray::number(std::exchange(m_leftOut, 0)) + " log lines left out: nobody read them\n");
    }

    /// A thread of its own, from the first line that has to wait on.
    [[noreturn]] void work()
    {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [this] { return !m_waiting.empty(); });
            lock.unlock();
            m_output.wait();
            lock.lock();
            writeWaiting();
            m_changed.notify_all();
        }
    }

    void writeWaiting()
    {
        while (!m_waiting.empty()) {
            QByteArray &first = m_waiting.front();
            const qsizetype written = write(first);
            if (m_gone) {
                m_waiting.clear();
                m_size = 0;
                return;
            }
            m_size -= written;
            if (written < first.size()) {
                first.remove(0, written);
                return;
            }
            m_waiting.pop_front();
        }
        noteLeftOut();
    }

    const Output m_output;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<QByteArray> m_waiting;
    qsizetype m_size = 0;
    qint64 m_leftOut = 0;
    bool m_gone = false;
    bool m_threadRuns = false;
};

/// Never destroyed: destructors of others log until the very end.
Log &theLog()
{
    static Log &log = *new Log;
    return log;
}

void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const QString formatted = qFormatLogMessage(type, context, message);
    if (formatted.isNull())
        return;
    theLog().add(formatted.toLocal8Bit() + '\n');
    if (type == QtFatalMsg)
        theLog().flush();
}
} // namespace

void StandardErrorLog::install()
{
    // Told by the write itself that the reader is gone.
    std::signal(SIGPIPE, SIG_IGN);
    theLog();
    qInstallMessageHandler(handle);
    std::atexit(flush);
}

void StandardErrorLog::flush()
{
    theLog().flush();
}
