// SPDX-License-Identifier: MIT
#pragma once

/// Where the threads of the process get their memory from.
namespace ThreadHeaps {

/// All threads share two heaps, before there are any threads. Otherwise nearly each gets one of its own, and what a film
/// took from one is of no use to the decoders of the next, which run on others: the process holds nearly twice as much
/// after an hour. Blocks above 4 MB get memory of their own, and of what is free at a heap's end 8 MB stay at most.
void share();

} // namespace ThreadHeaps
