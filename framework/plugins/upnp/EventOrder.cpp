// SPDX-License-Identifier: MIT
#include "EventOrder.h"

#include <libsoup/soup.h>

#include <algorithm>
#include <utility>

namespace {
constexpr char mark[] = "kelvo-event-order";
// Milliseconds. A device that answers nothing before its event is taken must not be kept waiting for itself.
constexpr guint patience = 1000;

QByteArray headerOf(SoupMessageHeaders *headers, const char *name)
{
    return QByteArray(soup_message_headers_get_one(headers, name)).trimmed();
}

bool isSubscription(SoupMessage *message)
{
    return qstrcmp(soup_message_get_method(message), "SUBSCRIBE") == 0;
}

/// The path of the address that events are to be sent to; empty when none is told.
QByteArray callbackPath(SoupMessage *message)
{
    const QByteArray text = headerOf(soup_message_get_request_headers(message), "Callback");
    const qsizetype host = text.indexOf("//");
    const qsizetype path = host < 0 ? -1 : text.indexOf('/', host + 2);
    return path < 0 ? QByteArray() : text.mid(path).chopped(1);
}

GlibHandles::Source scheduled(GSource *source, int (*callback)(void *), void *self)
{
    g_source_set_callback(source, callback, self, nullptr);
    g_source_attach(source, g_main_context_get_thread_default());
    return GlibHandles::Source(source);
}

void cancel(GlibHandles::Source *source)
{
    if (*source)
        g_source_destroy(source->get());
    source->reset();
}
} // namespace

void EventOrder::keep(SoupSession *session, SoupServer *server)
{
    if (of(server))
        return;
    auto *self = new EventOrder(session);
    g_object_set_data_full(
        G_OBJECT(server), mark, self, [](void *data) { delete static_cast<EventOrder *>(data); });
    g_signal_connect(server, "request-started", G_CALLBACK(eventBegins), self);
}

EventOrder *EventOrder::of(SoupServer *server)
{
    return static_cast<EventOrder *>(g_object_get_data(G_OBJECT(server), mark));
}

EventOrder::EventOrder(SoupSession *session)
    : m_session(GlibHandles::share(session))
{
    g_signal_connect(session, "request-queued", G_CALLBACK(asked), this);
    g_signal_connect(session, "request-unqueued", G_CALLBACK(answered), this);
}

EventOrder::~EventOrder()
{
    cancel(&m_release);
    cancel(&m_limit);
    g_signal_handlers_disconnect_by_data(m_session.get(), this);
}

void EventOrder::asked(SoupSession *, SoupMessage *message, void *self)
{
    auto *order = static_cast<EventOrder *>(self);
    if (qstrcmp(soup_message_get_method(message), "UNSUBSCRIBE") == 0)
        order->forget(headerOf(soup_message_get_request_headers(message), "SID"));
    const QByteArray path = isSubscription(message) ? callbackPath(message) : QByteArray();
    if (!path.isEmpty())
        order->m_subscriptions.insert(path, {message});
}

void EventOrder::answered(SoupSession *, SoupMessage *message, void *self)
{
    if (!isSubscription(message))
        return;
    auto *order = static_cast<EventOrder *>(self);
    auto &subscriptions = order->m_subscriptions;
    const auto known = std::find_if(subscriptions.begin(), subscriptions.end(),
        [message](const Subscription &subscription) { return subscription.question == message; });
    if (known == subscriptions.end()) {
        // Renewed, or replaced meanwhile.
        if (!SOUP_STATUS_IS_SUCCESSFUL(soup_message_get_status(message)))
            order->forget(headerOf(soup_message_get_request_headers(message), "SID"));
        return;
    }
    *known = {nullptr, headerOf(soup_message_get_response_headers(message), "SID")};
    if (known->id.isEmpty())
        subscriptions.erase(known);
    // GUPnP is told of the answer before.
    if (!order->m_release)
        order->m_release = scheduled(g_idle_source_new(), releaseAnswered, self);
}

void EventOrder::forget(const QByteArray &id)
{
    m_subscriptions.removeIf([&id](const auto &entry) { return !entry->question && entry->id == id; });
}

void EventOrder::eventBegins(SoupServer *server, SoupServerMessage *event, void *)
{
    g_signal_connect_object(event, "got-headers", G_CALLBACK(headersCame), server, GConnectFlags(0));
}

void EventOrder::headersCame(SoupServerMessage *event, SoupServer *server)
{
    if (qstrcmp(soup_server_message_get_method(event), "NOTIFY") != 0)
        return;
    g_signal_connect_object(event, "finished", G_CALLBACK(eventEnded), server, GConnectFlags(0));
    of(server)->judge(event);
}

void EventOrder::judge(SoupServerMessage *event)
{
    const QByteArray path = g_uri_get_path(soup_server_message_get_uri(event));
    if (!m_subscriptions.value(path).question) {
        refuseOther(event, path);
        return;
    }
    soup_server_message_pause(event);
    m_waiting.push_back({GlibHandles::share(event), path});
    if (!m_limit)
        m_limit = scheduled(g_timeout_source_new(patience), releaseAll, this);
}

/// What is not of the subscription that is in force.
void EventOrder::refuseOther(SoupServerMessage *event, const QByteArray &path) const
{
    const auto known = m_subscriptions.constFind(path);
    const bool isOther = known != m_subscriptions.cend() && !known->question
        && headerOf(soup_server_message_get_request_headers(event), "SID") != known->id;
    if (isOther)
        soup_server_message_set_status(event, SOUP_STATUS_PRECONDITION_FAILED, nullptr);
}

void EventOrder::eventEnded(SoupServerMessage *event, SoupServer *server)
{
    std::erase_if(
        of(server)->m_waiting, [event](const Waiting &known) { return known.event.get() == event; });
}

int EventOrder::releaseAnswered(void *self)
{
    auto *order = static_cast<EventOrder *>(self);
    order->m_release.reset();
    order->release(false);
    return G_SOURCE_REMOVE;
}

int EventOrder::releaseAll(void *self)
{
    static_cast<EventOrder *>(self)->release(true);
    return G_SOURCE_REMOVE;
}

void EventOrder::release(bool isLate)
{
    std::vector<Waiting> still;
    for (Waiting &waiting : std::exchange(m_waiting, {})) {
        if (!isLate && m_subscriptions.value(waiting.path).question) {
            still.push_back(std::move(waiting));
            continue;
        }
        refuseOther(waiting.event.get(), waiting.path);
        soup_server_message_unpause(waiting.event.get());
    }
    m_waiting = std::move(still);
    if (m_waiting.empty())
        cancel(&m_limit);
}
