// SPDX-License-Identifier: MIT
#pragma once

#include "GupnpHandles.h"

/// The connections that others open to a server of ours end completely.
///
/// libsoup 3.2 forgets two things: it does not notice that the peer has closed a connection that was kept open for more
/// requests, so a file descriptor stays for each; and it keeps a reference of its own to each socket that it accepts.
/// A device that reports its state every second would cost 30 MB or all descriptors in a day.
namespace ServerConnections {

/// Whether that version of libsoup keeps a reference to each socket that a server accepts: 3.2.0 to 3.2.3 do. Of others it
/// is not known, and then none is released: 336 bytes a connection are the smaller harm.
bool keepsSockets(unsigned major, unsigned minor, unsigned micro);

/// Ends each connection of this server after one request, and releases what the libsoup of this computer would keep of it.
/// Asked for again, nothing more happens. Thread of the server.
void endWithTheirAnswer(SoupServer *server);

} // namespace ServerConnections
