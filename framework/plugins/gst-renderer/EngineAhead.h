// SPDX-License-Identifier: MIT
#pragma once

/// What GStreamer does before it plays anything, done while others are busy with the window.
namespace EngineAhead {

/// Begins with it on a thread of its own and returns at once. Any thread. What fails is told by who needs it.
///
/// GStreamer reads the list of its plug-ins, and loads those that all playing needs. Decoders are left for later: their
/// libraries are large, and while they are mapped nobody else gets any.
void begin();

} // namespace EngineAhead
