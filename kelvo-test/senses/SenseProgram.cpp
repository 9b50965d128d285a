// SPDX-License-Identifier: MIT
#include "SenseProgram.h"

#include <QCoreApplication>
#include <QDir>

#include <chrono>
#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>
#include <utility>

namespace {
constexpr int patience = 2000; // milliseconds, for its end

/// In the child, before it becomes the program: Ctrl-C is for this process, which then ends it; and without this process it
/// has nothing to do.
void detachFromTerminal()
{
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
}
} // namespace

SenseProgram::SenseProgram(const QString &name, QByteArray word, QObject *parent)
    : QObject(parent)
    , m_program(QDir::cleanPath(
          QCoreApplication::applicationDirPath() + QStringLiteral("/" KELVO_PROGRAMS "/") + name))
    , m_word(std::move(word))
{
    m_process.setChildProcessModifier(detachFromTerminal);
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &SenseProgram::read);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            fail(QStringLiteral("%1: %2").arg(m_program, m_process.errorString()));
    });
    connect(&m_process, &QProcess::finished, this, [this] {
        read();
        const QString words = QString::fromUtf8(m_process.readAllStandardError()).trimmed();
        fail(words.isEmpty() ? QStringLiteral("what measures has ended") : words.section(u'\n', -1));
    });
}

SenseProgram::~SenseProgram()
{
    disconnect(&m_process, nullptr, this, nullptr);
    m_process.terminate();
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(patience))
        m_process.kill();
}

void SenseProgram::start(const QStringList &arguments)
{
    m_process.start(m_program, arguments);
}

double SenseProgram::now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void SenseProgram::read()
{
    while (m_process.canReadLine()) {
        const QByteArray line = m_process.readLine();
        if (m_ready || !line.startsWith(m_word)) {
            Q_EMIT measured(line);
        } else {
            m_ready = true;
            Q_EMIT ready(line.mid(m_word.size()).trimmed());
        }
    }
}

void SenseProgram::fail(const QString &problem)
{
    if (!m_problem.isEmpty())
        return;
    m_problem = problem;
    m_ready = false;
    Q_EMIT failed(problem);
}
