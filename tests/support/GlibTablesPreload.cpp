// SPDX-License-Identifier: MIT
// Preloaded into the real program where a scenario looks for leaks; it is linked with GLib so that GLib is ready first.
#include "GlibTables.h"

namespace {
__attribute__((constructor)) void begin()
{
    ignoreGlibTables();
}
} // namespace
