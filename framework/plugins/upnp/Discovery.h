// SPDX-License-Identifier: MIT
#pragma once

#include "Device.h"
#include "GlibHandles.h"
#include "UpnpTypes.h"

#include <QStringList>

#include <memory>
#include <unordered_map>
#include <vector>

/// Finds the media renderers and servers of the network and keeps watch over them. UPnP thread.
class Discovery
{
public:
    /// Only by these network interfaces; none named: by all that there are.
    Discovery(const QStringList &interfaces, DeviceListener listener);
    ~Discovery();
    Q_DISABLE_COPY_MOVE(Discovery)

    /// Takes leave of all devices, so that they send no more events. Nothing is found any more.
    void leave();
    /// The handler is called on this thread.
    void call(const Upnp::DeviceKey &key, const Upnp::Call &call, Upnp::AnswerHandler handler);

private:
    struct Search // one per interface and kind
    {
        GlibHandles::Object<GUPnPControlPoint> controlPoint;
        Upnp::Kind kind;
        qint64 repeatAt; // milliseconds
    };
    enum class Repeat { WhenDue, Now };
    struct KeyHash
    {
        size_t operator()(const Upnp::DeviceKey &key) const { return qHash(key); }
    };
    using Devices = std::unordered_map<Upnp::DeviceKey, std::unique_ptr<Device>, KeyHash>;

    static void interfaceCame(GUPnPContextManager *manager, GUPnPContext *context, void *self);
    static void interfaceWent(GUPnPContextManager *manager, GUPnPContext *context, void *self);
    static void announced(GUPnPControlPoint *controlPoint, GUPnPDeviceProxy *proxy, void *self);
    static void withdrawn(GUPnPControlPoint *controlPoint, GUPnPDeviceProxy *proxy, void *self);
    static void heard(GSSDPClient *context, const char *from, unsigned port, int type,
        SoupMessageHeaders *headers, void *self);
    static int ticked(void *self);
    static int swept(void *self);

    void startSearch(GUPnPContext *context, Upnp::Kind kind);
    void repeatSearches(Repeat when);
    void add(Upnp::Kind kind, GUPnPDeviceProxy *proxy);
    void remove(GUPnPDeviceProxy *proxy, Device::Farewell farewell);
    void hear(GSSDPClient *context, const Announcement &announcement);
    void forgetGone();
    void sweep();
    void tick();
    void sweepSoon();
    void openManager();
    void stopSearches();
    void retire(Search search);

    const QStringList m_interfaces;
    const DeviceListener m_listener;
    GlibHandles::Object<GUPnPContextManager> m_manager;
    struct Retired
    {
        GlibHandles::Object<GUPnPControlPoint> controlPoint;
        qint64 since;
    };

    std::vector<Search> m_searches;
    std::vector<Retired> m_retired; // oldest first
    Devices m_devices;
    std::unordered_map<Upnp::DeviceKey, qint64, KeyHash> m_gone; // since when
    qint64 m_opened = 0; // milliseconds
    qint64 m_patience = 0; // until opening again
    GlibHandles::Source m_ticks;
    GlibHandles::Source m_sweep; // pending, or null
};
