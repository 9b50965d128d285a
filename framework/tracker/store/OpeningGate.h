// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <chrono>
#include <condition_variable>
#include <mutex>

/// What the thread that opens stores waits at while the program has something more urgent for the machine to do. It stays closed
/// for a limited time only. Any thread.
class OpeningGate
{
public:
    static OpeningGate &instance();

    explicit OpeningGate(std::chrono::milliseconds longest = std::chrono::seconds(2))
        : m_longest(longest)
    {
    }
    Q_DISABLE_COPY_MOVE(OpeningGate)

    /// Until open(), or until the longest time has passed.
    void close();
    void open();
    /// Returns when it is open.
    void wait();

private:
    using Clock = std::chrono::steady_clock;

    const std::chrono::milliseconds m_longest;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Clock::time_point m_opensAt; ///< long ago: it is open
};
