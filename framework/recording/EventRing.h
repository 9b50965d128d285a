// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <atomic>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

/// The last lines of something that never ends, in memory that is bounded and does not move.
///
/// Lines are kept as bytes, so that they can be written by whoever handles the crash of the process. Any thread.
class EventRing
{
public:
    struct Limits
    {
        quint64 lines = 0;
        quint64 bytes = 0;
    };
    /// Where somebody has read up to.
    struct Place
    {
        quint64 byte = 0; ///< of all that were ever appended
        quint64 line = 0;
    };
    /// What is behind a place.
    struct Piece
    {
        std::string lines; ///< whole ones
        quint64 lost = 0; ///< how many lines before these were dropped unread
        Place end;
    };

    explicit EventRing(Limits limits);
    ~EventRing();
    Q_DISABLE_COPY_MOVE(EventRing)

    /// Takes a line with its end; the oldest ones go for it. One that is longer than the ring is dropped itself.
    void append(std::string_view line);

    /// All that is kept, oldest first.
    std::string lines() const;
    /// The lines behind a place, up to about so many bytes of them.
    Piece linesBehind(Place place, size_t most) const;
    quint64 endByte() const { return m_end.load(std::memory_order_acquire); }

    /// Lines behind this byte are kept beyond the number of lines, as far as the bytes allow: somebody has yet to read
    /// them. At first nobody has.
    void keepFrom(quint64 byte) { m_keepFrom = byte; }
    void keepNothing() { m_keepFrom = std::numeric_limits<quint64>::max(); }

    /// Writes what is behind the byte. For a process that has crashed: takes no lock and no memory.
    void writeAfterCrash(int descriptor, quint64 fromByte) const noexcept;

private:
    void dropOldest();
    void copyIn(std::string_view line);
    void copyOut(std::string &target, quint64 begin, quint64 end) const;
    quint64 lineEnd(quint64 begin) const;

    const Limits m_limits;
    char *const m_bytes;
    mutable std::mutex m_mutex;
    /// Of all bytes that were ever appended, those that are kept.
    std::atomic<quint64> m_begin = 0;
    std::atomic<quint64> m_end = 0;
    quint64 m_firstLine = 0; ///< the number of the oldest one that is kept
    quint64 m_lastLine = 0; ///< of the next one to come
    std::atomic<quint64> m_keepFrom = std::numeric_limits<quint64>::max();
};
