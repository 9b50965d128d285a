// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoMediaInfo.h"
#include "UpnpTypes.h"

/// Items in DIDL-Lite, the XML in which renderers and servers name media. UPnP thread.
namespace Didl {

/// Describes one item for a renderer, which fetches it from that address.
QString write(const KelvoMediaInfo &info, const QString &uri);

/// The first item of a text; nothing when there is none that can be read.
std::optional<Upnp::Track> parse(const QString &text);

} // namespace Didl
