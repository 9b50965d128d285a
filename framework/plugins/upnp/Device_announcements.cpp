// SPDX-License-Identifier: MIT
#include "Device.h"
#include "DeviceDescription.h"
#include "KelvoMessageHandler.h"
#include "MonotonicTime.h"

#include <algorithm>
#include <utility>

using Upnp::Answer;
using Upnp::Call;
using Upnp::Kind;
using Upnp::Service;

namespace {
// Milliseconds. What a device tells of itself is read and told on at most this often, however often it changes.
constexpr qint64 descriptionInterval = 1000;
constexpr int askTimeout = 1500;
// For a description to come from the place that a device has moved to.
constexpr qint64 movingTime = 3000;
} // namespace

void Device::adopt(Proxy proxy)
{
    const bool isFirst = !m_active;
    m_services.reset();
    m_search.reset();
    m_reader.reset();
    m_heard = {};
    m_active = std::move(proxy);
    m_isAnnounced = true;
    m_isWithdrawn = false;
    m_isFarewellSaid = false;
    m_isSilent = false;
    // GUPnP may have kept what it read when the device was there before.
    m_isDescriptionOld = !isFirst;
    describe(DeviceDescription::read(info(), m_key.kind));
    m_health = DeviceHealth(monotonicTime());
    if (m_isShown)
        connectServices();
}

/// The same device at the same address: what was agreed with it goes on.
void Device::keep(Proxy proxy)
{
    m_active = std::move(proxy);
    m_isAnnounced = true;
    m_isWithdrawn = false;
    m_isFarewellSaid = false;
    m_isSilent = false;
    m_isDescriptionOld = true;
}

bool Device::isHere(GUPnPDeviceProxy *proxy) const
{
    return DeviceDescription::authority(GUPNP_DEVICE_INFO(proxy)) == DeviceDescription::authority(info());
}

/// Whether it is only GUPnP that had lost sight of what is announced now.
bool Device::isKept(GUPnPDeviceProxy *proxy) const
{
    GUPnPDeviceInfo *other = GUPNP_DEVICE_INFO(proxy);
    const bool isSamePlace = gupnp_device_info_get_context(other) == gupnp_device_info_get_context(info())
        && qstrcmp(gupnp_device_info_get_location(other), gupnp_device_info_get_location(info())) == 0;
    return isSamePlace && (m_isContested || (m_isShown && !m_isFarewellSaid));
}

void Device::add(GUPnPDeviceProxy *proxy)
{
    GUPnPDeviceInfo *other = GUPNP_DEVICE_INFO(proxy);
    const bool isHere = this->isHere(proxy);
    const bool byOtherInterface
        = gupnp_device_info_get_context(other) != gupnp_device_info_get_context(info());
    if (m_isAnnounced && (isHere || byOtherInterface)) {
        m_others.push_back(GlibHandles::share(proxy));
    } else if (isKept(proxy)) {
        keep(GlibHandles::share(proxy));
    } else if (isHere) {
        adopt(GlibHandles::share(proxy));
    } else {
        m_isWithdrawn = false;
        m_claim = GlibHandles::share(proxy);
        askFirst();
    }
}

/// Whether the one that is shown is there although somebody else is announced in its place, or nobody any more.
void Device::askFirst()
{
    if (std::exchange(m_isAsked, true))
        return;
    if (m_key.kind == Kind::Source && !hasService(Service::ContentDirectory)) {
        settleClaim(false);
        return;
    }
    Call call = pollCall();
    call.timeout = askTimeout;
    this->call(call, [this](const Answer &answer) { settleClaim(answer.isFromDevice()); });
}

void Device::settleClaim(bool isFirstAlive)
{
    m_isAsked = false;
    if (!isFirstAlive && m_claim) {
        adopt(std::move(m_claim));
    } else if (!isFirstAlive) {
        m_isSilent = true;
        forgetSilent(monotonicTime());
    } else if (m_claim && !std::exchange(m_isContested, true)) {
        qCWarning(lcKelvo).noquote() << "Two devices call themselves" << m_key.udn << "- only the first,"
                                     << m_description.name + ", is shown";
    }
}

bool Device::withdraw(GUPnPDeviceProxy *proxy, Farewell farewell)
{
    const auto other = std::find_if(
        m_others.begin(), m_others.end(), [proxy](const Proxy &known) { return known.get() == proxy; });
    if (other != m_others.end()) {
        m_others.erase(other);
        return false;
    }
    if (m_claim.get() == proxy)
        m_claim.reset();
    if (m_active.get() == proxy)
        m_isAnnounced = false;
    if (m_isAnnounced)
        return false;
    if (!m_others.empty()) {
        Proxy next = std::move(m_others.front());
        m_others.erase(m_others.begin());
        adopt(std::move(next));
        return false;
    }
    m_isWithdrawn = true;
    m_isFarewellSaid = m_isFarewellSaid || farewell == Farewell::Said;
    return true;
}

void Device::hearFarewell()
{
    m_movingUntil = never;
    m_isFarewellSaid = true;
}

void Device::settleFarewell()
{
    if (!std::exchange(m_isWithdrawn, false))
        return;
    const qint64 time = monotonicTime();
    if (m_isContested || time < m_movingUntil)
        askFirst();
    else if (m_isFarewellSaid)
        m_isGone = true;
    else
        m_health.doubt(time);
}

/// Nobody answers in its place, and nobody was announced in another.
void Device::forgetSilent(qint64 now)
{
    m_isGone = m_isGone || (m_isSilent && !m_isAnnounced && !m_claim && now >= m_movingUntil);
}

void Device::hearElsewhere(GSSDPClient *client)
{
    if (gupnp_device_info_get_context(info()) == reinterpret_cast<GUPnPContext *>(client))
        m_movingUntil = monotonicTime() + movingTime;
}

bool Device::has(GUPnPDeviceProxy *proxy) const
{
    return m_active.get() == proxy || m_claim.get() == proxy
        || std::any_of(
            m_others.begin(), m_others.end(), [proxy](const Proxy &known) { return known.get() == proxy; });
}

bool Device::isAt(const QString &location) const
{
    return location == QString::fromUtf8(gupnp_device_info_get_location(info()));
}

void Device::hear(const Announcement &announcement)
{
    m_isFarewellSaid = false;
    const auto isOther = [](const QByteArray &id, const QByteArray &before) {
        return !id.isEmpty() && id != before;
    };
    const bool isRestarted = isOther(announcement.bootId, m_heard.bootId);
    if (isRestarted || isOther(announcement.configId, m_heard.configId) || announcement.isUpdate)
        m_isDescriptionOld = true;
    // What it is heard to say at first is nothing new.
    m_isRestarted = m_isRestarted || (isRestarted && !m_heard.bootId.isEmpty());
    if (!announcement.bootId.isEmpty())
        m_heard.bootId = announcement.bootId;
    if (!announcement.configId.isEmpty())
        m_heard.configId = announcement.configId;
}

void Device::readAgain(qint64 now)
{
    if (!m_isDescriptionOld || m_reader || now - m_readAt < descriptionInterval)
        return;
    m_isDescriptionOld = false;
    m_readAt = now;
    // A device forgets at its start who wants to hear of it.
    if (std::exchange(m_isRestarted, false) && m_services)
        m_services->subscribeAgain();
    m_reader = std::make_unique<DescriptionReader>(
        info(), m_key.kind, [this](const std::optional<Upnp::Description> &description) {
            m_reader.reset();
            if (description)
                describe(*description);
        });
}

void Device::describe(Upnp::Description description)
{
    const bool isNew
        = description.name != m_description.name || description.properties != m_description.properties;
    m_description = std::move(description);
    m_isDescriptionNew = m_isDescriptionNew || (isNew && m_isShown);
    tellDescription(monotonicTime());
}

void Device::tellDescription(qint64 now)
{
    if (!m_isDescriptionNew || now - m_describedAt < descriptionInterval)
        return;
    m_isDescriptionNew = false;
    m_describedAt = now;
    if (m_isShown)
        m_listener.described(m_description);
}
