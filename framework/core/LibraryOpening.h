// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Maps a library and all that it needs, and runs their constructors; it stays mapped for good, since libraries that
/// registered types with GLib must never be unmapped. Any thread; takes long for large foreign libraries. When it cannot
/// be done nothing has changed, and QPluginLoader, asked for the same, tells the reason.
///
/// This goes by way of GModule. Libraries there are (libsoup) whose constructors call g_module_open(), and so take GModule's
/// lock within the dynamic linker's; GStreamer's threads, which load elements by GModule whenever they need one, take both the
/// other way round. Whoever loads such a library by the dynamic linker alone may wait for ever for a thread that waits for him,
/// and all others with them as soon as they touch the linker.
void openLibrary(const QString &path);
