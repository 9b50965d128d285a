// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>
#include <QVariant>

#include <optional>

/// What values the renderer's properties take, and what they mean.
namespace RendererValues {
constexpr int maximumVolume = 99;
constexpr double maximumSpeed = 64;

/// Nothing for a value that the property cannot have; otherwise the value as it is reported.
std::optional<QVariant> accepted(const QString &name, const QVariant &value);

/// An accepted "left,top,width,height"; empty for an empty text.
QRect toRectangle(const QString &text);

/// A volume of 0..99 as an amplitude: perceived loudness grows with about its cube root.
double linearVolume(int volume);
/// The other way round, to the nearest step; more than full loudness counts as full.
int cubicVolume(double amplitude);
} // namespace RendererValues
