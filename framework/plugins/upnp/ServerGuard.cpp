// SPDX-License-Identifier: MIT
#include "ServerGuard.h"

#include "MonotonicTime.h"
#include "ServerConnections.h"

#include <QByteArray>

#include <libsoup/soup.h>

#include <algorithm>
#include <numeric>

namespace {
constexpr char guardMark[] = "kelvo-server-guard";
constexpr char visitMark[] = "kelvo-visit";
constexpr guint guardInterval = 100; // milliseconds

bool isOfNetwork(SoupServerMessage *message, GSSDPClient *network)
{
    GSocketAddress *address = soup_server_message_get_remote_address(message);
    return G_IS_INET_SOCKET_ADDRESS(address)
        && gssdp_client_can_reach(network, G_INET_SOCKET_ADDRESS(address));
}

/// Its port is not looked at: devices leave it out, and no name passes by it.
bool isNamed(SoupServerMessage *message, const QByteArray &address)
{
    SoupMessageHeaders *headers = soup_server_message_get_request_headers(message);
    // Several lines come as one, separated by commas, which is no address.
    const QByteArray host(soup_message_headers_get_list(headers, "Host"));
    // Programs from before there was such a line; browsers, which are what may be led astray, send it.
    if (host.isNull())
        return soup_server_message_get_http_version(message) == SOUP_HTTP_1_0;
    return host == address || host.startsWith(address + ':');
}
} // namespace

/// One connection, which has one request. Its end is heard from the server or, when that goes too, from the message.
struct ServerGuard::Visit
{
    ServerGuard *guard; // null: no longer counted
    SoupServerMessage *message; // owns this
    GlibHandles::Object<GSocket> socket;
    qint64 since;
    qint64 body = 0;
    bool isAsking = true;
    bool isEnded = false; // by us

    static Visit *of(SoupServerMessage *message)
    {
        return static_cast<Visit *>(g_object_get_data(G_OBJECT(message), visitMark));
    }
    static void begin(ServerGuard *guard, SoupServerMessage *message);
    static void headersCame(SoupServerMessage *message, void *self);
    static void bodyCame(SoupServerMessage *message, GBytes *chunk, void *self);
    static void bodyEnded(SoupServerMessage *, void *self) { static_cast<Visit *>(self)->isAsking = false; }

    void end();
    void leave();
    void takeNoMore();
};

void ServerGuard::Visit::begin(ServerGuard *guard, SoupServerMessage *message)
{
    auto *self = new Visit{
        guard, message, GlibHandles::share(soup_server_message_get_socket(message)), monotonicTime()};
    guard->m_visits.push_back(self);
    g_object_set_data_full(G_OBJECT(message), visitMark, self, [](void *data) {
        auto *visit = static_cast<Visit *>(data);
        visit->leave();
        delete visit;
    });
    g_signal_connect(message, "got-headers", G_CALLBACK(headersCame), self);
    g_signal_connect(message, "got-chunk", G_CALLBACK(bodyCame), self);
    g_signal_connect(message, "got-body", G_CALLBACK(bodyEnded), self);
}

/// The peer and the server see at once that nothing more comes, and each gives up by itself.
void ServerGuard::Visit::end()
{
    g_socket_shutdown(socket.get(), TRUE, TRUE, nullptr);
    isEnded = true;
}

void ServerGuard::Visit::leave()
{
    if (guard)
        guard->m_visits.remove(this);
    guard = nullptr;
}

void ServerGuard::Visit::takeNoMore()
{
    soup_message_body_set_accumulate(soup_server_message_get_request_body(message), FALSE);
}

void ServerGuard::Visit::headersCame(SoupServerMessage *message, void *data)
{
    auto *self = static_cast<Visit *>(data);
    if (!self->guard || self->isEnded)
        return; // whose address cannot be told any more
    SoupMessageHeaders *headers = soup_server_message_get_request_headers(message);
    if (soup_message_headers_get_content_length(headers) > self->guard->m_limits.body)
        self->end();
    if (self->isEnded)
        return;
    GSSDPClient *network = self->guard->m_network;
    if (isOfNetwork(message, network) && isNamed(message, gssdp_client_get_host_ip(network)))
        return;
    soup_server_message_set_status(message, SOUP_STATUS_FORBIDDEN, nullptr);
    self->takeNoMore();
}

void ServerGuard::Visit::bodyCame(SoupServerMessage *, GBytes *chunk, void *data)
{
    auto *self = static_cast<Visit *>(data);
    self->body += qint64(g_bytes_get_size(chunk));
    const ServerGuard *guard = self->guard;
    if (guard && self->body <= guard->m_limits.body && guard->taken() <= guard->m_limits.bodies)
        return;
    self->takeNoMore();
    self->end();
}

void ServerGuard::keep(GUPnPContext *context)
{
    keep(context, Limits());
}

void ServerGuard::keep(GUPnPContext *context, const Limits &limits)
{
    SoupServer *server = gupnp_context_get_server(context);
    ServerConnections::endWithTheirAnswer(server);
    if (g_object_get_data(G_OBJECT(server), guardMark))
        return;
    auto *self = new ServerGuard(context, limits);
    g_object_set_data_full(
        G_OBJECT(server), guardMark, self, [](void *data) { delete static_cast<ServerGuard *>(data); });
    g_signal_connect(server, "request-started", G_CALLBACK(started), self);
    g_signal_connect(server, "request-finished", G_CALLBACK(ended), self);
    g_signal_connect(server, "request-aborted", G_CALLBACK(ended), self);
}

ServerGuard::ServerGuard(GUPnPContext *context, const Limits &limits)
    : m_network(GSSDP_CLIENT(context))
    , m_limits(limits)
{
}

ServerGuard::~ServerGuard()
{
    if (m_ticks)
        g_source_destroy(m_ticks.get());
    for (Visit *visit : m_visits)
        visit->guard = nullptr;
}

void ServerGuard::started(SoupServer *, SoupServerMessage *message, void *self)
{
    auto *guard = static_cast<ServerGuard *>(self);
    if (!soup_server_message_get_socket(message) || Visit::of(message))
        return;
    guard->makeRoom();
    Visit::begin(guard, message);
    guard->keepTime();
}

qint64 ServerGuard::taken() const
{
    return std::accumulate(m_visits.cbegin(), m_visits.cend(), qint64(0),
        [](qint64 sum, const Visit *visit) { return sum + visit->body; });
}

/// Devices send their requests at once: who has been silent for longest among many is none of them.
void ServerGuard::makeRoom()
{
    if (m_visits.size() < m_limits.connections)
        return;
    const auto oldest
        = std::find_if(m_visits.begin(), m_visits.end(), [](const Visit *visit) { return visit->isAsking; });
    Visit *visit = oldest != m_visits.end() ? *oldest : m_visits.front();
    visit->end();
    // Its end is not waited for.
    visit->leave();
}

void ServerGuard::ended(SoupServer *, SoupServerMessage *message, void *)
{
    if (Visit *visit = Visit::of(message))
        visit->leave();
}

void ServerGuard::keepTime()
{
    if (m_ticks)
        return;
    m_ticks.reset(g_timeout_source_new(guardInterval));
    g_source_set_callback(m_ticks.get(), ticked, this, nullptr);
    g_source_attach(m_ticks.get(), g_main_context_get_thread_default());
}

int ServerGuard::ticked(void *self)
{
    auto *guard = static_cast<ServerGuard *>(self);
    guard->tick();
    if (!guard->m_visits.empty())
        return G_SOURCE_CONTINUE;
    guard->m_ticks.reset();
    return G_SOURCE_REMOVE;
}

void ServerGuard::tick()
{
    const qint64 time = monotonicTime();
    for (Visit *visit : m_visits) {
        if (visit->isAsking && !visit->isEnded && time - visit->since >= m_limits.asking)
            visit->end();
    }
}
