// SPDX-License-Identifier: MIT
#pragma once

#include "GupnpHandles.h"
#include "UpnpTypes.h"

#include <functional>
#include <memory>

/// Subscribes to the events of a renderer's services, and reads from their descriptions (SCPD) what they can do. UPnP thread.
class RendererServices
{
public:
    struct Listener
    {
        std::function<void(const Upnp::Report &)> reported;
        std::function<void(const Upnp::RendererLimits &)> limitsKnown;
    };

    /// Either service may be null.
    RendererServices(GUPnPServiceProxy *transport, GUPnPServiceProxy *rendering, Listener listener);
    ~RendererServices();
    Q_DISABLE_COPY_MOVE(RendererServices)

    /// After the device was away: what it knew of subscribers may be lost.
    void renewSubscriptions();
    /// What is to be asked for because no event has told of it since the subscription: some accept it and send none.
    Upnp::Report unheard() const;

private:
    static void notified(GUPnPServiceProxy *service, const char *variable, GValue *value, void *self);
    static void subscriptionLost(GUPnPServiceProxy *service, const GError *reason, void *self);
    void subscribe(GUPnPServiceProxy *service);
    void unsubscribe(GUPnPServiceProxy *service);
    void introspect(GUPnPServiceProxy *service);
    void learn(GUPnPServiceIntrospection *introspection);

    const GlibHandles::Object<GUPnPServiceProxy> m_transport;
    const GlibHandles::Object<GUPnPServiceProxy> m_rendering;
    const Listener m_listener;
    const GlibHandles::Object<GCancellable> m_cancellable;
    const std::shared_ptr<RendererServices *> m_self; // what late callbacks find it by
    Upnp::RendererLimits m_limits;
    bool m_isTransportHeard = false;
    bool m_isRenderingHeard = false;
    int m_introspections = 0; // under way
};
