// SPDX-License-Identifier: MIT
#include "StallWatch.h"

void StallWatch::restart(qint64 now)
{
    m_lastMove = now;
    m_position = -1;
    m_bufferPercent = -1;
}

bool StallWatch::isStalled(qint64 now, qint64 position, int bufferPercent, int limit)
{
    if (position != m_position || bufferPercent != m_bufferPercent) {
        m_lastMove = now;
        m_position = position;
        m_bufferPercent = bufferPercent;
    }
    return now - m_lastMove >= limit;
}
