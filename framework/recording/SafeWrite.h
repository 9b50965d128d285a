// SPDX-License-Identifier: MIT
#pragma once

#include <cerrno>
#include <string_view>
#include <unistd.h>

/// Writing with nothing but what a signal handler may do (signal-safety(7)).
namespace SafeWrite {
/// False when not all of it could be written; errno then says why.
inline bool all(int descriptor, std::string_view bytes) noexcept
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written >= 0)
            bytes.remove_prefix(size_t(written));
        else if (errno != EINTR)
            return false;
    }
    return true;
}
} // namespace SafeWrite
