// SPDX-License-Identifier: MIT
#pragma once

class QDBusMessage;

/// Calls others as fast as the bus takes it, over connections of its own that cost next to nothing for each call.
namespace BusFlood {

/// Sends that call so many times, with a reply wanted for each; the replies are thrown away. Any thread; blocks. How many
/// were sent.
/// @param message  a call whose arguments are texts and unsigned numbers
int send(const QDBusMessage &message, int count);

} // namespace BusFlood
