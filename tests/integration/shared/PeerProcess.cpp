// SPDX-License-Identifier: MIT
#include "PeerProcess.h"

#include <QTest>

#include <csignal>

namespace {
constexpr int patience = 30'000;
}

PeerProcess::PeerProcess()
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(SHARING_PEER, QStringList());
    if (!m_process.waitForStarted())
        qFatal("sharing-peer does not start");
}

PeerProcess::~PeerProcess()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished();
}

QString PeerProcess::tell(const QString &command)
{
    send(command);
    if (!QTest::qWaitFor([this] { return m_process.canReadLine(); }, patience))
        return {};
    return QString::fromUtf8(m_process.readLine()).chopped(1);
}

void PeerProcess::send(const QString &command)
{
    m_process.write(command.toUtf8() + '\n');
}

void PeerProcess::crash()
{
    m_process.kill();
    finish();
}

void PeerProcess::freeze()
{
    ::kill(pid_t(m_process.processId()), SIGSTOP);
}

void PeerProcess::thaw()
{
    ::kill(pid_t(m_process.processId()), SIGCONT);
}

void PeerProcess::quit()
{
    tell("quit");
    finish();
    if (m_process.exitStatus() != QProcess::NormalExit || m_process.exitCode() != 0)
        QTest::qFail("sharing-peer did not end well", __FILE__, __LINE__);
}

void PeerProcess::finish()
{
    if (!QTest::qWaitFor([this] { return m_process.state() == QProcess::NotRunning; }, patience))
        QTest::qFail("sharing-peer does not end", __FILE__, __LINE__);
}
