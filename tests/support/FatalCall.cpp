// SPDX-License-Identifier: MIT
#include "FatalCall.h"

#include <QRegularExpression>
#include <QtGlobal>

#include <array>
#include <csignal>
#include <cstdlib>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
int messages = -1; ///< where the copy writes to

void tellFatalMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    if (type == QtFatalMsg && write(messages, bytes.constData(), size_t(bytes.size())) != bytes.size())
        _exit(1);
}

[[noreturn]] void runInCopy(const std::function<void()> &call, int pipe)
{
    messages = pipe;
    qInstallMessageHandler(tellFatalMessage);
    // Neither a report of the test library nor a core file.
    std::signal(SIGABRT, SIG_DFL);
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    call();
    _exit(0);
}

QByteArray readAll(int pipe)
{
    QByteArray all;
    std::array<char, 1024> part{};
    for (ssize_t count = 0; (count = read(pipe, part.data(), part.size())) > 0;)
        all.append(part.data(), qsizetype(count));
    return all;
}
} // namespace

QString fatalMessage(const std::function<void()> &call)
{
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0)
        return {};
    const pid_t copy = fork();
    if (copy == 0)
        runInCopy(call, ends[1]);
    close(ends[1]);
    const QByteArray text = readAll(ends[0]);
    close(ends[0]);
    int status = 0;
    const bool ended = copy > 0 && waitpid(copy, &status, 0) == copy;
    return ended && WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT ? QString::fromUtf8(text) : QString();
}

bool isAssertion(const QString &message, const QString &condition, const QString &file)
{
    const QString expected
        = QStringLiteral("^ASSERT: \"%1\" in file %2\\w*\\.cpp, line \\d+$")
              .arg(QRegularExpression::escape(condition), QRegularExpression::escape(file));
    return QRegularExpression(expected).match(message).hasMatch();
}
