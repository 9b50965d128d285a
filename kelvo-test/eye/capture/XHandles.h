// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

/// Owners of what the X library hands out.
namespace XHandles {
struct Free
{
    void operator()(void *memory) const { std::free(memory); }
};
struct Disconnect
{
    void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
};

using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;
template <typename Reply> using Owned = std::unique_ptr<Reply, Free>;
} // namespace XHandles
