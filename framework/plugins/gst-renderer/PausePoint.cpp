// SPDX-License-Identifier: MIT
#include "PausePoint.h"

bool PausePoint::takeReached(qint64 position)
{
    const bool reached = isWithin(position);
    if (reached)
        m_position.reset();
    return reached;
}

std::optional<qint64> PausePoint::timeFrom(qint64 position, double speed) const
{
    if (!m_position || *m_position <= position || speed <= 0)
        return std::nullopt;
    return qint64(double(*m_position - position) / speed);
}
