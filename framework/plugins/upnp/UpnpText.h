// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoRenderer.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>

/// The texts of AVTransport and RenderingControl, and what they mean. Devices write them carelessly: nothing here
/// trusts them.
namespace UpnpText {

/// Seconds of "H+:MM:SS[.F+]" or "H+:MM:SS.F0/F1", minutes and seconds also with one digit. Nothing for what is
/// not a time, negative, or longer than a year (devices write the largest number that they have for "unknown").
std::optional<double> parseTime(const QString &text);
/// "H:MM:SS", with ".mmm" only when there is a fraction: not every device takes one.
QString formatTime(double seconds);

/// The entries of a comma-separated list in lower case; a comma within an entry is written "\,".
QSet<QString> parseActions(const QString &text);

/// A value of TransportPlaySpeed: "1", "-1/2", "2.0". Nothing for 0 and for what is no number.
std::optional<double> parseSpeed(const QString &text);
/// The allowed value nearest to a rate in the same direction; "1" when there is none.
QString nearestSpeed(const QStringList &allowed, double rate);

/// Nothing for a text that no version of the standard has.
std::optional<KelvoRenderer::State> parseState(const QString &text);

/// A device's volume steps are, like the console's 0..99, meant to sound even; so one maps evenly to the other.
int toDeviceVolume(int volume, int lowest, int highest);
int fromDeviceVolume(int deviceVolume, int lowest, int highest);

/// Whether two addresses mean the same, however their characters are escaped.
bool isSameUri(const QString &one, const QString &other);

/// Why a device refused: its code, and its own words or those that the standard has for the code.
QString refusalText(int code, const QString &message);

/// Without what XML cannot hold (control characters, lone surrogates), and not longer than a display can use, or
/// than the given number of characters.
QString cleaned(const QString &text, qsizetype longest = 4000);

} // namespace UpnpText
