// SPDX-License-Identifier: MIT
#pragma once

#include "GupnpHandles.h"

#include <vector>

/// The announcements (in GUPnP's words: the proxies) that a device, known by its UDN, is reached by, and whether it has gone.
/// UPnP thread. Times in milliseconds of the clock of monotonicTime().
///
/// What was announced may run out of its max-age or be dropped by GUPnP although the device is there, and two devices may
/// have one UDN. Where an announcement does not tell, the device has to be asked: the first that answers stays.
class Announcements
{
public:
    using Proxy = GlibHandles::Object<GUPnPDeviceProxy>;

    /// What follows for the device.
    enum class Change {
        None, ///< it is reached as before
        Moved, ///< it is reached by another proxy, and is to be got to know anew
        Renewed, ///< it is reached by another proxy at the same place: what was agreed with it goes on
        Doubted, ///< it is to be asked whether it is there, for answered()
        Withdrawn, ///< no announcement is left: settle() once the present turn of the main loop is over
        Contested, ///< another device claims to be this one
        Expired, ///< none is left, and no byebye came: it stays for as long as it answers
    };
    /// Why GUPnP has dropped a proxy.
    enum class Reason {
        Byebye, ///< of the device, or its network has gone
        Unknown, ///< a byebye or the max-age, or no answer to a search
    };

    explicit Announcements(GUPnPDeviceProxy *first);

    GUPnPDeviceProxy *active() const { return m_active.get(); }
    bool has(GUPnPDeviceProxy *proxy) const;
    /// Whether the description is at that address.
    bool isAt(const QString &location) const;

    /// The same UDN was announced again: by another interface, from another place, with another description, or by
    /// another device that claims to be this one.
    Change add(GUPnPDeviceProxy *proxy, bool isShown);
    /// GUPnP has dropped a proxy.
    Change withdraw(GUPnPDeviceProxy *proxy, Reason reason);
    /// When there is still no announcement, and a byebye, the device is gone. But where two devices had this UDN the byebye
    /// may be the other one's, and one from another place may follow.
    Change settle(qint64 now);
    /// After Change::Doubted: whether who is reached has answered.
    Change answered(bool isAlive);
    /// It will not be asked any more: without an announcement it is gone.
    void giveUp() { m_isGone = m_isGone || !m_isAnnounced; }

    /// The device sent an alive from where it is, whatever GUPnP makes of that.
    void hearAlive() { m_isByebyeHeard = false; }
    /// The device sent an alive from another place, on that interface. GUPnP drops the proxy at once, and the other one
    /// comes when it has read the description there.
    void hearAliveElsewhere(GSSDPClient *client, qint64 now);
    /// Withdrawn when GUPnP, which had lost sight of the device already, will not tell of it.
    Change hearByebye();

    bool isGone(qint64 now) const;
    /// Two devices were announced with this UDN.
    bool isContested() const { return m_isContested; }

private:
    GUPnPDeviceInfo *info() const { return GUPNP_DEVICE_INFO(m_active.get()); }
    void take(Proxy proxy);
    Change askOnce();
    bool isHere(GUPnPDeviceProxy *proxy) const;
    bool isByThisInterface(GUPnPDeviceProxy *proxy) const;
    bool isKept(GUPnPDeviceProxy *proxy, bool isShown) const;

    static constexpr qint64 Never = -1'000'000;

    Proxy m_active;
    std::vector<Proxy> m_others; // the same device by other interfaces
    Proxy m_claim; // announced as this device, from another place, in place of the active one
    bool m_isAnnounced = true; // the active one, and it was not taken back
    bool m_isWithdrawn = false; // and not settled
    bool m_isByebyeHeard = false;
    bool m_isAsked = false; // whether it is still there
    bool m_isSilent = false; // when it was asked
    bool m_isContested = false;
    bool m_isGone = false;
    qint64 m_movingUntil = Never;
};
