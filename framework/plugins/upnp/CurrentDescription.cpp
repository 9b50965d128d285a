// SPDX-License-Identifier: MIT
#include "CurrentDescription.h"

#include "DeviceDescription.h"
#include "MonotonicTime.h"

namespace {
constexpr qint64 interval = 1000; // milliseconds

bool isOther(const QByteArray &id, const QByteArray &before)
{
    return !id.isEmpty() && id != before;
}
} // namespace

CurrentDescription::CurrentDescription(Upnp::Kind kind, Handler changed)
    : m_kind(kind)
    , m_changed(std::move(changed))
{
}

void CurrentDescription::reset(GUPnPDeviceInfo *device, qint64 now)
{
    m_reader.reset();
    m_bootId.clear();
    m_configId.clear();
    describe(DeviceDescription::read(device, m_kind), now);
}

void CurrentDescription::hear(const SsdpMessage &message)
{
    const bool isRestarted = isOther(message.bootId, m_bootId);
    if (isRestarted || isOther(message.configId, m_configId) || message.type == SsdpMessage::Update)
        m_isOld = true;
    // What it is heard to say at first is nothing new.
    m_isRestarted = m_isRestarted || (isRestarted && !m_bootId.isEmpty());
    if (!message.bootId.isEmpty())
        m_bootId = message.bootId;
    if (!message.configId.isEmpty())
        m_configId = message.configId;
}

bool CurrentDescription::isReadDue(qint64 now) const
{
    return m_isOld && !m_reader && now - m_readAt >= interval;
}

void CurrentDescription::read(GUPnPDeviceInfo *device, qint64 now)
{
    m_isOld = false;
    m_readAt = now;
    m_reader = std::make_unique<DescriptionReader>(
        device, m_kind, [this](const std::optional<Upnp::Description> &description) {
            m_reader.reset();
            if (description)
                describe(*description, monotonicTime());
        });
}

void CurrentDescription::describe(Upnp::Description description, qint64 now)
{
    const bool isOtherNow = description.name != m_value.name || description.properties != m_value.properties;
    m_value = std::move(description);
    m_isNew = m_isNew || (isOtherNow && m_isFollowed);
    tell(now);
}

void CurrentDescription::tell(qint64 now)
{
    if (!m_isNew || now - m_toldAt < interval)
        return;
    m_isNew = false;
    m_toldAt = now;
    if (m_isFollowed)
        m_changed(m_value);
}
