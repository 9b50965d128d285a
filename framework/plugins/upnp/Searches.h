// SPDX-License-Identifier: MIT
#pragma once

#include "Announcements.h"
#include "GupnpHandles.h"
#include "SsdpMessage.h"
#include "UpnpTypes.h"

#include <QStringList>

#include <functional>
#include <vector>

/// Searches for renderers and servers by all network interfaces, as they come and go: one control point for each interface and
/// kind. UPnP thread. Times in milliseconds of the clock of monotonicTime().
class Searches
{
public:
    /// Called on the UPnP thread.
    struct Listener
    {
        std::function<void(Upnp::Kind, GUPnPDeviceProxy *)> announced;
        std::function<void(GUPnPDeviceProxy *, Announcements::Reason)> withdrawn;
        /// All SSDP that is heard, on whatever interface.
        std::function<void(GSSDPClient *, const SsdpMessage &)> heard;
    };

    /// Only by these network interfaces; none named: by all that there are.
    Searches(const QStringList &interfaces, Listener listener);
    /// Runs the main loop's present work, so that what was cancelled hears of it.
    ~Searches();
    Q_DISABLE_COPY_MOVE(Searches)

    void start();
    /// Nothing is told any more.
    void stop();
    /// No interface could be opened for some time.
    bool isRestartDue(qint64 now) const;
    /// What was announced before is not withdrawn.
    void restart();

    /// What is sent may get lost: to be called every now and then.
    void repeatDue(qint64 now);
    void repeatNow(qint64 now);
    /// Lets go of what nothing waits for any more.
    void forgetRetired(qint64 now);

private:
    struct Search // one per interface and kind
    {
        GlibHandles::Object<GUPnPControlPoint> controlPoint;
        Upnp::Kind kind;
        qint64 repeatAt;
    };
    struct Retired
    {
        GlibHandles::Object<GUPnPControlPoint> controlPoint;
        qint64 since;
    };

    static void interfaceCame(GUPnPContextManager *manager, GUPnPContext *context, void *self);
    static void interfaceWent(GUPnPContextManager *manager, GUPnPContext *context, void *self);
    static void available(GUPnPControlPoint *controlPoint, GUPnPDeviceProxy *proxy, void *self);
    static void unavailable(GUPnPControlPoint *controlPoint, GUPnPDeviceProxy *proxy, void *self);
    static void received(GSSDPClient *context, const char *from, unsigned port, int type,
        SoupMessageHeaders *headers, void *self);

    void search(GUPnPContext *context, Upnp::Kind kind);
    void endSearches(GUPnPContext *context);
    void retire(Search search);

    const QStringList m_interfaces;
    const Listener m_listener;
    GlibHandles::Object<GUPnPContextManager> m_manager;
    std::vector<Search> m_searches;
    std::vector<Retired> m_retired; // oldest first
    qint64 m_startedAt = 0;
    qint64 m_patience; // until starting again
};
