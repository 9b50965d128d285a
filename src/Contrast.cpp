// SPDX-License-Identifier: MIT
#include "Contrast.h"

#include <cmath>

namespace {
constexpr int highlightStep = 105; // percent
// The frame of the row that has the focus is painted over its text, and takes a tenth of the contrast.
constexpr double leastOfHighlight = 5.5;

/// Of a channel 0..1 of sRGB.
double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

QColor readableHighlight(const QColor &text, QColor ground)
{
    const bool darker = luminance(text) > luminance(ground);
    while (Contrast::ratio(text, ground) < leastOfHighlight) {
        const QColor next = darker ? ground.darker(highlightStep) : ground.lighter(highlightStep);
        if (next == ground)
            return darker ? Qt::black : Qt::white;
        ground = next;
    }
    return ground;
}
} // namespace

double Contrast::ratio(const QColor &one, const QColor &other)
{
    const double first = luminance(one) + 0.05;
    const double second = luminance(other) + 0.05;
    return qMax(first, second) / qMin(first, second);
}

QColor Contrast::groundFor(const QColor &text, const QColor &ground)
{
    if (ratio(text, ground) >= least)
        return ground;
    return ratio(text, Qt::black) > ratio(text, Qt::white) ? Qt::black : Qt::white;
}

QPalette Contrast::withReadableHighlight(QPalette palette)
{
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        const QColor ground = palette.color(group, QPalette::Highlight);
        const QColor readable = readableHighlight(palette.color(group, QPalette::HighlightedText), ground);
        if (readable != ground)
            palette.setColor(group, QPalette::Highlight, readable);
    }
    return palette;
}
