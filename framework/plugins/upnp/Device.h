// SPDX-License-Identifier: MIT
#pragma once

#include "ActionList.h"
#include "Announcements.h"
#include "Calls.h"
#include "CurrentDescription.h"
#include "DeviceHealth.h"
#include "FileHost.h"
#include "GupnpHandles.h"
#include "RendererServices.h"
#include "UpnpTypes.h"

#include <memory>

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

/// One device, known by its UDN: is asked now and then whether it is there, is shown while it answers, and does what it is
/// called to do. UPnP thread.
class Device
{
public:
    Device(const Upnp::DeviceKey &key, GUPnPDeviceProxy *proxy, const DeviceListener &listener);
    ~Device();
    Q_DISABLE_COPY_MOVE(Device)

    const Announcements &announcements() const { return m_announcements; }
    /// See Announcements.
    void add(GUPnPDeviceProxy *proxy);
    /// True when settle() is to be called once the present turn of the main loop is over.
    bool withdraw(GUPnPDeviceProxy *proxy, Announcements::Reason reason);
    void settle();
    /// A message of this UDN was heard on that interface, whatever GUPnP makes of it. True as for withdraw().
    bool hear(GSSDPClient *client, const SsdpMessage &message);
    /// What GUPnP read may be from an earlier life of the device.
    void doubtDescription() { m_description.doubt(); }

    void call(const Upnp::Call &call, Upnp::AnswerHandler handler);
    /// Called every now and then: polls, shows and hides.
    void tick(qint64 now);

private:
    GUPnPDeviceInfo *info() const { return GUPNP_DEVICE_INFO(m_announcements.active()); }
    void follow(Announcements::Change change);
    void getToKnow();
    void askWhetherThere();
    void readDescription(qint64 now);
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
    Announcements m_announcements;
    CurrentDescription m_description;
    DeviceHealth m_health;
    bool m_isShown = false;
    FileHost m_files;
    std::unique_ptr<RendererServices> m_services;
    std::unique_ptr<ActionList> m_search;
    std::unique_ptr<Calls> m_calls; // last, so that nothing is answered to a half destroyed device
};
