// SPDX-License-Identifier: MIT
#pragma once

#include "GlibHandles.h"

#include <libgupnp/gupnp.h>

/// Owners of what GUPnP hands out, besides its GObjects.
namespace GupnpHandles {

using Action
    = std::unique_ptr<GUPnPServiceProxyAction, GlibHandles::Releaser<gupnp_service_proxy_action_unref>>;

} // namespace GupnpHandles
