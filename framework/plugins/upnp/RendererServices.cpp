// SPDX-License-Identifier: MIT
#include "RendererServices.h"

#include "DeviceDescription.h"
#include "EventOrder.h"
#include "KelvoMessageHandler.h"
#include "LastChange.h"
#include "ServerGuard.h"

#include <algorithm>
#include <limits>

namespace {
constexpr char eventVariable[] = "LastChange";

using WeakServices = std::weak_ptr<RendererServices *>;

std::optional<int> number(const GValue &value)
{
    GValue wide = G_VALUE_INIT;
    g_value_init(&wide, G_TYPE_INT64);
    std::optional<int> result;
    if (G_IS_VALUE(&value) && g_value_transform(&value, &wide))
        result = int(std::clamp<gint64>(g_value_get_int64(&wide), -100'000, 100'000));
    g_value_unset(&wide);
    return result;
}
} // namespace

RendererServices::RendererServices(
    GUPnPServiceProxy *transport, GUPnPServiceProxy *rendering, Listener listener)
    : m_transport(GlibHandles::share(transport))
    , m_rendering(GlibHandles::share(rendering))
    , m_listener(std::move(listener))
    , m_cancellable(g_cancellable_new())
    , m_self(std::make_shared<RendererServices *>(this))
{
    for (GUPnPServiceProxy *service : {transport, rendering}) {
        if (service && DeviceDescription::sendsEvents(service))
            subscribe(service);
        if (service && DeviceDescription::isDescribed(service))
            introspect(service);
    }
}

RendererServices::~RendererServices()
{
    g_cancellable_cancel(m_cancellable.get());
    for (GUPnPServiceProxy *service : {m_transport.get(), m_rendering.get()}) {
        if (service && DeviceDescription::sendsEvents(service))
            unsubscribe(service);
    }
}

void RendererServices::subscribe(GUPnPServiceProxy *service)
{
    gupnp_service_proxy_add_notify(service, eventVariable, G_TYPE_STRING, notified, this);
    g_signal_connect(service, "subscription-lost", G_CALLBACK(subscriptionLost), this);
    GUPnPContext *context = gupnp_service_info_get_context(GUPNP_SERVICE_INFO(service));
    // Events come to it, mostly over a new connection each.
    SoupServer *server = gupnp_context_get_server(context);
    EventOrder::keep(gupnp_context_get_session(context), server);
    ServerGuard::keep(context);
    gupnp_service_proxy_set_subscribed(service, TRUE);
}

void RendererServices::unsubscribe(GUPnPServiceProxy *service)
{
    gupnp_service_proxy_remove_notify(service, eventVariable, notified, this);
    g_signal_handlers_disconnect_by_data(service, this);
    gupnp_service_proxy_set_subscribed(service, FALSE);
}

void RendererServices::renewSubscriptions()
{
    m_isTransportHeard = false;
    m_isRenderingHeard = false;
    for (GUPnPServiceProxy *service : {m_transport.get(), m_rendering.get()}) {
        if (service && DeviceDescription::sendsEvents(service)) {
            gupnp_service_proxy_set_subscribed(service, FALSE);
            gupnp_service_proxy_set_subscribed(service, TRUE);
        }
    }
}

Upnp::Report RendererServices::unheard() const
{
    Upnp::Report report;
    report.isUnreadable = !m_isTransportHeard;
    if (!m_isRenderingHeard)
        report.values.insert("Volume", QString());
    return report;
}

void RendererServices::notified(GUPnPServiceProxy *service, const char *, GValue *value, void *data)
{
    auto *self = static_cast<RendererServices *>(data);
    (service == self->m_rendering.get() ? self->m_isRenderingHeard : self->m_isTransportHeard) = true;
    const char *xml = g_value_get_string(value);
    self->m_listener.reported(LastChange::parse(QByteArray(xml ? xml : "")));
}

void RendererServices::subscriptionLost(GUPnPServiceProxy *, const GError *reason, void *)
{
    // What happens meanwhile is learnt by asking; the next sign of life renews the subscription.
    qCDebug(lcKelvo) << "A renderer's events are lost:" << (reason ? reason->message : "");
}

void RendererServices::introspect(GUPnPServiceProxy *service)
{
    const auto finished = [](GObject *object, GAsyncResult *result, void *data) {
        const std::unique_ptr<WeakServices> weak(static_cast<WeakServices *>(data));
        GlibHandles::Error error;
        const GlibHandles::Object<GUPnPServiceIntrospection> introspection(
            gupnp_service_info_introspect_finish(GUPNP_SERVICE_INFO(object), result, error.out()));
        const auto self = weak->lock();
        if (!self)
            return;
        if (introspection)
            (*self)->learn(introspection.get());
        if (--(*self)->m_introspections == 0)
            (*self)->m_listener.limitsKnown((*self)->m_limits);
    };
    ++m_introspections;
    gupnp_service_info_introspect_async(
        GUPNP_SERVICE_INFO(service), m_cancellable.get(), finished, new WeakServices(m_self));
}

void RendererServices::learn(GUPnPServiceIntrospection *introspection)
{
    for (const GList *name = gupnp_service_introspection_list_action_names(introspection); name;
         name = name->next)
        m_limits.actions.insert(static_cast<const char *>(name->data));
    if (const auto *speed
        = gupnp_service_introspection_get_state_variable(introspection, "TransportPlaySpeed")) {
        for (const GList *value = speed->allowed_values; value; value = value->next)
            m_limits.speeds.append(QString::fromUtf8(static_cast<const char *>(value->data)));
    }
    const auto *volume = gupnp_service_introspection_get_state_variable(introspection, "Volume");
    if (volume && volume->is_numeric) {
        const int lowest = number(volume->minimum).value_or(m_limits.lowestVolume);
        const int highest = number(volume->maximum).value_or(m_limits.highestVolume);
        if (lowest < highest && highest < 100'000) {
            m_limits.lowestVolume = lowest;
            m_limits.highestVolume = highest;
        }
    }
}
