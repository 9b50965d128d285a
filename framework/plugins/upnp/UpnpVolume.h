// SPDX-License-Identifier: MIT
#pragma once

#include "RendererRequests.h"
#include "UpnpTypes.h"

#include <optional>

/// Volume and Mute of a renderer (RenderingControl). What is wanted is kept until it can be sent; of what was set and said
/// only as much as is needed for devices that round what they are set to, or lose their volume by muting. Whether what is
/// reported is news, is judged above.
class UpnpVolume : public QObject
{
    Q_OBJECT
public:
    /// @param requests  lives longer than this
    explicit UpnpVolume(RendererRequests *requests);

    void setLimits(const Upnp::RendererLimits &limits);
    /// 0..99; only the newest is set.
    void set(int volume) { m_wanted = volume; }
    /// It is to be asked for.
    void doubt() { m_isDoubted = true; }
    /// State variables of an event.
    void hear(const QHash<QByteArray, QString> &values);

    /// Sends what is wanted. False: nothing is.
    bool sendCommand();
    /// Asks when it is to be asked. False: it need not be.
    bool sendQuestion();

Q_SIGNALS:
    /// 0..99
    void reported(int volume);

private:
    /// A device volume as it was set.
    void hearVolume(int deviceVolume);
    void sendVolume();
    void unmute();

    RendererRequests *const m_requests;
    int m_lowest = 0;
    int m_highest = 100;
    std::optional<int> m_wanted;
    bool m_isDoubted = true;
    int m_volume = -1; ///< reported last: what is to come back after muting
    std::optional<int> m_setDeviceVolume; ///< what the device was told last, unless it has another one now
    bool m_isMuted = false;
    int m_volumeBeforeMute = -1; ///< below 0: nothing is to come back
};
