// SPDX-License-Identifier: MIT
#pragma once

#include "GupnpHandles.h"
#include "UpnpTypes.h"

/// Reads what a device tells of itself. Everything may be missing. UPnP thread.
namespace DeviceDescription {

Upnp::Description read(GUPnPDeviceInfo *device, Upnp::Kind kind);

/// A service by its type without version; null when the device has none, or none that can be told anything.
GlibHandles::Object<GUPnPServiceProxy> service(GUPnPDeviceInfo *device, Upnp::Service service);

/// Whether there is an address to subscribe to its events.
bool sendsEvents(GUPnPServiceProxy *service);
/// Whether there is an address of its own description.
bool isDescribed(GUPnPServiceProxy *service);

/// "host:port" of the place that the description came from.
QString authority(GUPnPDeviceInfo *device);

} // namespace DeviceDescription
