// SPDX-License-Identifier: MIT
#pragma once

/// Brings what the UPnP libraries print into this program's log, category "kelvo".
namespace GlibLog {

/// Any thread, as often as wanted: from now on the warnings of these libraries are warnings of this program, and
/// what they call fatal no longer ends it.
void catchWarnings();
/// For the calling thread: libxml2 writes to the standard error output otherwise. At most 30 lines in a second.
void catchXmlErrors();

} // namespace GlibLog
