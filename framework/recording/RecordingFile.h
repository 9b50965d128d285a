// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>

class EventRing;

/// Writes what comes into a ring into a file, behind what is there already, on a thread of its own.
///
/// Nobody ever waits for the disk. A file that cannot be opened, or that another process writes to, gives one warning
/// and is left alone. On a full disk a warning is given once; what comes meanwhile is kept as long as the ring has
/// room, and written when there is space again, with a note of how many events were lost.
class RecordingFile
{
public:
    /// What the handler of a crash needs of it.
    struct Progress
    {
        std::atomic<int> descriptor = -1; ///< -1: nothing is written
        std::atomic<quint64> written = 0; ///< of all bytes of the ring
        std::atomic<bool> isWriting = false;
        std::atomic<bool> isStopped = false; ///< set by the handler: it writes the rest
    };

    /// Begins with the header, then all that the ring has.
    /// @param begin  the time 0 of the events
    RecordingFile(const QString &path, std::string header, std::shared_ptr<EventRing> ring,
        std::chrono::steady_clock::time_point begin);
    /// Writes what waits, as long as the disk takes some of it within two seconds.
    ~RecordingFile();
    Q_DISABLE_COPY_MOVE(RecordingFile)

    /// Something has come into the ring. Any thread.
    void wake();
    /// Waits until all of it is written, so long at most; false: it is not.
    bool flush(std::chrono::milliseconds longest);

    Progress &progress() const;

private:
    class Writer;
    /// Shared with the thread, which a disk that hangs may keep longer than this object lives.
    std::shared_ptr<Writer> m_writer;
};
