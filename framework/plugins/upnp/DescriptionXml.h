// SPDX-License-Identifier: MIT
#pragma once

#include "GupnpHandles.h"

#include <QByteArray>

/// The text of a device's description, as it comes from the network. UPnP thread.
namespace DescriptionXml {

/// The known device as a newer text describes it; null when the text cannot be read or has no device of that UDN.
GlibHandles::Object<GUPnPDeviceInfo> device(const QByteArray &text, GUPnPDeviceInfo *known);

} // namespace DescriptionXml
