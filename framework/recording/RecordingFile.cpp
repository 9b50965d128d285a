// SPDX-License-Identifier: MIT
#include "RecordingFile.h"

#include "EventLine.h"
#include "EventRing.h"
#include "KelvoMessageHandler.h"
#include "SafeWrite.h"
#include "ThreadEnd.h"

#include <QFile>

#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

using namespace std::chrono_literals;

namespace {
// Many events for each call, few enough bytes that copying them holds up nobody.
constexpr size_t pieceSize = size_t(64) * 1024;
constexpr auto gathering = 20ms;
constexpr auto untilNextTry = 500ms;
// A disk that takes nothing for so long is taken for one that hangs when the program ends.
constexpr auto patience = 2s;

QString words(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

/// There may be space again, or the disk may work again.
bool mayPass(int error)
{
    return error == ENOSPC || error == EDQUOT || error == EFBIG || error == EIO || error == EROFS;
}

/// Signals are for threads that know what to do with them; who reads a pipe no more is told by the write itself.
void blockSignals()
{
    sigset_t all;
    ::sigfillset(&all);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP})
        ::sigdelset(&all, fault);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

/// A line that a crash has cut is left as it is, and ended.
std::string endOfCutLine(const QByteArray &path, int descriptor)
{
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0)
        return {};
    const int reading = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    char last = '\n';
    const bool isRead = reading >= 0 && ::pread(reading, &last, 1, status.st_size - 1) == 1;
    ::close(reading);
    return isRead && last != '\n' ? "\n" : "";
}
} // namespace

class RecordingFile::Writer
{
public:
    Writer(const QString &path, std::string header, std::shared_ptr<EventRing> ring,
        std::chrono::steady_clock::time_point begin)
        : m_path(path)
        , m_header(std::move(header))
        , m_ring(std::move(ring))
        , m_begin(begin)
    {
        m_ring->keepFrom(0);
    }

    /// The thread.
    void run()
    {
        blockSignals();
        if (open() && writeFirst(m_header))
            follow();
        finish();
    }

    /// In place of the thread, which the system could not give.
    void giveUp(int error)
    {
        warn(words(error));
        finish();
    }

    void wake()
    {
        if (!m_isIdle.exchange(false))
            return;
        const std::scoped_lock lock(m_mutex);
        m_changed.notify_all();
    }

    void end()
    {
        const std::scoped_lock lock(m_mutex);
        m_isEnding = true;
        m_changed.notify_all();
    }

    bool waitForEnd(std::chrono::milliseconds longest)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, longest, [this] { return m_isDone; });
    }

    bool waitUntilWritten(std::chrono::milliseconds longest)
    {
        const quint64 end = m_ring->endByte();
        const auto limit = std::chrono::steady_clock::now() + longest;
        while (m_progress.written < end) {
            if (std::chrono::steady_clock::now() >= limit)
                return false;
            wake();
            std::this_thread::sleep_for(1ms);
        }
        return true;
    }

    Progress &progress() { return m_progress; }

private:
    void warn(const QString &reason) const
    {
        qCWarning(lcKelvo).noquote() << "Nothing is recorded in" << m_path + u':' << reason;
    }

    bool open()
    {
        const QByteArray path = QFile::encodeName(m_path);
        // What was played is nobody else's business. A file that is there already keeps the mode that it was given.
        m_descriptor = ::open(path.constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY, 0600);
        if (m_descriptor < 0) {
            warn(words(errno));
            return false;
        }
        struct stat status = {};
        ::fstat(m_descriptor, &status);
        // Devices and pipes are for several by their nature.
        if (S_ISREG(status.st_mode) && ::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0
            && errno == EWOULDBLOCK) {
            warn(QStringLiteral("another process records in it"));
            return false;
        }
        m_header.insert(0, endOfCutLine(path, m_descriptor));
        return true;
    }

    void finish()
    {
        close();
        const std::scoped_lock lock(m_mutex);
        m_isDone = true;
        m_changed.notify_all();
    }

    void close()
    {
        m_progress.descriptor = -1;
        m_ring->keepNothing();
        m_progress.written = std::numeric_limits<quint64>::max();
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    bool writeFirst(std::string_view header)
    {
        while (!write(header, 0)) {
            if (!mayTryAgain())
                return false;
        }
        m_progress.descriptor = m_descriptor;
        return true;
    }

    void follow()
    {
        for (;;) {
            const EventRing::Piece piece = m_ring->linesBehind(m_place, pieceSize);
            if (piece.lines.empty() && piece.lost == 0) {
                if (!waitForMore())
                    return;
            } else if (write(lossNote(piece.lost) + piece.lines, piece.end.byte)) {
                m_place = piece.end;
                m_ring->keepFrom(m_place.byte);
            } else if (!mayTryAgain()) {
                return;
            }
        }
    }

    std::string lossNote(quint64 lost) const
    {
        if (lost == 0)
            return {};
        EventLine line(std::chrono::steady_clock::now() - m_begin, {}, "note", "lost");
        line.add(QVariant(lost));
        return std::string(line.finish());
    }

    /// Whole, or nothing of it.
    /// @param readTo  how far the ring is written with it
    bool write(std::string_view lines, quint64 readTo)
    {
        m_progress.isWriting = true;
        if (m_progress.isStopped) {
            // The process has crashed: its handler writes the rest, and ends it.
            m_progress.isWriting = false;
            for (;;)
                ::pause();
        }
        struct stat before = {};
        ::fstat(m_descriptor, &before);
        const bool isWritten = SafeWrite::all(m_descriptor, lines);
        m_error = errno;
        if (isWritten)
            m_progress.written = readTo;
        else if (S_ISREG(before.st_mode) && ::ftruncate(m_descriptor, before.st_size) != 0)
            m_error = errno;
        m_progress.isWriting = false;
        if (!isWritten && !std::exchange(m_hasWarned, true))
            warn(words(m_error));
        return isWritten;
    }

    /// After a failure: when it may pass, after a while. At the end of the process once more, at once.
    bool mayTryAgain()
    {
        if (!mayPass(m_error) || m_isLastTry)
            return false;
        std::unique_lock lock(m_mutex);
        m_isLastTry = m_changed.wait_for(lock, untilNextTry, [this] { return m_isEnding; });
        return true;
    }

    /// False when the process ends and all is written.
    bool waitForMore()
    {
        const auto hasMore = [this] {
            return m_ring->endByte() != m_place.byte;
        };
        std::unique_lock lock(m_mutex);
        m_isIdle = true;
        m_changed.wait(lock, [&] { return m_isEnding || !m_isIdle || hasMore(); });
        m_isIdle = false;
        // What comes in a burst is written in one piece.
        m_changed.wait_for(lock, gathering, [this] { return m_isEnding; });
        return !m_isEnding || hasMore();
    }

    const QString m_path;
    std::string m_header;
    const std::shared_ptr<EventRing> m_ring;
    const std::chrono::steady_clock::time_point m_begin;
    Progress m_progress;
    // Of the thread:
    int m_descriptor = -1;
    EventRing::Place m_place;
    int m_error = 0;
    bool m_hasWarned = false;
    bool m_isLastTry = false;
    // Between the threads:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::atomic<bool> m_isIdle = false;
    bool m_isEnding = false;
    bool m_isDone = false;
};

RecordingFile::RecordingFile(const QString &path, std::string header, std::shared_ptr<EventRing> ring,
    std::chrono::steady_clock::time_point begin)
    : m_writer(std::make_shared<Writer>(path, std::move(header), std::move(ring), begin))
{
    try {
        std::thread([writer = m_writer] { writer->run(); }).detach();
    } catch (const std::system_error &error) {
        m_writer->giveUp(error.code().value());
    }
}

RecordingFile::~RecordingFile()
{
    m_writer->end();
    for (;;) {
        const quint64 before = progress().written;
        if (m_writer->waitForEnd(patience))
            return;
        if (progress().written == before)
            break;
    }
    leaveRunning(QStringLiteral("kelvo-recording"));
}

void RecordingFile::wake()
{
    m_writer->wake();
}

bool RecordingFile::flush(std::chrono::milliseconds longest)
{
    return m_writer->waitUntilWritten(longest);
}

RecordingFile::Progress &RecordingFile::progress() const
{
    return m_writer->progress();
}
