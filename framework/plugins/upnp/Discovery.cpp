// SPDX-License-Identifier: MIT
#include "Discovery.h"

#include "DeviceDescription.h"
#include "KelvoMessageHandler.h"
#include "MonotonicTime.h"

#include <algorithm>

namespace {
constexpr guint tickInterval = 250; // milliseconds
// Milliseconds until a search is repeated, because what is sent may get lost. GSSDP takes none before it has dropped, some
// seconds later, who did not answer the one before.
constexpr qint64 firstRepeat = 2000;
constexpr qint64 repeatInterval = 30'000;
// Without any interface everything is opened anew, at growing intervals. Milliseconds.
constexpr qint64 firstPatience = 500;
constexpr qint64 longestPatience = 30'000;
// A device waits a random part of this before it answers a search.
constexpr gushort answerWithin = 1; // seconds
// Of a whole request; our own limits are shorter, this one is for what GUPnP asks by itself.
constexpr guint httpTimeout = 20; // seconds
// Milliseconds, longer than that.
constexpr qint64 retirement = 30'000;
// So long, in milliseconds, GUPnP may know the old description of a device that has gone: what still asks it has it.
constexpr qint64 afterlife = 30'000;

GlibHandles::Source attach(GSource *source, int (*callback)(void *), void *self)
{
    g_source_set_callback(source, callback, self, nullptr);
    g_source_attach(source, g_main_context_get_thread_default());
    return GlibHandles::Source(source);
}

/// Everything that GSSDP hears. It keeps the identifiers of start and configuration to itself otherwise.
constexpr char heardSignal[] = "message-received";

bool hasHeardSignal()
{
    const guint id = g_signal_lookup(heardSignal, GSSDP_TYPE_CLIENT);
    GSignalQuery signal = {};
    if (id)
        g_signal_query(id, &signal);
    return signal.n_params == 4
        && (signal.param_types[3] & ~G_SIGNAL_TYPE_STATIC_SCOPE) == SOUP_TYPE_MESSAGE_HEADERS;
}
} // namespace

Discovery::Discovery(const QStringList &interfaces, DeviceListener listener)
    : m_interfaces(interfaces)
    , m_listener(std::move(listener))
    , m_patience(firstPatience)
    , m_ticks(attach(g_timeout_source_new(tickInterval), ticked, this))
{
    openManager();
}

Discovery::~Discovery()
{
    leave();
    for (const Retired &retired : m_retired)
        soup_session_abort(
            gupnp_context_get_session(gupnp_control_point_get_context(retired.controlPoint.get())));
    while (g_main_context_iteration(g_main_context_get_thread_default(), FALSE)) { }
}

void Discovery::leave()
{
    g_source_destroy(m_ticks.get());
    if (m_sweep)
        g_source_destroy(m_sweep.get());
    stopSearches();
}

void Discovery::openManager()
{
    m_opened = monotonicTime();
    m_manager.reset(gupnp_context_manager_create_full(GSSDP_UDA_VERSION_1_0, G_SOCKET_FAMILY_IPV4, 0));
    GUPnPContextFilter *filter = gupnp_context_manager_get_context_filter(m_manager.get());
    for (const QString &interface : m_interfaces)
        gupnp_context_filter_add_entry(filter, interface.toUtf8().constData());
    gupnp_context_filter_set_enabled(filter, !m_interfaces.isEmpty());
    g_signal_connect(m_manager.get(), "context-available", G_CALLBACK(interfaceCame), this);
    g_signal_connect(m_manager.get(), "context-unavailable", G_CALLBACK(interfaceWent), this);
}

void Discovery::stopSearches()
{
    g_signal_handlers_disconnect_by_data(m_manager.get(), this);
    for (Search &search : m_searches)
        retire(std::move(search));
    m_searches.clear();
    m_devices.clear();
}

/// GUPnP does not survive the end of a control point that is just reading a description: it finds nothing any more, but
/// it stays until that must have ended.
void Discovery::retire(Search search)
{
    GUPnPControlPoint *controlPoint = search.controlPoint.get();
    g_signal_handlers_disconnect_by_data(controlPoint, this);
    g_signal_handlers_disconnect_by_data(gupnp_control_point_get_context(controlPoint), this);
    gssdp_resource_browser_set_active(GSSDP_RESOURCE_BROWSER(controlPoint), FALSE);
    m_retired.push_back({std::move(search.controlPoint), monotonicTime()});
}

void Discovery::interfaceCame(GUPnPContextManager *, GUPnPContext *context, void *self)
{
    auto *discovery = static_cast<Discovery *>(self);
    g_object_set(gupnp_context_get_session(context), "timeout", httpTimeout, nullptr);
    // Before GUPnP hears of it.
    if (hasHeardSignal())
        g_signal_connect(context, heardSignal, G_CALLBACK(heard), self);
    // GUPnP silences an interface that goes down, and may bring the same one back without giving it its voice again.
    g_object_set(context, "active", TRUE, nullptr);
    discovery->startSearch(context, Upnp::Kind::Renderer);
    discovery->startSearch(context, Upnp::Kind::Source);
}

void Discovery::startSearch(GUPnPContext *context, Upnp::Kind kind)
{
    // Devices of later versions answer as well.
    const char *type = kind == Upnp::Kind::Renderer ? "urn:schemas-upnp-org:device:MediaRenderer:1"
                                                    : "urn:schemas-upnp-org:device:MediaServer:1";
    GlibHandles::Object<GUPnPControlPoint> controlPoint(gupnp_control_point_new(context, type));
    g_signal_connect(controlPoint.get(), "device-proxy-available", G_CALLBACK(announced), this);
    g_signal_connect(controlPoint.get(), "device-proxy-unavailable", G_CALLBACK(withdrawn), this);
    gssdp_resource_browser_set_mx(GSSDP_RESOURCE_BROWSER(controlPoint.get()), answerWithin);
    gssdp_resource_browser_set_active(GSSDP_RESOURCE_BROWSER(controlPoint.get()), TRUE);
    gupnp_context_manager_manage_control_point(m_manager.get(), controlPoint.get());
    m_searches.push_back({std::move(controlPoint), kind, monotonicTime() + firstRepeat});
}

void Discovery::interfaceWent(GUPnPContextManager *, GUPnPContext *context, void *self)
{
    auto &searches = static_cast<Discovery *>(self)->m_searches;
    g_signal_handlers_disconnect_by_data(context, self);
    for (auto search = searches.begin(); search != searches.end();) {
        if (gupnp_control_point_get_context(search->controlPoint.get()) != context) {
            ++search;
            continue;
        }
        for (const GList *proxy = gupnp_control_point_list_device_proxies(search->controlPoint.get()); proxy;
             proxy = proxy->next)
            static_cast<Discovery *>(self)->remove(GUPNP_DEVICE_PROXY(proxy->data), Device::Farewell::Said);
        static_cast<Discovery *>(self)->retire(std::move(*search));
        search = searches.erase(search);
    }
}

void Discovery::announced(GUPnPControlPoint *controlPoint, GUPnPDeviceProxy *proxy, void *self)
{
    auto *discovery = static_cast<Discovery *>(self);
    const auto search = std::find_if(discovery->m_searches.begin(), discovery->m_searches.end(),
        [controlPoint](const Search &known) { return known.controlPoint.get() == controlPoint; });
    if (search != discovery->m_searches.end())
        discovery->add(search->kind, proxy);
}

void Discovery::withdrawn(GUPnPControlPoint *, GUPnPDeviceProxy *proxy, void *self)
{
    static_cast<Discovery *>(self)->remove(proxy, Device::Farewell::Unknown);
}

void Discovery::add(Upnp::Kind kind, GUPnPDeviceProxy *proxy)
{
    GUPnPDeviceInfo *info = GUPNP_DEVICE_INFO(proxy);
    const Upnp::DeviceKey key = DeviceDescription::read(info, kind).key;
    if (key.udn.isEmpty()) {
        qCWarning(lcKelvo) << "A device without a UDN at" << gupnp_device_info_get_location(info);
        return;
    }
    if (kind == Upnp::Kind::Renderer && !DeviceDescription::service(info, Upnp::Service::AVTransport)) {
        qCWarning(lcKelvo).noquote() << key.udn << "calls itself a renderer but has no AVTransport service";
        return;
    }
    const auto known = m_devices.find(key);
    if (known != m_devices.end())
        known->second->add(proxy);
    else
        m_devices.emplace(key, std::make_unique<Device>(key, proxy, m_listener));
    if (m_gone.erase(key) > 0)
        m_devices.at(key)->doubtDescription();
}

void Discovery::remove(GUPnPDeviceProxy *proxy, Device::Farewell farewell)
{
    for (const auto &[key, device] : m_devices) {
        if (device->has(proxy) && device->withdraw(proxy, farewell))
            sweepSoon();
    }
}

void Discovery::heard(
    GSSDPClient *context, const char *, unsigned, int, SoupMessageHeaders *headers, void *self)
{
    const auto header = [headers](const char *name) {
        return QByteArray(soup_message_headers_get_one(headers, name)).trimmed();
    };
    const QByteArray name = header("USN");
    const QByteArray news = header("NTS");
    const bool isFarewell = news == "ssdp:byebye";
    if (name.isEmpty())
        return;
    Announcement announcement;
    announcement.udn = QString::fromUtf8(name.left(name.indexOf("::"))).trimmed();
    announcement.location = isFarewell ? QString() : QString::fromUtf8(header("Location"));
    announcement.bootId = header("BOOTID.UPNP.ORG");
    announcement.configId = header("CONFIGID.UPNP.ORG");
    announcement.isUpdate = news == "ssdp:update";
    static_cast<Discovery *>(self)->hear(context, announcement);
}

void Discovery::hear(GSSDPClient *context, const Announcement &announcement)
{
    for (const Upnp::Kind kind : {Upnp::Kind::Renderer, Upnp::Kind::Source}) {
        const auto device = m_devices.find({kind, announcement.udn});
        if (device == m_devices.end())
            continue;
        if (announcement.location.isEmpty())
            device->second->hearFarewell();
        else if (device->second->isAt(announcement.location))
            device->second->hear(announcement);
        else
            device->second->hearElsewhere(context);
    }
}

// A device that has moved is taken back, and announced again in the same turn of the main loop or once its new description
// is there: it stays the same device.
void Discovery::sweepSoon()
{
    if (!m_sweep) {
        GSource *source = g_idle_source_new();
        g_source_set_priority(source, G_PRIORITY_DEFAULT);
        m_sweep = attach(source, swept, this);
    }
}

int Discovery::swept(void *self)
{
    static_cast<Discovery *>(self)->sweep();
    return G_SOURCE_REMOVE;
}

void Discovery::sweep()
{
    m_sweep.reset();
    for (const auto &[key, device] : m_devices)
        device->settleFarewell();
    forgetGone();
}

void Discovery::forgetGone()
{
    bool isOtherLeft = false;
    std::erase_if(m_devices, [this, &isOtherLeft](const auto &entry) {
        const Device &device = *entry.second;
        if (device.isGone())
            m_gone[entry.first] = monotonicTime();
        isOtherLeft = isOtherLeft || (device.isGone() && device.isContested());
        return device.isGone();
    });
    // The farewell of the one made GUPnP forget the other.
    if (isOtherLeft)
        repeatSearches(Repeat::Now);
}

/// Each by itself: the context manager's own rescan sends nothing in GUPnP 1.6.
void Discovery::repeatSearches(Repeat when)
{
    const qint64 time = monotonicTime();
    for (Search &search : m_searches) {
        if (when == Repeat::Now)
            search.repeatAt = time;
        if (time >= search.repeatAt
            && gssdp_resource_browser_rescan(GSSDP_RESOURCE_BROWSER(search.controlPoint.get())))
            search.repeatAt = time + repeatInterval;
    }
}

int Discovery::ticked(void *self)
{
    static_cast<Discovery *>(self)->tick();
    return G_SOURCE_CONTINUE;
}

void Discovery::tick()
{
    const qint64 time = monotonicTime();
    // GUPnP takes a port for one protocol and then finds it in use for the other, and does not try again.
    if (m_searches.empty() && time - m_opened >= m_patience) {
        m_patience = std::min(2 * m_patience, longestPatience);
        stopSearches();
        openManager();
    }
    repeatSearches(Repeat::WhenDue);
    for (const auto &[key, device] : m_devices)
        device->tick(time);
    forgetGone();
    std::erase_if(m_gone, [time](const auto &entry) { return time - entry.second >= afterlife; });
    std::erase_if(m_retired, [time](const Retired &retired) { return time - retired.since >= retirement; });
}

void Discovery::call(const Upnp::DeviceKey &key, const Upnp::Call &call, Upnp::AnswerHandler handler)
{
    const auto device = m_devices.find(key);
    if (device != m_devices.end()) {
        device->second->call(call, std::move(handler));
        return;
    }
    Upnp::Answer answer;
    answer.outcome = Upnp::Answer::Missing;
    answer.message = QStringLiteral("the device is gone");
    handler(answer);
}
