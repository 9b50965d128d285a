// SPDX-License-Identifier: MIT
#include "EventRing.h"

#include "SafeWrite.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <sys/mman.h>

namespace {
/// Pages that are not yet used cost nothing.
char *reserve(size_t bytes)
{
    void *memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    return static_cast<char *>(memory);
}
} // namespace

EventRing::EventRing(Limits limits)
    : m_limits(limits)
    , m_bytes(reserve(limits.bytes))
{
}

EventRing::~EventRing()
{
    ::munmap(m_bytes, m_limits.bytes);
}

void EventRing::append(std::string_view line)
{
    const std::scoped_lock lock(m_mutex);
    if (line.size() > m_limits.bytes) {
        // Counted, so that whoever reads sees that something is missing.
        while (m_begin != m_end)
            dropOldest();
        m_firstLine = ++m_lastLine;
        return;
    }
    while (m_end - m_begin + line.size() > m_limits.bytes)
        dropOldest();
    while (m_lastLine - m_firstLine >= m_limits.lines && lineEnd(m_begin) <= m_keepFrom)
        dropOldest();
    copyIn(line);
    ++m_lastLine;
    m_end.store(m_end + line.size(), std::memory_order_release);
}

void EventRing::dropOldest()
{
    m_begin.store(lineEnd(m_begin), std::memory_order_release);
    ++m_firstLine;
}

void EventRing::copyIn(std::string_view line)
{
    const quint64 place = m_end % m_limits.bytes;
    const quint64 untilEdge = std::min<quint64>(line.size(), m_limits.bytes - place);
    std::memcpy(m_bytes + place, line.data(), untilEdge);
    std::memcpy(m_bytes, line.data() + untilEdge, line.size() - untilEdge);
}

void EventRing::copyOut(std::string &target, quint64 begin, quint64 end) const
{
    const quint64 place = begin % m_limits.bytes;
    const quint64 untilEdge = std::min(end - begin, m_limits.bytes - place);
    target.append(m_bytes + place, untilEdge);
    target.append(m_bytes, end - begin - untilEdge);
}

/// Behind the line that begins there.
quint64 EventRing::lineEnd(quint64 begin) const
{
    while (begin < m_end) {
        const quint64 place = begin % m_limits.bytes;
        const quint64 untilEdge = std::min(m_end - begin, m_limits.bytes - place);
        if (const void *found = std::memchr(m_bytes + place, '\n', untilEdge))
            return begin + quint64(static_cast<const char *>(found) - (m_bytes + place)) + 1;
        begin += untilEdge;
    }
    return begin;
}

std::string EventRing::lines() const
{
    const std::scoped_lock lock(m_mutex);
    std::string lines;
    lines.reserve(m_end - m_begin);
    copyOut(lines, m_begin, m_end);
    return lines;
}

EventRing::Piece EventRing::linesBehind(Place place, size_t most) const
{
    const std::scoped_lock lock(m_mutex);
    Piece piece;
    if (place.line < m_firstLine) {
        piece.lost = m_firstLine - place.line;
        place = {m_begin, m_firstLine};
    }
    quint64 end = std::min<quint64>(m_end, place.byte + most);
    if (end > place.byte && end < m_end)
        end = lineEnd(end - 1);
    copyOut(piece.lines, place.byte, end);
    const auto count = std::count(piece.lines.begin(), piece.lines.end(), '\n');
    piece.end = {end, place.line + quint64(count)};
    return piece;
}

void EventRing::writeAfterCrash(int descriptor, quint64 fromByte) const noexcept
{
    const quint64 end = m_end.load(std::memory_order_acquire);
    const quint64 begin = std::max(fromByte, m_begin.load(std::memory_order_acquire));
    if (begin >= end)
        return;
    const quint64 place = begin % m_limits.bytes;
    const quint64 untilEdge = std::min(end - begin, m_limits.bytes - place);
    SafeWrite::all(descriptor, {m_bytes + place, untilEdge});
    SafeWrite::all(descriptor, {m_bytes, end - begin - untilEdge});
}
