// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

/// A value that a player is told and tells: which one it has, and which one it was told and has not told yet.
template <typename T> class Awaited
{
public:
    /// False: it has that value, and would have nothing to tell.
    bool ask(T value)
    {
        if (!m_awaited && m_known == value)
            return false;
        m_awaited = value;
        return true;
    }
    /// It has that value, or takes it with what it plays next.
    void assume(T value)
    {
        m_known = value;
        m_awaited.reset();
    }
    /// It tells a value. True: that is news, or was waited for.
    bool take(T value)
    {
        const bool counts = m_awaited == value || m_known != value;
        if (m_awaited == value)
            m_awaited.reset();
        m_known = value;
        return counts;
    }
    void giveUp() { m_awaited.reset(); }

private:
    std::optional<T> m_known;
    std::optional<T> m_awaited;
};
