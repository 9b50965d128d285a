// SPDX-License-Identifier: MIT
#pragma once

/// The log on standard error, written so that a reader who is slow, stopped or gone never stops the program.
///
/// A line is written at once where it can be, so whoever reads sees it when it is logged, also before a crash. What
/// cannot be written waits its turn, in order, within a bound; what is beyond it is left out, and their number said.
namespace StandardErrorLog {

/// Sends Qt's messages, as Qt formats them, this way. Before the first message; once. At the end of the process what
/// waits is written as long as somebody reads.
void install();

/// Writes what waits, as long as somebody reads. Any thread.
void flush();

} // namespace StandardErrorLog
