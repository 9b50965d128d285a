// SPDX-License-Identifier: MIT
#pragma once

#include "ActionList.h"
#include "Calls.h"
#include "DescriptionReader.h"
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

/// What a device sends to all, again and again. Empty texts: not said.
struct Announcement
{
    QString udn = {};
    QString location = {}; ///< of its description; empty: a farewell
    QByteArray bootId = {}; ///< another one after each start
    QByteArray configId = {}; ///< another one with each change of the description
    bool isUpdate = false; ///< tells of a coming change
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
    /// What GUPnP read may be from an earlier life of the device.
    void doubtDescription() { m_isDescriptionOld = true; }
    enum class Farewell { Said, Unknown };
    /// An announcement was taken back, by the device or its network, or by GUPnP, which heard nothing of it for too long.
    /// True when none is left: settleFarewell() is to be called once the present turn of the main loop is over.
    bool withdraw(GUPnPDeviceProxy *proxy, Farewell farewell);
    /// When there is still no announcement, and a farewell, the device is gone. But where two devices had this UDN the
    /// farewell may be the other one's: then it is asked. Without a farewell it stays for as long as it answers.
    void settleFarewell();
    bool isGone() const { return m_isGone; }
    /// Two devices were announced with this UDN.
    bool isContested() const { return m_isContested; }
    bool has(GUPnPDeviceProxy *proxy) const;
    /// Whether its description is at that address.
    bool isAt(const QString &location) const;
    /// An announcement from there was heard, whatever GUPnP makes of that.
    void hear(const Announcement &announcement);
    /// An announcement from another place was heard on that interface. GUPnP takes the one from here back at once, and
    /// the other comes when it has read the description there.
    void hearElsewhere(GSSDPClient *client);
    /// A farewell was heard.
    void hearFarewell();

    void call(const Upnp::Call &call, Upnp::AnswerHandler handler);
    /// Called every now and then: polls, shows and hides.
    void tick(qint64 now);

private:
    using Proxy = GlibHandles::Object<GUPnPDeviceProxy>;

    GUPnPDeviceInfo *info() const { return GUPNP_DEVICE_INFO(m_active.get()); }
    // What is announced, in Device_announcements.cpp
    void adopt(Proxy proxy);
    void keep(Proxy proxy);
    bool isKept(GUPnPDeviceProxy *proxy) const;
    bool isHere(GUPnPDeviceProxy *proxy) const;
    void askFirst();
    void forgetSilent(qint64 now);
    void settleClaim(bool isFirstAlive);
    void describe(Upnp::Description description);
    void tellDescription(qint64 now);
    void readAgain(qint64 now);

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

    static constexpr qint64 never = -1'000'000;

    const Upnp::DeviceKey m_key;
    const DeviceListener &m_listener;
    Proxy m_active;
    std::vector<Proxy> m_others; // the same device by other interfaces
    Proxy m_claim; // announced as this device, from another place, in place of the active one
    bool m_isAnnounced = true; // the active one, and it was not taken back
    bool m_isAsked = false; // whether it is still there
    bool m_isWithdrawn = false;
    bool m_isFarewellSaid = false;
    bool m_isContested = false;
    bool m_isSilent = false; // when it was asked
    bool m_isGone = false;
    bool m_isShown = false;
    int m_underWay = 0;
    Upnp::Description m_description;
    bool m_isDescriptionNew = false; // and not told yet
    bool m_isDescriptionOld = false; // and to be read again
    bool m_isRestarted = false;
    qint64 m_describedAt = never; // milliseconds
    qint64 m_readAt = never;
    qint64 m_movingUntil = never;
    Announcement m_heard; // last
    std::unique_ptr<DescriptionReader> m_reader;
    DeviceHealth m_health;
    FileHost m_files;
    std::unique_ptr<RendererServices> m_services;
    std::unique_ptr<ActionList> m_search;
    std::unique_ptr<Calls> m_calls; // last, so that nothing is answered to a half destroyed device
};
