// SPDX-License-Identifier: MIT
#include "Announcements.h"

#include "DeviceDescription.h"

#include <algorithm>
#include <utility>

namespace {
// Milliseconds for a description to come from the place that a device has moved to.
constexpr qint64 movingTime = 3000;

auto isProxy(GUPnPDeviceProxy *proxy)
{
    return [proxy](const Announcements::Proxy &known) {
        return known.get() == proxy;
    };
}
} // namespace

Announcements::Announcements(GUPnPDeviceProxy *first)
    : m_active(GlibHandles::share(first))
{
}

bool Announcements::has(GUPnPDeviceProxy *proxy) const
{
    return m_active.get() == proxy || m_claim.get() == proxy
        || std::any_of(m_others.begin(), m_others.end(), isProxy(proxy));
}

bool Announcements::isAt(const QString &location) const
{
    return location == QString::fromUtf8(gupnp_device_info_get_location(info()));
}

void Announcements::take(Proxy proxy)
{
    m_active = std::move(proxy);
    m_isAnnounced = true;
    m_isWithdrawn = false;
    m_isByebyeHeard = false;
    m_isSilent = false;
}

bool Announcements::isHere(GUPnPDeviceProxy *proxy) const
{
    return DeviceDescription::authority(GUPNP_DEVICE_INFO(proxy)) == DeviceDescription::authority(info());
}

bool Announcements::isByThisInterface(GUPnPDeviceProxy *proxy) const
{
    return gupnp_device_info_get_context(GUPNP_DEVICE_INFO(proxy)) == gupnp_device_info_get_context(info());
}

/// Whether it is only GUPnP that had lost sight of what is announced now.
bool Announcements::isKept(GUPnPDeviceProxy *proxy, bool isShown) const
{
    const bool isSamePlace = isByThisInterface(proxy)
        && isAt(QString::fromUtf8(gupnp_device_info_get_location(GUPNP_DEVICE_INFO(proxy))));
    return isSamePlace && (m_isContested || (isShown && !m_isByebyeHeard));
}

Announcements::Change Announcements::add(GUPnPDeviceProxy *proxy, bool isShown)
{
    const bool isHere = this->isHere(proxy);
    if (m_isAnnounced && (isHere || !isByThisInterface(proxy))) {
        m_others.push_back(GlibHandles::share(proxy));
        return Change::None;
    }
    if (isKept(proxy, isShown)) {
        take(GlibHandles::share(proxy));
        return Change::Renewed;
    }
    if (isHere) {
        take(GlibHandles::share(proxy));
        return Change::Moved;
    }
    m_isWithdrawn = false;
    m_claim = GlibHandles::share(proxy);
    return askOnce();
}

/// Whether the one that is shown is there although somebody else is announced in its place, or nobody any more.
Announcements::Change Announcements::askOnce()
{
    return std::exchange(m_isAsked, true) ? Change::None : Change::Doubted;
}

Announcements::Change Announcements::answered(bool isAlive)
{
    m_isAsked = false;
    if (!isAlive && m_claim) {
        take(std::move(m_claim));
        return Change::Moved;
    }
    m_isSilent = m_isSilent || !isAlive;
    const bool isContestNew = isAlive && m_claim && !std::exchange(m_isContested, true);
    return isContestNew ? Change::Contested : Change::None;
}

Announcements::Change Announcements::withdraw(GUPnPDeviceProxy *proxy, Reason reason)
{
    const auto other = std::find_if(m_others.begin(), m_others.end(), isProxy(proxy));
    if (other != m_others.end()) {
        m_others.erase(other);
        return Change::None;
    }
    if (m_claim.get() == proxy)
        m_claim.reset();
    if (m_active.get() == proxy)
        m_isAnnounced = false;
    if (m_isAnnounced)
        return Change::None;
    if (!m_others.empty()) {
        Proxy next = std::move(m_others.front());
        m_others.erase(m_others.begin());
        take(std::move(next));
        return Change::Moved;
    }
    m_isWithdrawn = true;
    m_isByebyeHeard = m_isByebyeHeard || reason == Reason::Byebye;
    return Change::Withdrawn;
}

Announcements::Change Announcements::settle(qint64 now)
{
    if (!std::exchange(m_isWithdrawn, false))
        return Change::None;
    if (m_isContested || now < m_movingUntil)
        return askOnce();
    m_isGone = m_isGone || m_isByebyeHeard;
    return m_isByebyeHeard ? Change::None : Change::Expired;
}

void Announcements::hearAliveElsewhere(GSSDPClient *client, qint64 now)
{
    if (gupnp_device_info_get_context(info()) == reinterpret_cast<GUPnPContext *>(client))
        m_movingUntil = now + movingTime;
}

Announcements::Change Announcements::hearByebye()
{
    m_movingUntil = Never;
    m_isByebyeHeard = true;
    if (m_isAnnounced || m_claim)
        return Change::None;
    m_isWithdrawn = true;
    return Change::Withdrawn;
}

/// Also when nobody answers in its place, and nobody was announced in another.
bool Announcements::isGone(qint64 now) const
{
    return m_isGone || (m_isSilent && !m_isAnnounced && !m_claim && now >= m_movingUntil);
}
