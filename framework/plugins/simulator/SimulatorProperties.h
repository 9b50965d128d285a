// SPDX-License-Identifier: MIT
#pragma once

#include <QLatin1String>

/// What a tester can do to a simulated renderer, by KelvoRenderer::setKelvoProperty(). Each can be asked for
/// with kelvoProperty() as well, is reported once it took effect, and takes its value as the type named here
/// or as text. They act at once, whatever "sim-latency" says.
///
/// | property        | value              | at start | effect |
/// |-----------------|--------------------|----------|--------|
/// | sim-latency     | int, ms >= 0       | 0        | commands, properties and answers take this long; their order is kept |
/// | sim-failure     | int or "code,n"    | 0        | the next item (the next n items) fails with this KelvoError code; 0: none |
/// | sim-error       | int or "code,text" | 0        | this error now, with the text as message; what plays fails with it |
/// | sim-buffering   | int, ms >= 0       | 0        | the buffer fills in this time: now, if something plays, and before each item from now on |
/// | sim-stall       | bool               | false    | true: the position stands still although the state is Playing |
/// | sim-vanish      | int, ms            | -1       | the renderer is deleted; a new one with everything as at start comes after that time; negative: none |
/// | sim-name        | text               | its name | changes the name; may be empty |
/// | sim-duration    | int, s >= 0        | 30       | of items from now on that tell none; 0: not known, they never end and cannot seek |
/// | sim-seekable    | bool               | true     | false: items from now on cannot seek |
/// | sim-metadata    | "key=value" or map | ""       | reports these facts about the item in play, each where it is news |
/// | sim-foreign     | text               | ""       | another controller does this at the device: "pause", "resume", "stop", or plays this URL |
/// | sim-clock       | "real", "manual"   | "real"   | whether time passes by itself; one clock for all that the plug-in brings |
/// | sim-advance     | int, ms >= 0       | 0        | moves the manual clock, step by step from the event loop; reported when it has arrived |
/// | policy-override | bool               | false    | reports a policy override (KelvoRenderer) |
/// | colorkey        | uint               | 0        | reports a colour key (KelvoRenderer) |
///
/// The environment variable KELVO_SIMULATOR sets them for all renderers from the start, for instance
/// "sim-latency=300;sim-buffering=2000".
///
/// A simulated renderer plays any URL. These query items of a URL say how, for instance
/// "sim:song?title=A%20song&duration=5" or "sim:song?fail=106":
///   title, artist, album (texts), duration (s), fail (KelvoError code), seekable (0 or 1), and entries (n):
///   a playlist file of n entries that are otherwise like this.
namespace SimulatorProperties {
inline constexpr QLatin1String latency{"sim-latency"};
inline constexpr QLatin1String failure{"sim-failure"};
inline constexpr QLatin1String error{"sim-error"};
inline constexpr QLatin1String buffering{"sim-buffering"};
inline constexpr QLatin1String stall{"sim-stall"};
inline constexpr QLatin1String vanish{"sim-vanish"};
inline constexpr QLatin1String name{"sim-name"};
inline constexpr QLatin1String duration{"sim-duration"};
inline constexpr QLatin1String seekable{"sim-seekable"};
inline constexpr QLatin1String metadata{"sim-metadata"};
inline constexpr QLatin1String foreign{"sim-foreign"};
inline constexpr QLatin1String clock{"sim-clock"};
inline constexpr QLatin1String advance{"sim-advance"};

inline constexpr QLatin1String foreignPause{"pause"};
inline constexpr QLatin1String foreignResume{"resume"};
inline constexpr QLatin1String foreignStop{"stop"};

inline constexpr QLatin1String clockReal{"real"};
inline constexpr QLatin1String clockManual{"manual"};

/// Common beginning of the names above; such properties are not held back by the latency.
inline constexpr QLatin1String prefix{"sim-"};
/// Environment variable: "name=value;name=value".
inline constexpr char environment[] = "KELVO_SIMULATOR";
} // namespace SimulatorProperties
