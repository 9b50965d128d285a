// SPDX-License-Identifier: MIT
#include "RendererValues.h"

#include "KelvoRenderer.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {
bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

std::optional<QVariant> whole(const QVariant &value, double maximum)
{
    const double number = value.toDouble();
    if (!isNumber(value) || !(number >= 0 && number <= maximum) || number != std::floor(number))
        return std::nullopt;
    return uint(number);
}

std::optional<QVariant> speed(const QVariant &value)
{
    const double number = std::abs(value.toDouble());
    if (!isNumber(value) || !(number > 0 && number <= RendererValues::maximumSpeed))
        return std::nullopt;
    return value.toDouble();
}

std::optional<QVariant> rectangle(const QVariant &value)
{
    static const QRegularExpression form(QStringLiteral("\\A-?\\d{1,6},-?\\d{1,6},\\d{1,6},\\d{1,6}\\z"));
    if (value.typeId() != QMetaType::QString || !form.match(value.toString()).hasMatch())
        return std::nullopt;
    return value;
}
} // namespace

std::optional<QVariant> RendererValues::accepted(const QString &name, const QVariant &value)
{
    if (name == KelvoRenderer::PropertyVolume)
        return whole(value, maximumVolume);
    if (name == KelvoRenderer::PropertyXid)
        return whole(value, std::numeric_limits<uint>::max());
    if (name == KelvoRenderer::PropertyPlaybackSpeed)
        return speed(value);
    if (name == KelvoRenderer::PropertyRenderRectangle)
        return rectangle(value);
    return value.typeId() == QMetaType::Bool ? std::optional<QVariant>(value) : std::nullopt;
}

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
