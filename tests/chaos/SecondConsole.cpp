// SPDX-License-Identifier: MIT
#include "SecondConsole.h"

#include "Follower.h"

#include <QCoreApplication>

#include <csignal>

namespace {
/// Milliseconds that the other one may take for an answer, and for what both know to be the same.
constexpr double longestAnswer = 60'000;
constexpr double longestDifference = 5000;
} // namespace

SecondConsole::SecondConsole(const Stage &stage, quint64 seed)
    : m_stage(stage)
    , m_seed(seed)
{
}

SecondConsole::~SecondConsole()
{
    kill();
}

QList<Deed> SecondConsole::deeds()
{
    return {
        {8, Deed::Elsewhere,
            [this](Dice &dice) {
                step(dice.between(1, 4));
            }},
        {1, Deed::Elsewhere,
            [this](Dice &) {
                if (m_process && !m_isFrozen)
                    freeze();
                else
                    thaw();
            }},
        {1, Deed::Elsewhere,
            [this](Dice &dice) {
                if (dice.chance(40))
                    kill();
                else
                    compare();
            }},
    };
}

void SecondConsole::start()
{
    m_stage.say(QStringLiteral("the second console starts"));
    m_process = std::make_unique<QProcess>();
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_stage.meter.leaveOut([this] {
        m_process->start(QCoreApplication::applicationFilePath(),
            {"--follow", "--seed", QString::number(m_seed + quint64(++m_started) * 1'000'000)});
    });
    m_steps = 0;
    ask("wait");
}

/// The last line of the answer; the lines before it are what it did.
QByteArray SecondConsole::ask(const QByteArray &line)
{
    m_process->write(line + '\n');
    QByteArray answer;
    waitFor([&] {
        while (m_process->canReadLine() && answer.isEmpty()) {
            const QByteArray read = m_process->readLine().chopped(1);
            if (read.startsWith(Follower::answerMark))
                answer = read.mid(qstrlen(Follower::answerMark));
            else
                m_stage.say(QString::fromUtf8(read));
        }
        return !answer.isEmpty() || m_process->state() == QProcess::NotRunning;
    });
    if (answer.isEmpty() || answer == "failed")
        m_stage.journal.fail(QStringLiteral("the second console %1")
                                 .arg(m_process->state() == QProcess::NotRunning ? "has ended"
                                         : answer.isEmpty()                      ? "does not answer"
                                                                                 : "is wrong"));
    return answer;
}

bool SecondConsole::waitFor(const std::function<bool()> &condition) const
{
    const double end = m_stage.meter.now() + longestAnswer;
    while (!condition()) {
        if (m_stage.meter.now() > end)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        m_stage.meter.leaveOut([this] { m_process->waitForReadyRead(5); });
    }
    return true;
}

void SecondConsole::step(int count)
{
    if (!m_process)
        start();
    thaw();
    for (int i = 0; i < count && !m_stage.journal.hasFailed(); ++i)
        ask("step " + QByteArray::number(++m_steps));
}

void SecondConsole::freeze()
{
    m_stage.say(QStringLiteral("the second console stands still"));
    ::kill(pid_t(m_process->processId()), SIGSTOP);
    m_isFrozen = true;
}

void SecondConsole::thaw()
{
    if (!std::exchange(m_isFrozen, false))
        return;
    m_stage.say(QStringLiteral("the second console goes on"));
    ::kill(pid_t(m_process->processId()), SIGCONT);
    if (!m_stage.journal.hasFailed())
        ask("go on");
}

void SecondConsole::kill()
{
    if (!m_process)
        return;
    m_stage.say(QStringLiteral("the second console is killed"));
    m_stage.meter.leaveOut([this] {
        m_process->kill();
        m_process->waitForFinished(-1);
        m_process.reset();
    });
    m_isFrozen = false;
}

void SecondConsole::compare()
{
    if (!m_process)
        return m_stage.say(QStringLiteral("no second console"));
    thaw();
    m_stage.say(QStringLiteral("both consoles compare their playlists"));
    const double end = m_stage.meter.now() + longestDifference;
    QByteArray there = ask("playlists");
    while (there != Follower::knownPlaylists() && m_stage.meter.now() < end && !m_stage.journal.hasFailed())
        there = ask("playlists");
    if (there != Follower::knownPlaylists())
        m_stage.journal.fail(
            QStringLiteral("the playlists here are %1, in the second console %2")
                .arg(QString::fromUtf8(Follower::knownPlaylists()), QString::fromUtf8(there)));
}

void SecondConsole::end()
{
    if (!m_process)
        return;
    thaw();
    if (!m_stage.journal.hasFailed())
        ask("end");
    m_process->closeWriteChannel();
    const bool hasEnded = m_stage.journal.hasFailed()
        || waitFor([this] { return m_process->state() == QProcess::NotRunning; });
    const QList<QByteArray> last = m_process->readAll().split('\n');
    for (const QByteArray &line : last) {
        if (!line.isEmpty())
            m_stage.say(QString::fromUtf8(line));
    }
    if (!m_stage.journal.hasFailed() && !hasEnded)
        m_stage.journal.fail(QStringLiteral("the second console does not end"));
    else if (!m_stage.journal.hasFailed() && m_process->exitCode() != 0)
        m_stage.journal.fail(QStringLiteral("the second console ends with %1").arg(m_process->exitCode()));
    kill();
}
