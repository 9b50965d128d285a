// SPDX-License-Identifier: MIT
#pragma once

#include "StoreError.h"

#include <QByteArray>

#include <memory>

/// The folder that the store's files lie in: its place, its owner, its state. Any thread.
namespace StoreFolder {

/// $XDG_DATA_HOME/kelvo/tracker.
QString defaultPath();

/// The lock file beside the store. The kernel gives it free when the owner ends, however it ends.
class Lock
{
public:
    ~Lock();
    Q_DISABLE_COPY_MOVE(Lock)
    /// Null when another owner holds it; *error is set when the file cannot be made at all.
    static std::unique_ptr<Lock> acquire(const QString &folder, StoreError *error);

private:
    explicit Lock(int fd)
        : m_fd(fd)
    {
    }
    int m_fd;
};

/// Makes the folder where it is missing and says why it cannot hold a store (no right to write, disk full).
StoreError prepare(const QString &folder);

/// What the first pages of the database files (one for each graph) say: damaged, of another version, or nothing
/// wrong. Also nothing wrong when there is no file yet.
StoreError inspect(const QString &folder);

/// Why the store's files cannot be read or written just now: the disk fails, or there is no memory. What is found in them then says nothing about them. Reads
/// them through, which takes its time, and writes a file of its own.
StoreError probe(const QString &folder);

bool hasStore(const QString &folder);

/// Notes that a store is being made, and later that it is complete. False where that cannot be written.
bool setUnfinished(const QString &folder, bool unfinished);
/// Takes away what is there of a store whose maker ended before it was complete: nothing that anyone wrote is in it.
/// The caller owns the folder.
void removeUnfinished(const QString &folder);

/// False when nothing can be said of what is in the folder.
bool canBeListed(const QString &folder);

/// Names the database files on disk as they are now; empty when there is none. Differs once one was replaced.
QByteArray identity(const QString &folder);

/// Moves the store's files to a new folder beside it and returns that folder; empty when that failed.
QString moveAside(const QString &folder);

} // namespace StoreFolder
