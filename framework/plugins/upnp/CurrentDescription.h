// SPDX-License-Identifier: MIT
#pragma once

#include "DescriptionReader.h"
#include "SsdpMessage.h"
#include "UpnpTypes.h"

#include <functional>
#include <memory>

/// What a device tells of itself, read again when its announcements say that it has changed, and told on: both once a second
/// at most, however often it changes. UPnP thread. Times in milliseconds of the clock of monotonicTime().
class CurrentDescription
{
public:
    using Handler = std::function<void(const Upnp::Description &)>;

    /// The handler is told of changes, while they are followed.
    CurrentDescription(Upnp::Kind kind, Handler changed);

    const Upnp::Description &value() const { return m_value; }
    /// What GUPnP has read of a device that is to be got to know (anew).
    void reset(GUPnPDeviceInfo *device, qint64 now);
    /// What GUPnP has read may be from an earlier life of the device.
    void doubt() { m_isOld = true; }
    /// Whether somebody wants to know of changes.
    void follow(bool isFollowed) { m_isFollowed = isFollowed; }
    /// An alive or an update.
    void hear(const SsdpMessage &message);

    bool isReadDue(qint64 now) const;
    /// The device is where it was.
    void read(GUPnPDeviceInfo *device, qint64 now);
    /// Whether the device was heard to have restarted since this was asked last.
    bool takeRestart() { return std::exchange(m_isRestarted, false); }
    /// Tells what could not be told yet.
    void tell(qint64 now);

private:
    void describe(Upnp::Description description, qint64 now);

    static constexpr qint64 Never = -1'000'000;

    const Upnp::Kind m_kind;
    const Handler m_changed;
    Upnp::Description m_value;
    bool m_isFollowed = false;
    bool m_isNew = false; // and not told yet
    bool m_isOld = false; // and to be read again
    bool m_isRestarted = false;
    QByteArray m_bootId; // heard last
    QByteArray m_configId;
    qint64 m_toldAt = Never;
    qint64 m_readAt = Never;
    std::unique_ptr<DescriptionReader> m_reader;
};
