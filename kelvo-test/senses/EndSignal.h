// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <csignal>

/// SIGTERM, by which kelvo-test ends what it has started to measure.
class EndSignal
{
public:
    /// Becomes true when it comes; it ends nothing by itself from now on.
    static const std::atomic<bool> &watch()
    {
        static_assert(std::atomic<bool>::is_always_lock_free); // all that a signal handler may touch
        std::signal(SIGTERM, [](int) { s_hasCome = true; });
        return s_hasCome;
    }

private:
    static inline std::atomic<bool> s_hasCome = false;
};
