// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

class EventRing;

/// The last 5,000 lines of the log, of at most 1 MiB, kept in memory beside where they go anyway.
namespace LogTail {
/// Keeps Qt's messages from now on, as Qt formats them, behind the seconds since `begin`. Only the first call counts.
void install(std::chrono::steady_clock::time_point begin);

/// What is kept. Lives until the process ends.
const EventRing &lines();
} // namespace LogTail
