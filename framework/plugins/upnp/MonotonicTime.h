// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <glib.h>

/// Milliseconds, by the clock that GLib's sources go by.
inline qint64 monotonicTime()
{
    return g_get_monotonic_time() / 1000;
}
