// SPDX-License-Identifier: MIT
#pragma once

#include "GlibHandles.h"

/// The connections that others open to a server of ours end completely.
///
/// libsoup 3.2 forgets two things: it does not notice that the peer has closed a connection that was kept open for more
/// requests, so a file descriptor stays for each; and it keeps a reference of its own to each socket that it accepts.
/// A device that reports its state every second would cost 30 MB or all descriptors in a day.
namespace ServerConnections {

/// Whether the libsoup of this computer keeps sockets: learnt once, from a server that lives for some milliseconds on the
/// loopback interface; false when that cannot be learnt. Any thread, which serves nothing else meanwhile.
bool leaveSockets();

/// Ends each connection of this server after one request, and releases what libsoup would keep of it. Asked for again,
/// nothing more happens. Thread of the server.
void endWithTheirAnswer(SoupServer *server);

} // namespace ServerConnections
