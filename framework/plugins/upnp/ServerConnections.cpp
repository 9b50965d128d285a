// SPDX-License-Identifier: MIT
#include "ServerConnections.h"

#include "KelvoMessageHandler.h"

#include <libsoup/soup.h>

namespace {
constexpr char seenMark[] = "kelvo-seen";

bool markOnce(GObject *object)
{
    if (g_object_get_data(object, seenMark))
        return false;
    g_object_set_data(object, seenMark, object);
    return true;
}

void closeAfterwards(SoupServer *, SoupServerMessage *message, void *)
{
    soup_message_headers_replace(soup_server_message_get_response_headers(message), "Connection", "close");
}

/// The connection has references of its own, so the surplus one may go while it still lives.
void releaseSurplus(SoupServer *, SoupServerMessage *message, void *)
{
    GSocket *socket = soup_server_message_get_socket(message);
    if (socket && markOnce(G_OBJECT(socket)))
        g_object_unref(socket);
}

/// The library that is loaded, which need not be the one that this was compiled with.
bool doesLibraryKeepSockets()
{
    const unsigned major = soup_get_major_version();
    const unsigned minor = soup_get_minor_version();
    const unsigned micro = soup_get_micro_version();
    const bool keeps = ServerConnections::keepsSockets(major, minor, micro);
    qCDebug(lcKelvo).nospace()
        << "libsoup " << major << '.' << minor << '.' << micro
        << (keeps ? " keeps a reference to each socket that a server accepts (as 3.2.0 to 3.2.3 "
                    "do): it is released here"
                  : " is not known to keep the sockets that a server accepts (as 3.2.0 to 3.2.3 "
                    "do): nothing is released here");
    return keeps;
}
} // namespace

bool ServerConnections::keepsSockets(unsigned major, unsigned minor, unsigned micro)
{
    // The fault: of a connection that has ended, and even of a server that has, the accepted GSocket still has one reference
    // that nobody gives up. 3.2.3 is the last version that it was seen in.
    return major == 3 && minor == 2 && micro <= 3;
}

void ServerConnections::endWithTheirAnswer(SoupServer *server)
{
    if (!markOnce(G_OBJECT(server)))
        return;
    static const bool isToRelease = doesLibraryKeepSockets();
    g_signal_connect(server, "request-started", G_CALLBACK(closeAfterwards), nullptr);
    if (isToRelease)
        g_signal_connect(server, "request-started", G_CALLBACK(releaseSurplus), nullptr);
}
