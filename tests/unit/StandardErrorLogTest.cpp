// SPDX-License-Identifier: MIT
#include "platform/StandardErrorLog.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QTest>

#include <functional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
/// A process whose standard error comes out at the other end of a pipe or socket, and which runs a function of the test.
class LoggingProcess
{
public:
    enum Channel { Pipe, Socket };

    LoggingProcess(Channel channel, const std::function<void()> &work)
    {
        int ends[2];
        const int made = channel == Pipe ? ::pipe(ends) : ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends);
        if (made != 0 || (m_id = fork()) < 0)
            qFatal("no process");
        if (m_id == 0) {
            ::dup2(ends[1], STDERR_FILENO);
            ::close(ends[0]);
            ::close(ends[1]);
            StandardErrorLog::install();
            work();
            StandardErrorLog::flush();
            ::_exit(0);
        }
        ::close(ends[1]);
        m_output = ends[0];
    }
    ~LoggingProcess()
    {
        ::close(m_output);
        end();
    }
    Q_DISABLE_COPY_MOVE(LoggingProcess)

    QList<QByteArray> readAll() const
    {
        QByteArray all;
        char buffer[65536];
        for (ssize_t size = 0; (size = ::read(m_output, buffer, sizeof buffer)) > 0;)
            all.append(buffer, size);
        QList<QByteArray> lines = all.split('\n');
        lines.removeLast();
        return lines;
    }
    /// Its exit code, once it has ended; -1 when it was ended by a signal.
    int end()
    {
        int status = 0;
        if (m_id > 0)
            ::waitpid(std::exchange(m_id, 0), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    static pid_t fork()
    {
#ifdef KELVO_WATCH_THREADS
        // Qt Test has a thread, too. In a child that it knows to be made beside threads the sanitizer lets none begin.
        return ::_Fork();
#else
        return ::fork();
#endif
    }

    pid_t m_id = 0;
    int m_output = -1;
};

/// Two processes agree on a moment.
class Mark
{
public:
    Mark()
    {
        if (::pipe(m_ends) != 0)
            qFatal("no pipe");
    }
    ~Mark()
    {
        ::close(m_ends[0]);
        ::close(m_ends[1]);
    }
    Q_DISABLE_COPY_MOVE(Mark)

    void reach() const
    {
        if (::write(m_ends[1], "x", 1) != 1)
            qFatal("no mark");
    }
    bool wait() const
    {
        char byte = 0;
        pollfd entry{m_ends[0], POLLIN, 0};
        return ::poll(&entry, 1, 30'000) == 1 && ::read(m_ends[0], &byte, 1) == 1;
    }

private:
    int m_ends[2];
};

constexpr int many = 100'000; // lines of a hundred bytes: more than may wait

void logMany()
{
    const QByteArray padding(92, '.');
    for (int i = 0; i < many; ++i)
        qDebug("%06d %s", i, padding.constData());
}
} // namespace

/// What becomes of the log where nobody reads, reads late or reads as usual.
class StandardErrorLogTest : public KelvoTestCase
{
    Q_OBJECT

    static void channels()
    {
        QTest::addColumn<int>("channel");
        QTest::newRow("pipe") << int(LoggingProcess::Pipe);
        QTest::newRow("socket") << int(LoggingProcess::Socket);
    }

private Q_SLOTS:
    void aReaderGetsEveryLineAtOnce_data() { channels(); }
    void aReaderGetsEveryLineAtOnce()
    {
        QFETCH(int, channel);
        // Each line is out before the next is logged, as a crash would show.
        LoggingProcess process(LoggingProcess::Channel(channel), [] {
            qDebug() << "one";
            qWarning() << "two" << QStringLiteral("\u00e4");
            ::_exit(3);
        });
        QCOMPARE(process.readAll(), QList<QByteArray>({"one", "two \"\xc3\xa4\""}));
        QCOMPARE(process.end(), 3);
    }

    void whatNobodyReadsIsBoundedAndCounted_data() { channels(); }
    void whatNobodyReadsIsBoundedAndCounted()
    {
        QFETCH(int, channel);
        const Mark logged;
        const Mark drained;
        LoggingProcess process(LoggingProcess::Channel(channel), [&] {
            logMany();
            logged.reach();
            if (!drained.wait())
                ::_exit(1);
            StandardErrorLog::flush(); // there is room again
            qDebug() << "later";
        });
        QVERIFY(logged.wait()); // nothing was read until then
        drained.reach();
        const QList<QByteArray> lines = process.readAll();
        QCOMPARE(process.end(), 0);

        int next = 0;
        while (lines.value(next).startsWith(QByteArray::number(next).rightJustified(6, '0') + ' '))
            ++next;
        QVERIFY2(next > many / 10 && next < many * 7 / 10, QByteArray::number(next));
        QCOMPARE(lines.mid(next),
            QList<QByteArray>(
                {QByteArray::number(many - next) + " log lines left out: nobody read them", "later"}));
    }

    void aReaderWhoStaysAwayDoesNotHoldUpTheEnd()
    {
        const Mark ended;
        LoggingProcess process(LoggingProcess::Pipe, [&] {
            logMany();
            QElapsedTimer timer;
            timer.start();
            StandardErrorLog::flush();
            if (timer.elapsed() > 5000)
                ::_exit(1);
            ended.reach();
            ::_exit(0);
        });
        QVERIFY(ended.wait());
        QCOMPARE(process.end(), 0);
    }
};

KELVO_TEST(StandardErrorLogTest)
#include "StandardErrorLogTest.moc"
