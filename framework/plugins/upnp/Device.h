// SPDX-License-Identifier: MIT
#pragma once

#include "ActionList.h"
#include "Calls.h"
#include "DeviceHealth.h"
#include "FileHost.h"
#include "GlibHandles.h"
#include "RendererServices.h"
#include "UpnpTypes.h"

#include <memory>
#include <vector>

/// What the UPnP thread tells of its devices. Called on that thread.
struct DeviceListener
{
    /// From now on it is worth showing.
    std::function<void(const Upnp::Description &)> shown;
    std::function<void(const Upnp::DeviceKey &)> hidden;
    /// A shown device describes itself differently.
    std::function<void(const Upnp::Description &)> described;
    std::function<void(const Upnp::DeviceKey &, const Upnp::Report &)> reported;
    std::function<void(const Upnp::DeviceKey &, const Upnp::RendererLimits &)> limitsKnown;
    std::function<void(const Upnp::DeviceKey &, bool)> searchKnown;
};

/// One device, known by its UDN, and the one or more announcements that it is reached by. UPnP thread.
class Device
{
public:
    Device(const Upnp::DeviceKey &key, GUPnPDeviceProxy *proxy, const DeviceListener &listener);
    ~Device();
    Q_DISABLE_COPY_MOVE(Device)

    /// The same UDN was announced again: by another interface, from another place, with another description, or by
    /// another device that claims to be this one. The first that answers stays.
    void add(GUPnPDeviceProxy *proxy);
    /// An announcement was taken back. True when none is left once the present turn of the main loop is over,
    /// unless add() is called until then.
    bool withdraw(GUPnPDeviceProxy *proxy);
    bool isWithdrawn() const { return m_isWithdrawn; }
    bool has(GUPnPDeviceProxy *proxy) const;

    void call(const Upnp::Call &call, Upnp::AnswerHandler handler);
    /// Called every now and then: polls, shows and hides.
    void tick(qint64 now);

private:
    using Proxy = GlibHandles::Object<GUPnPDeviceProxy>;

    GUPnPDeviceInfo *info() const { return GUPNP_DEVICE_INFO(m_active.get()); }
    void adopt(Proxy proxy);
    void checkClaim();
    void settleClaim(bool isFirstAlive);
    void connectServices();
    void askSearch();
    void reportSearch(const Upnp::Answer &capabilities);
    void poll();
    void polled(const Upnp::Answer &answer);
    void heard(const Upnp::Answer &answer);
    void report(const Upnp::Report &report);
    void showOrHide(qint64 now);
    Upnp::Call pollCall() const;
    bool hasService(Upnp::Service service) const;

    const Upnp::DeviceKey m_key;
    const DeviceListener &m_listener;
    Proxy m_active;
    std::vector<Proxy> m_others; // the same device by other interfaces
    Proxy m_claim; // announced as this device, from another place, in place of the active one
    bool m_isClaimOpen = false;
    bool m_isWithdrawn = false;
    bool m_isWarned = false;
    bool m_isShown = false;
    int m_underWay = 0;
    QString m_lastState;
    Upnp::Description m_description;
    DeviceHealth m_health;
    FileHost m_files;
    std::unique_ptr<RendererServices> m_services;
    std::unique_ptr<ActionList> m_search;
    std::unique_ptr<Calls> m_calls; // last, so that nothing is answered to a half destroyed device
};
