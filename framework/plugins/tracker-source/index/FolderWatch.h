// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QSet>

/// Tells which folders changed (inotify). One worker thread; only wake() may be called from others.
class FolderWatch
{
public:
    FolderWatch();
    ~FolderWatch();
    Q_DISABLE_COPY_MOVE(FolderWatch)

    void add(const QByteArray &folder);
    /// False once the system had no room for a watch: then only looking again finds all changes.
    bool isComplete() const { return m_complete; }

    struct Changes
    {
        QSet<QByteArray> folders;
        bool overflow = false; ///< some were lost: everything may have changed
    };
    /// Waits for changes, at most so long (-1: without limit); empty ones after wake().
    Changes wait(int milliseconds);
    /// Ends a wait(); any thread.
    void wake();

private:
    void read(Changes *changes);

    int m_inotify;
    int m_wakeUp;
    bool m_complete = true;
    QHash<int, QByteArray> m_folders;
};
