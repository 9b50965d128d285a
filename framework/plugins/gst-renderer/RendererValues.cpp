// SPDX-License-Identifier: MIT
#include "RendererValues.h"

#include <QString>
#include <QStringList>

#include <algorithm>
#include <cmath>

QRect RendererValues::toRectangle(const QString &text)
{
    const QStringList numbers = text.split(QLatin1Char(','));
    if (numbers.size() != 4)
        return {};
    return {numbers.at(0).toInt(), numbers.at(1).toInt(), numbers.at(2).toInt(), numbers.at(3).toInt()};
}

double RendererValues::linearVolume(int volume)
{
    return std::pow(double(volume) / maximumVolume, 3);
}

int RendererValues::cubicVolume(double amplitude)
{
    return int(std::lround(std::clamp(std::cbrt(amplitude), 0.0, 1.0) * maximumVolume));
}
