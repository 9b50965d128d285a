// SPDX-License-Identifier: MIT
#include "PageTurns.h"

void PageTurns::take(QObject *asker, std::function<void()> begin)
{
    if (m_taken == AtOnce) {
        m_waiting.push_back({asker, std::move(begin)});
        return;
    }
    ++m_taken;
    begin();
}

void PageTurns::giveBack()
{
    --m_taken;
    while (!m_waiting.empty()) {
        const Waiting next = std::move(m_waiting.front());
        m_waiting.pop_front();
        if (!next.asker)
            continue;
        ++m_taken;
        next.begin();
        return;
    }
}
