// SPDX-License-Identifier: MIT
#include "FileLimit.h"

#include <algorithm>
#include <sys/resource.h>

namespace {
// Programs that are started here inherit it, and some go through all numbers once.
constexpr rlim_t enough = 65'536;
} // namespace

void FileLimit::raise()
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit.rlim_cur = std::max(limit.rlim_cur, std::min(limit.rlim_max, enough));
    ::setrlimit(RLIMIT_NOFILE, &limit); // otherwise it stays as it was
}
