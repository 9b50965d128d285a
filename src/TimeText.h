// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Texts of positions, durations and colours on the playback tabs.
namespace TimeText {

/// "0:00 /" over the minutes and seconds of the duration, for instance "0:00 /\n3:56". Negative durations
/// (unknown) show as 0.
QString duration(int seconds);

/// The duration text with its position replaced. Positions of up to three digits of minutes are recognised; with
/// more, the leading digits stay in front, which is accepted.
QString withPosition(const QString &durationText, uint seconds);

} // namespace TimeText
