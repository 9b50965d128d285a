// SPDX-License-Identifier: MIT
#pragma once

#include "ByteRange.h"
#include "GupnpHandles.h"

#include <list>
#include <memory>

class OpenFile;

/// Sends a part of a file piece by piece, as its reader takes it: neither memory nor what becomes of the file meanwhile
/// can stop more than this. It belongs to its message. UPnP thread.
class FileTransfer
{
public:
    /// The transfers of one file, in the order of their beginnings.
    using Group = std::list<FileTransfer *>;

    /// Follows the message until that is over. The answer's headers are set by others.
    static void begin(SoupServerMessage *message, std::shared_ptr<const OpenFile> file, const ByteRange &part,
        std::shared_ptr<Group> group);
    ~FileTransfer();
    Q_DISABLE_COPY_MOVE(FileTransfer)

    /// When something of it was last taken. Milliseconds of monotonicTime().
    qint64 movedAt() const { return m_movedAt; }
    /// Ends the connection.
    void end();
    /// Ends the connection when nothing is taken for that long, in milliseconds.
    void endWhenIdle(int patience);

private:
    FileTransfer(SoupServerMessage *message, std::shared_ptr<const OpenFile> file, const ByteRange &part,
        std::shared_ptr<Group> group);
    static void wrote(SoupServerMessage *message, void *self);
    static int ticked(void *self);
    void sendNext();

    SoupServerMessage *const m_message; // owns this
    const GlibHandles::Object<GSocket> m_socket;
    const std::shared_ptr<const OpenFile> m_file;
    const std::shared_ptr<Group> m_group;
    qint64 m_at;
    qint64 m_left;
    qint64 m_movedAt;
    int m_patience = 0;
    GlibHandles::Source m_ticks; // once its reader's time is limited
};
