// SPDX-License-Identifier: MIT
#pragma once

#include "UpnpTypes.h"

/// The event variable LastChange of AVTransport and RenderingControl. UPnP thread.
namespace LastChange {

/// What it says about instance 0; marked as unreadable when it is no XML.
Upnp::Report parse(const QByteArray &xml);

} // namespace LastChange
