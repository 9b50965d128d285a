// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>

class QString;

/// What the values of the renderer's properties mean.
namespace RendererValues {
constexpr int maximumVolume = 99;

/// A "left,top,width,height"; empty for an empty text.
QRect toRectangle(const QString &text);

/// A volume of 0..99 as an amplitude: perceived loudness grows with about its cube root.
double linearVolume(int volume);
/// The other way round, to the nearest step; more than full loudness counts as full.
int cubicVolume(double amplitude);
} // namespace RendererValues
