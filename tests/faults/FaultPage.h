// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

/// What the test and the program under test share. faults.py has the same layout.
struct FaultPage
{
    enum Operation : uint32_t {
        Read = 1, ///< from a file that is open
        Write = 2, ///< to a file that is open, its size included
        Sync = 4,
        Open = 8, ///< for whatever
        OpenToWrite = 16,
        Create = 32, ///< files, folders and links
        Rename = 64,
        Remove = 128,
        Descriptor = 256, ///< whatever needs a new one, wherever
        Thread = 512, ///< of the C++ library
    };

    std::atomic<uint32_t> process; ///< the one that is meant: the first to come
    std::atomic<int32_t> error; ///< 0: nothing fails
    std::atomic<uint32_t> operations; ///< which fail, on paths that begin with that below
    std::atomic<uint32_t> failures; ///< so far
    std::atomic<int64_t> clockOffset; ///< of the clock of the day, in seconds
    std::atomic<uint64_t> turns; ///< of the GUI thread's event loop
    std::atomic<uint64_t>
        longestTurn; ///< in nanoseconds, without the time for which other programs had the processor
    std::atomic<uint64_t>
        busySince; ///< when the turn under way has begun (CLOCK_MONOTONIC); 0: the loop waits
    std::atomic<uint64_t> ranInLongest; ///< in nanoseconds: for how long that turn had the processor itself
    char path[960];
};
static_assert(offsetof(FaultPage, path) == 56 && std::atomic<uint64_t>::is_always_lock_free);
