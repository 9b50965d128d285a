// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Whether a session bus is there, found out without the bus library, whose connecting waits for as long as
/// the other end likes.
namespace BusAddress {
/// Address of the session bus (D-Bus Specification, "Server Addresses"): what the environment says, else the
/// usual socket in the runtime folder; empty when there is neither. A bus is never started for this: nobody
/// else would be on it.
QString ofSession();

/// False when nobody listens at the address, which is known at once for local sockets. Never waits; true for
/// the kinds of address that cannot be told without waiting.
bool mayListen(const QString &address);

/// Waits until whoever listens at the address answers a greeting. For a thread of its own.
/// @param timeout  milliseconds
/// @param wakeUp   a file descriptor that calls the waiting off when it becomes readable
/// @return true when it answered, or when the kind of address does not allow to ask
bool answers(const QString &address, int timeout, int wakeUp);
} // namespace BusAddress
