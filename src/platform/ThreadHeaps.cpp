// SPDX-License-Identifier: MIT
#include "ThreadHeaps.h"

#include <malloc.h>

namespace {
// Without these the C library takes them from what the program frees: after one block of 32 MB the heaps keep 64 MB at
// their ends, and blocks of nearly that size leave gaps in them that nobody fills.
//
// Pictures of films up to full HD stay in the heaps: with memory of its own for each of them the same film takes a
// seventh more processor time.
constexpr int ownMemoryFrom = 4 * 1024 * 1024; // bytes; larger blocks get memory of their own
constexpr int kept = 2 * ownMemoryFrom; // bytes; of free memory at the end of a heap
} // namespace

void ThreadHeaps::share()
{
    // Two, so that the GUI thread seldom waits for the others.
    ::mallopt(M_ARENA_MAX, 2);
    ::mallopt(M_MMAP_THRESHOLD, ownMemoryFrom);
    ::mallopt(M_TRIM_THRESHOLD, kept);
}
