// SPDX-License-Identifier: MIT
#include "SimulatedPosition.h"

#include <algorithm>
#include <cmath>

double SimulatedPosition::at(qint64 now) const
{
    return m_running ? m_base + double(now - m_since) * m_speed : m_base;
}

void SimulatedPosition::setSpeed(double speed, qint64 now)
{
    set(at(now), now, m_running);
    m_speed = speed;
}

std::optional<qint64> SimulatedPosition::timeUntil(double position, qint64 now) const
{
    if (!m_running)
        return std::nullopt;
    const double wait = std::ceil((position - at(now)) / m_speed);
    // What is months away needs no timer.
    return wait < 1e10 ? std::optional<qint64>(qint64(std::max(wait, 0.0))) : std::nullopt;
}

void SimulatedPosition::set(double position, qint64 now, bool running)
{
    m_base = position;
    m_since = now;
    m_running = running;
}
