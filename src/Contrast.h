// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QPalette>

/// Texts that everybody can read, by the measure of the Web Content Accessibility Guidelines (WCAG 2.1, 1.4.3).
namespace Contrast {

/// What the ratio of a text and its ground must be at least.
constexpr double least = 4.5;

/// From 1 (the same brightness) to 21 (black and white).
double ratio(const QColor &one, const QColor &other);

/// The ground itself where a text of that colour can be read on it, otherwise black or white, whichever is better.
QColor groundFor(const QColor &text, const QColor &ground);

/// The palette with the colour behind highlighted texts made darker or brighter until they can be read. Only what has to
/// change is set in it.
QPalette withReadableHighlight(QPalette palette);

} // namespace Contrast
