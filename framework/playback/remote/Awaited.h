// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

/// A value that a player is told and tells: which one it has, which one it was told and has not told yet, and which one it
/// told last. Players repeat themselves; what one says again is no news.
template <typename T> class Awaited
{
public:
    /// False: it has that value, and would have nothing to tell.
    bool ask(T value)
    {
        if (!m_awaited && m_known == value)
            return false;
        m_awaited = value;
        // What it tells from now on is an answer, also when it stays with what it had.
        m_told.reset();
        return true;
    }
    /// It has that value, or takes it with what it plays next. Until then it may go on telling another one.
    void assume(T value)
    {
        m_known = value;
        m_awaited.reset();
    }
    /// It tells a value. True: that is news, or was waited for.
    bool take(T value)
    {
        const bool isAwaited = m_awaited == value;
        const bool isRepeated = m_told == value;
        m_told = value;
        if (isRepeated && !isAwaited)
            return false;
        const bool isNews = m_known != value;
        if (isAwaited)
            m_awaited.reset();
        m_known = value;
        return isAwaited || isNews;
    }
    void giveUp() { m_awaited.reset(); }

private:
    std::optional<T> m_known;
    std::optional<T> m_awaited;
    std::optional<T> m_told;
};
