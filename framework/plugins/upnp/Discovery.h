// SPDX-License-Identifier: MIT
#pragma once

#include "Device.h"
#include "GupnpHandles.h"
#include "Searches.h"
#include "UpnpTypes.h"

#include <memory>
#include <unordered_map>

/// The media renderers and servers that were found on the network, each for as long as it is there. UPnP thread.
class Discovery
{
public:
    /// Only by these network interfaces; none named: by all that there are.
    Discovery(const QStringList &interfaces, DeviceListener listener);
    ~Discovery();
    Q_DISABLE_COPY_MOVE(Discovery)

    /// Unsubscribes from all devices, so that they send no more events. Nothing is found any more.
    void leave();
    /// The handler is called on this thread.
    void call(const Upnp::DeviceKey &key, const Upnp::Call &call, Upnp::AnswerHandler handler);

private:
    struct KeyHash
    {
        size_t operator()(const Upnp::DeviceKey &key) const { return qHash(key); }
    };
    template <typename T> using ByKey = std::unordered_map<Upnp::DeviceKey, T, KeyHash>;

    static int ticked(void *self);
    static int settled(void *self);

    void add(Upnp::Kind kind, GUPnPDeviceProxy *proxy);
    void withdraw(GUPnPDeviceProxy *proxy, Announcements::Reason reason);
    void hear(GSSDPClient *client, const SsdpMessage &message);
    void tick();
    void settleSoon();
    void settle();
    void forgetGone();

    const DeviceListener m_listener;
    Searches m_searches;
    ByKey<std::unique_ptr<Device>> m_devices;
    ByKey<qint64> m_gone; // since when, in milliseconds
    GlibHandles::Source m_ticks;
    GlibHandles::Source m_settling; // pending, or null
};
