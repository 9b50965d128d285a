// SPDX-License-Identifier: MIT
#pragma once

/// Keeps the HTTP library (libsoup 3.2) from ending the program when an item is stopped just as its server answers.
///
/// The body of an answer that nobody has taken is closed when it is released, and closing it skips what is left of it by
/// way of what the message keeps while it is under way. A message that was called off meanwhile keeps that no more. Such
/// a stream is left closed as it is.
///
/// Acts on the class of these streams, of all in this process, until the library of this code is unloaded.
namespace SoupStreamGuard {
/// To be called before each use of HTTP, once the HTTP library is loaded; without it nothing happens. Any thread.
void begin();
/// Of the streams so far: how many were left as they are. For tests.
int streamsLeft();
} // namespace SoupStreamGuard
