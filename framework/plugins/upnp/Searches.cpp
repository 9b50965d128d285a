// SPDX-License-Identifier: MIT
#include "Searches.h"

#include "MonotonicTime.h"

#include <algorithm>

namespace {
// Milliseconds until a search is repeated. GSSDP takes none before it has dropped, some seconds later, who did not answer the
// one before.
constexpr qint64 firstRepeat = 2000;
constexpr qint64 repeatInterval = 30'000;
// Without any interface everything is opened anew, at growing intervals. Milliseconds.
constexpr qint64 firstPatience = 500;
constexpr qint64 longestPatience = 30'000;
// MX: a device waits a random part of this before it answers a search.
constexpr gushort answerWithin = 1; // seconds
// Of a whole request; our own limits are shorter, this one is for what GUPnP asks by itself.
constexpr guint httpTimeout = 20; // seconds
// Milliseconds, longer than that.
constexpr qint64 retirement = 30'000;

/// Everything that GSSDP hears. It keeps the identifiers of start and configuration to itself otherwise.
constexpr char receivedSignal[] = "message-received";

bool hasReceivedSignal()
{
    const guint id = g_signal_lookup(receivedSignal, GSSDP_TYPE_CLIENT);
    GSignalQuery signal = {};
    if (id)
        g_signal_query(id, &signal);
    return signal.n_params == 4
        && (signal.param_types[3] & ~G_SIGNAL_TYPE_STATIC_SCOPE) == SOUP_TYPE_MESSAGE_HEADERS;
}
} // namespace

Searches::Searches(const QStringList &interfaces, Listener listener)
    : m_interfaces(interfaces)
    , m_listener(std::move(listener))
    , m_patience(firstPatience)
{
}

Searches::~Searches()
{
    stop();
    for (const Retired &retired : m_retired)
        soup_session_abort(
            gupnp_context_get_session(gupnp_control_point_get_context(retired.controlPoint.get())));
    while (g_main_context_iteration(g_main_context_get_thread_default(), FALSE)) { }
}

void Searches::start()
{
    m_startedAt = monotonicTime();
    m_manager.reset(gupnp_context_manager_create_full(GSSDP_UDA_VERSION_1_0, G_SOCKET_FAMILY_IPV4, 0));
    GUPnPContextFilter *filter = gupnp_context_manager_get_context_filter(m_manager.get());
    for (const QString &interface : m_interfaces)
        gupnp_context_filter_add_entry(filter, interface.toUtf8().constData());
    gupnp_context_filter_set_enabled(filter, !m_interfaces.isEmpty());
    g_signal_connect(m_manager.get(), "context-available", G_CALLBACK(interfaceCame), this);
    g_signal_connect(m_manager.get(), "context-unavailable", G_CALLBACK(interfaceWent), this);
}

void Searches::stop()
{
    if (m_manager)
        g_signal_handlers_disconnect_by_data(m_manager.get(), this);
    for (Search &search : m_searches)
        retire(std::move(search));
    m_searches.clear();
}

/// GUPnP takes a port for one protocol and then finds it in use for the other, and does not try again.
bool Searches::isRestartDue(qint64 now) const
{
    return m_searches.empty() && now - m_startedAt >= m_patience;
}

void Searches::restart()
{
    m_patience = std::min(2 * m_patience, longestPatience);
    stop();
    start();
}

/// GUPnP does not survive the end of a control point that is just reading a description: it finds nothing any more, but
/// it stays until that must have ended.
void Searches::retire(Search search)
{
    GUPnPControlPoint *controlPoint = search.controlPoint.get();
    g_signal_handlers_disconnect_by_data(controlPoint, this);
    g_signal_handlers_disconnect_by_data(gupnp_control_point_get_context(controlPoint), this);
    gssdp_resource_browser_set_active(GSSDP_RESOURCE_BROWSER(controlPoint), FALSE);
    m_retired.push_back({std::move(search.controlPoint), monotonicTime()});
}

void Searches::forgetRetired(qint64 now)
{
    std::erase_if(m_retired, [now](const Retired &retired) { return now - retired.since >= retirement; });
}

void Searches::interfaceCame(GUPnPContextManager *, GUPnPContext *context, void *self)
{
    auto *searches = static_cast<Searches *>(self);
    g_object_set(gupnp_context_get_session(context), "timeout", httpTimeout, nullptr);
    // Before GUPnP hears of it.
    if (hasReceivedSignal())
        g_signal_connect(context, receivedSignal, G_CALLBACK(received), self);
    // GUPnP silences an interface that goes down, and may bring the same one back without giving it its voice again.
    g_object_set(context, "active", TRUE, nullptr);
    searches->search(context, Upnp::Kind::Renderer);
    searches->search(context, Upnp::Kind::Source);
}

void Searches::search(GUPnPContext *context, Upnp::Kind kind)
{
    // Devices of later versions answer as well.
    const char *type = kind == Upnp::Kind::Renderer ? "urn:schemas-upnp-org:device:MediaRenderer:1"
                                                    : "urn:schemas-upnp-org:device:MediaServer:1";
    GlibHandles::Object<GUPnPControlPoint> controlPoint(gupnp_control_point_new(context, type));
    g_signal_connect(controlPoint.get(), "device-proxy-available", G_CALLBACK(available), this);
    g_signal_connect(controlPoint.get(), "device-proxy-unavailable", G_CALLBACK(unavailable), this);
    gssdp_resource_browser_set_mx(GSSDP_RESOURCE_BROWSER(controlPoint.get()), answerWithin);
    gssdp_resource_browser_set_active(GSSDP_RESOURCE_BROWSER(controlPoint.get()), TRUE);
    // The manager is not told of it: it would note whom it manages in a list that it frees with the interface, and a control
    // point that lives longer (see retire()) would take itself off that list.
    m_searches.push_back({std::move(controlPoint), kind, monotonicTime() + firstRepeat});
}

void Searches::interfaceWent(GUPnPContextManager *, GUPnPContext *context, void *self)
{
    g_signal_handlers_disconnect_by_data(context, self);
    static_cast<Searches *>(self)->endSearches(context);
}

void Searches::endSearches(GUPnPContext *context)
{
    for (auto search = m_searches.begin(); search != m_searches.end();) {
        if (gupnp_control_point_get_context(search->controlPoint.get()) != context) {
            ++search;
            continue;
        }
        for (const GList *proxy = gupnp_control_point_list_device_proxies(search->controlPoint.get()); proxy;
             proxy = proxy->next)
            m_listener.withdrawn(GUPNP_DEVICE_PROXY(proxy->data), Announcements::Reason::Byebye);
        retire(std::move(*search));
        search = m_searches.erase(search);
    }
}

void Searches::available(GUPnPControlPoint *controlPoint, GUPnPDeviceProxy *proxy, void *self)
{
    const auto *searches = static_cast<const Searches *>(self);
    const auto search = std::find_if(searches->m_searches.begin(), searches->m_searches.end(),
        [controlPoint](const Search &known) { return known.controlPoint.get() == controlPoint; });
    if (search != searches->m_searches.end())
        searches->m_listener.announced(search->kind, proxy);
}

void Searches::unavailable(GUPnPControlPoint *, GUPnPDeviceProxy *proxy, void *self)
{
    static_cast<const Searches *>(self)->m_listener.withdrawn(proxy, Announcements::Reason::Unknown);
}

void Searches::received(
    GSSDPClient *context, const char *, unsigned, int, SoupMessageHeaders *headers, void *self)
{
    const SsdpMessage message = SsdpMessage::of(headers);
    if (!message.udn.isEmpty())
        static_cast<const Searches *>(self)->m_listener.heard(context, message);
}

/// Each by itself: the context manager's own rescan sends nothing in GUPnP 1.6.
void Searches::repeatDue(qint64 now)
{
    for (Search &search : m_searches) {
        if (now >= search.repeatAt
            && gssdp_resource_browser_rescan(GSSDP_RESOURCE_BROWSER(search.controlPoint.get())))
            search.repeatAt = now + repeatInterval;
    }
}

void Searches::repeatNow(qint64 now)
{
    for (Search &search : m_searches)
        search.repeatAt = now;
    repeatDue(now);
}
