// SPDX-License-Identifier: MIT
#pragma once

#include "RecordedEvent.h"

#include <QLatin1String>

#include <optional>

/// The words of recordings, and what follows from them.
namespace KelvoWords {
inline constexpr QLatin1String command{"command"};
inline constexpr QLatin1String report{"report"};
inline constexpr QLatin1String answer{"answer"};
inline constexpr QLatin1String appears{"appears"};
inline constexpr QLatin1String vanishes{"vanishes"};
inline constexpr QLatin1String note{"note"};
inline constexpr QLatin1String heard{"heard"};
inline constexpr QLatin1String seen{"seen"};

inline constexpr QLatin1String stopped{"Stopped"};
inline constexpr QLatin1String playing{"Playing"};
inline constexpr QLatin1String paused{"Paused"};
inline constexpr QLatin1String transitioning{"Transitioning"};

/// Whether the event is a report of that name.
bool isReport(const RecordedEvent &event, QLatin1String name);

/// Whether a command of that name only asks: it changes nothing, and how often it comes depends on who watches.
bool isQuestion(const QString &name);

/// Whether the event can only be one of a renderer: its coming, its signals, and the operations that sources and playlists
/// do not have.
bool isOfRenderer(const RecordedEvent &event);

/// The position in seconds that an event answers with; nothing for any other event.
std::optional<double> answeredPosition(const RecordedEvent &event);

/// What an ear heard, or an eye saw, of a renderer (docs/recording.md).
struct Sensed
{
    double ago = 0; ///< seconds before it was written down
    int item = 0; ///< 0: not known
    std::optional<double> position; ///< seconds
    int leftOut = 0; ///< pictures
    QString doubt; ///< why something could not be measured
};
/// Nothing for any other event.
std::optional<Sensed> sensedBy(const RecordedEvent &event);

/// "error 104: the text of the renderer", of the argument of error().
QString errorText(const QJsonValue &error);

/// The event as a call: "playUri(http://host/song)"; cut where it is longer than `longest` characters.
QString call(const RecordedEvent &event, qsizetype longest = 120);

/// "0.250 s", "12.000 s".
QString seconds(double seconds);
} // namespace KelvoWords
