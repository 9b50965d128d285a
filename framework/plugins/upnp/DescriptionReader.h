// SPDX-License-Identifier: MIT
#pragma once

#include "GupnpHandles.h"
#include "UpnpTypes.h"

#include <functional>
#include <memory>
#include <optional>

/// Reads a known device's description once more. GUPnP reads each one once, although a device may change what it tells
/// of itself without moving to another place. UPnP thread.
class DescriptionReader
{
public:
    /// Nothing: there is no description any more that could be read.
    using Handler = std::function<void(const std::optional<Upnp::Description> &)>;

    /// The handler is called once, from the main loop, unless this object is destroyed first.
    DescriptionReader(GUPnPDeviceInfo *device, Upnp::Kind kind, Handler handler);
    ~DescriptionReader();
    Q_DISABLE_COPY_MOVE(DescriptionReader)

private:
    struct Reading;
    static void opened(GObject *session, GAsyncResult *result, void *reading);
    static void read(GObject *stream, GAsyncResult *result, void *reading);

    const std::shared_ptr<Reading> m_reading;
};
