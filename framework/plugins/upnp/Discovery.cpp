// SPDX-License-Identifier: MIT
#include "Discovery.h"

#include "DeviceDescription.h"
#include "KelvoMessageHandler.h"
#include "MonotonicTime.h"

namespace {
constexpr guint tickInterval = 250; // milliseconds
// So long, in milliseconds, GUPnP may know the old description of a device that has gone: what still asks it has it.
constexpr qint64 afterlife = 30'000;

GlibHandles::Source attach(GSource *source, int (*callback)(void *), void *self)
{
    g_source_set_callback(source, callback, self, nullptr);
    g_source_attach(source, g_main_context_get_thread_default());
    return GlibHandles::Source(source);
}
} // namespace

Discovery::Discovery(const QStringList &interfaces, DeviceListener listener)
    : m_listener(std::move(listener))
    , m_searches(interfaces,
          {
              .announced = [this](Upnp::Kind kind, GUPnPDeviceProxy *proxy) { add(kind, proxy); },
              .withdrawn
              = [this](GUPnPDeviceProxy *proxy, Announcements::Reason reason) { withdraw(proxy, reason); },
              .heard = [this](GSSDPClient *client, const SsdpMessage &message) { hear(client, message); },
          })
    , m_ticks(attach(g_timeout_source_new(tickInterval), ticked, this))
{
    m_searches.start();
}

Discovery::~Discovery()
{
    leave();
}

void Discovery::leave()
{
    g_source_destroy(m_ticks.get());
    if (m_settling)
        g_source_destroy(m_settling.get());
    m_searches.stop();
    m_devices.clear();
}

void Discovery::add(Upnp::Kind kind, GUPnPDeviceProxy *proxy)
{
    GUPnPDeviceInfo *info = GUPNP_DEVICE_INFO(proxy);
    const Upnp::DeviceKey key = DeviceDescription::read(info, kind).key;
    if (key.udn.isEmpty()) {
        qCWarning(lcKelvo) << "A device without a UDN at" << gupnp_device_info_get_location(info);
        return;
    }
    if (kind == Upnp::Kind::Renderer && !DeviceDescription::service(info, Upnp::Service::AVTransport)) {
        qCWarning(lcKelvo).noquote() << key.udn << "calls itself a renderer but has no AVTransport service";
        return;
    }
    const auto known = m_devices.find(key);
    if (known != m_devices.end())
        known->second->add(proxy);
    else
        m_devices.emplace(key, std::make_unique<Device>(key, proxy, m_listener));
    if (m_gone.erase(key) > 0)
        m_devices.at(key)->doubtDescription();
}

void Discovery::withdraw(GUPnPDeviceProxy *proxy, Announcements::Reason reason)
{
    for (const auto &[key, device] : m_devices) {
        if (device->announcements().has(proxy) && device->withdraw(proxy, reason))
            settleSoon();
    }
}

void Discovery::hear(GSSDPClient *client, const SsdpMessage &message)
{
    for (const Upnp::Kind kind : {Upnp::Kind::Renderer, Upnp::Kind::Source}) {
        const auto device = m_devices.find({kind, message.udn});
        if (device != m_devices.end() && device->second->hear(client, message))
            settleSoon();
    }
}

// A device that has moved is withdrawn, and announced again in the same turn of the main loop or once its new description is
// there: it stays the same device.
void Discovery::settleSoon()
{
    if (!m_settling) {
        GSource *source = g_idle_source_new();
        g_source_set_priority(source, G_PRIORITY_DEFAULT);
        m_settling = attach(source, settled, this);
    }
}

int Discovery::settled(void *self)
{
    static_cast<Discovery *>(self)->settle();
    return G_SOURCE_REMOVE;
}

void Discovery::settle()
{
    m_settling.reset();
    for (const auto &[key, device] : m_devices)
        device->settle();
    forgetGone();
}

void Discovery::forgetGone()
{
    const qint64 time = monotonicTime();
    bool isOtherLeft = false;
    std::erase_if(m_devices, [this, time, &isOtherLeft](const auto &entry) {
        const Announcements &announcements = entry.second->announcements();
        const bool isGone = announcements.isGone(time);
        if (isGone)
            m_gone[entry.first] = time;
        isOtherLeft = isOtherLeft || (isGone && announcements.isContested());
        return isGone;
    });
    // The byebye of the one made GUPnP forget the other.
    if (isOtherLeft)
        m_searches.repeatNow(time);
}

int Discovery::ticked(void *self)
{
    static_cast<Discovery *>(self)->tick();
    return G_SOURCE_CONTINUE;
}

void Discovery::tick()
{
    const qint64 time = monotonicTime();
    if (m_searches.isRestartDue(time)) {
        m_devices.clear();
        m_searches.restart();
    }
    m_searches.repeatDue(time);
    for (const auto &[key, device] : m_devices)
        device->tick(time);
    forgetGone();
    std::erase_if(m_gone, [time](const auto &entry) { return time - entry.second >= afterlife; });
    m_searches.forgetRetired(time);
}

void Discovery::call(const Upnp::DeviceKey &key, const Upnp::Call &call, Upnp::AnswerHandler handler)
{
    const auto device = m_devices.find(key);
    if (device != m_devices.end()) {
        device->second->call(call, std::move(handler));
        return;
    }
    Upnp::Answer answer;
    answer.outcome = Upnp::Answer::Missing;
    answer.message = QStringLiteral("the device is gone");
    handler(answer);
}
