// SPDX-License-Identifier: MIT
#include "OpeningGate.h"

OpeningGate &OpeningGate::instance()
{
    static OpeningGate gate;
    return gate;
}

void OpeningGate::close()
{
    const std::lock_guard lock(m_mutex);
    m_opensAt = Clock::now() + m_longest;
}

void OpeningGate::open()
{
    {
        const std::lock_guard lock(m_mutex);
        m_opensAt = {};
    }
    m_changed.notify_all();
}

void OpeningGate::wait()
{
    std::unique_lock lock(m_mutex);
    while (Clock::now() < m_opensAt) {
        const Clock::time_point until = m_opensAt;
        m_changed.wait_until(lock, until);
    }
}
