// SPDX-License-Identifier: MIT
#include "UpnpVolume.h"

#include "UpnpText.h"

#include <utility>

using Upnp::Answer;
using Upnp::Service;

namespace {
QPair<QByteArray, QString> channel()
{
    return {"Channel", QStringLiteral("Master")};
}
} // namespace

UpnpVolume::UpnpVolume(RendererRequests *requests)
    : m_requests(requests)
{
}

void UpnpVolume::setLimits(const Upnp::RendererLimits &limits)
{
    m_lowest = limits.lowestVolume;
    m_highest = limits.highestVolume;
}

void UpnpVolume::hear(const QHash<QByteArray, QString> &values)
{
    const QString mute = values.value("Mute").toLower();
    const bool isMuted = mute == QLatin1String("1") || mute == QLatin1String("true");
    if (!mute.isEmpty() && isMuted != m_isMuted) {
        m_isMuted = isMuted;
        if (isMuted)
            m_volumeBeforeMute = m_volume;
        else
            m_isDoubted = true;
    }
    // Which of several channels it is about does not come with it.
    if (values.contains("Volume"))
        m_isDoubted = true;
}

bool UpnpVolume::sendCommand()
{
    if (!m_wanted)
        return false;
    if (m_isMuted && *m_wanted > 0)
        unmute();
    else
        sendVolume();
    return true;
}

void UpnpVolume::sendVolume()
{
    const int volume = *std::exchange(m_wanted, std::nullopt);
    const int deviceVolume = UpnpText::toDeviceVolume(volume, m_lowest, m_highest);
    m_requests->send({.service = Service::RenderingControl,
                         .action = "SetVolume",
                         .in = {channel(), {"DesiredVolume", QString::number(deviceVolume)}},
                         .out = {}},
        [this, volume, deviceVolume](const Answer &answer) {
            if (answer.outcome != Answer::Done) {
                m_requests->trouble("SetVolume", answer);
                return;
            }
            m_setDeviceVolume = deviceVolume;
            m_volume = volume;
            Q_EMIT reported(volume);
        });
}

void UpnpVolume::unmute()
{
    m_isMuted = false;
    // Some come back with volume 0; here it is set next anyway.
    m_volumeBeforeMute = -1;
    m_requests->send({.service = Service::RenderingControl,
                         .action = "SetMute",
                         .in = {channel(), {"DesiredMute", QStringLiteral("0")}},
                         .out = {}},
        [this](const Answer &answer) {
            if (answer.outcome != Answer::Done)
                m_requests->trouble("SetMute", answer);
        });
}

bool UpnpVolume::sendQuestion()
{
    if (!std::exchange(m_isDoubted, false))
        return false;
    m_requests->send({.service = Service::RenderingControl,
                         .action = "GetVolume",
                         .in = {channel()},
                         .out = {"CurrentVolume"}},
        [this](const Answer &answer) {
            bool isNumber = false;
            const int volume = answer.values.value("CurrentVolume").toInt(&isNumber);
            if (isNumber)
                hearVolume(volume);
        });
    return true;
}

void UpnpVolume::hearVolume(int deviceVolume)
{
    if (m_wanted || m_isMuted)
        return;
    const int remembered = std::exchange(m_volumeBeforeMute, -1);
    if (deviceVolume <= m_lowest && remembered > 0) {
        // Muting cost it its volume.
        m_wanted = remembered;
        return;
    }
    // Devices round; a step off is what was set. With few steps each one counts.
    const int tolerance = m_highest - m_lowest >= 50 ? 1 : 0;
    if (m_setDeviceVolume && std::abs(deviceVolume - *m_setDeviceVolume) <= tolerance)
        return;
    m_setDeviceVolume.reset();
    m_volume = UpnpText::fromDeviceVolume(deviceVolume, m_lowest, m_highest);
    Q_EMIT reported(m_volume);
}
