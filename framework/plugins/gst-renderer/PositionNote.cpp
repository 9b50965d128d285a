// SPDX-License-Identifier: MIT
#include "PositionNote.h"

#include <algorithm>

namespace {
constexpr double millisecond = 1e6; // nanoseconds
} // namespace

void PositionNote::take(qint64 position, qint64 now)
{
    m_position = position;
    m_at = now;
}

qint64 PositionNote::reachable(qint64 reported, qint64 now, double speed) const
{
    const double since = double(now - m_at) * millisecond;
    return std::min(reported, m_position + qint64(since * speed));
}
