// SPDX-License-Identifier: MIT
#include "ServerConnections.h"

#include <libsoup/soup.h>

#include <string_view>

namespace {
constexpr char seenMark[] = "kelvo-seen";
constexpr guint patience = 1000; // milliseconds
constexpr std::string_view request = "GET / HTTP/1.0\r\n\r\n";

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

/// A main context of its own while it is there: nothing else of this thread is served meanwhile.
class PrivateContext
{
public:
    PrivateContext() { g_main_context_push_thread_default(m_context); }
    ~PrivateContext()
    {
        serve();
        g_main_context_pop_thread_default(m_context);
        g_main_context_unref(m_context);
    }
    Q_DISABLE_COPY_MOVE(PrivateContext)

    void serve() const
    {
        while (g_main_context_iteration(m_context, FALSE)) { }
    }
    /// Until there is a socket, for a while at most.
    void serveUntil(GSocket *const &socket) const
    {
        bool isLate = false;
        const GlibHandles::Source end(g_timeout_source_new(patience));
        const auto late = [](void *flag) -> int {
            *static_cast<bool *>(flag) = true;
            return G_SOURCE_REMOVE;
        };
        g_source_set_callback(end.get(), late, &isLate, nullptr);
        g_source_attach(end.get(), m_context);
        while (!socket && !isLate)
            g_main_context_iteration(m_context, TRUE);
        g_source_destroy(end.get());
    }

private:
    GMainContext *const m_context = g_main_context_new();
};

void watchSocket(SoupServer *, SoupServerMessage *message, GSocket **socket)
{
    *socket = soup_server_message_get_socket(message);
    g_object_add_weak_pointer(G_OBJECT(*socket), reinterpret_cast<void **>(socket));
}

guint16 portOf(SoupServer *server)
{
    GSList *addresses = soup_server_get_uris(server);
    const int port = addresses ? g_uri_get_port(static_cast<GUri *>(addresses->data)) : 0;
    g_slist_free_full(addresses, GDestroyNotify(g_uri_unref));
    return guint16(port);
}

GlibHandles::Object<GSocketConnection> ask(SoupServer *server)
{
    const GlibHandles::Object<GSocketAddress> address(
        g_inet_socket_address_new_from_string("127.0.0.1", portOf(server)));
    const GlibHandles::Object<GSocketClient> client(g_socket_client_new());
    g_socket_client_set_enable_proxy(client.get(), FALSE); // nobody is to be asked for one
    g_socket_client_set_timeout(client.get(), 1);
    GlibHandles::Object<GSocketConnection> connection(
        g_socket_client_connect(client.get(), G_SOCKET_CONNECTABLE(address.get()), nullptr, nullptr));
    if (connection)
        g_output_stream_write_all(g_io_stream_get_output_stream(G_IO_STREAM(connection.get())),
            request.data(), request.size(), nullptr, nullptr, nullptr);
    return connection;
}

bool tryOut()
{
    const PrivateContext context;
    GSocket *socket = nullptr;
    {
        const GlibHandles::Object<SoupServer> server(soup_server_new(nullptr, nullptr));
        g_signal_connect(server.get(), "request-started", G_CALLBACK(watchSocket), &socket);
        if (soup_server_listen_local(server.get(), 0, SOUP_SERVER_LISTEN_IPV4_ONLY, nullptr)) {
            const GlibHandles::Object<GSocketConnection> connection = ask(server.get());
            if (connection)
                context.serveUntil(socket);
        }
        soup_server_disconnect(server.get());
        context.serve();
    }
    if (!socket)
        return false;
    // Everything that it was for has ended.
    g_object_remove_weak_pointer(G_OBJECT(socket), reinterpret_cast<void **>(&socket));
    g_object_unref(socket);
    return true;
}
} // namespace

bool ServerConnections::leaveSockets()
{
    static const bool result = tryOut();
    return result;
}

void ServerConnections::endWithTheirAnswer(SoupServer *server)
{
    if (!markOnce(G_OBJECT(server)))
        return;
    g_signal_connect(server, "request-started", G_CALLBACK(closeAfterwards), nullptr);
    if (leaveSockets())
        g_signal_connect(server, "request-started", G_CALLBACK(releaseSurplus), nullptr);
}
