// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>

/// Another process that shares playlists (sharing-peer.cpp). Ends with this object.
class PeerProcess
{
public:
    PeerProcess();
    ~PeerProcess();
    Q_DISABLE_COPY_MOVE(PeerProcess)

    /// Runs one command line; the event loop goes on meanwhile. The answer, or an empty text after 30 seconds.
    QString tell(const QString &command);
    /// Sends a command without waiting for its answer.
    void send(const QString &command);
    /// Its playlists are shown with this behind their names.
    QString suffix() const { return QStringLiteral(" [pid %1]").arg(m_process.processId()); }
    qint64 pid() const { return m_process.processId(); }

    /// As a crash: SIGKILL.
    void crash();
    /// SIGSTOP and SIGCONT: it neither answers nor vanishes.
    void freeze();
    void thaw();
    void quit();

private:
    void finish();

    QProcess m_process;
};
