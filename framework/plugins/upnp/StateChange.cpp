// SPDX-License-Identifier: MIT
#include "StateChange.h"

#include <algorithm>

namespace {
// Milliseconds; doubled each time.
constexpr int firstCheck = 20;
constexpr int longestCheck = 500;
} // namespace

StateChange::StateChange(int retry, int longest)
    : m_retry(retry)
    , m_longest(longest)
{
    m_check.setSingleShot(true);
    connect(&m_check, &QTimer::timeout, this, &StateChange::checkDue);
}

void StateChange::expect(State state)
{
    if (m_expected != state) {
        m_since.start();
        m_delay = firstCheck;
        m_tries = 1;
    }
    m_expected = state;
}

void StateChange::end()
{
    m_expected.reset();
    m_check.stop();
}

bool StateChange::takeRetry()
{
    const bool isDue = isRetryDue(m_tries);
    m_tries += isDue ? 1 : 0;
    return isDue;
}

void StateChange::checkLater()
{
    if (m_check.isActive())
        return;
    m_delay = std::min(2 * m_delay, longestCheck);
    m_check.start(m_delay);
}
