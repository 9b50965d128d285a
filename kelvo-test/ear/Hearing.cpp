// SPDX-License-Identifier: MIT
#include "Hearing.h"

#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <cmath>

namespace {
constexpr std::array kinds{"begins", "goes", "jumps", "ends", "fails"};

std::optional<double> numberIn(const QJsonObject &json, QLatin1String key)
{
    const QJsonValue value = json.value(key);
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

/// Numbers are for people, too.
double rounded(double value, double parts)
{
    return std::round(value * parts) / parts;
}
} // namespace

QString Hearing::kindText() const
{
    return QString::fromLatin1(kinds.at(size_t(kind)));
}

QJsonObject Hearing::json() const
{
    constexpr double millionths = 1e6;
    constexpr double thousandths = 1e3;
    QJsonObject json{{QStringLiteral("kind"), kindText()}, {QStringLiteral("at"), rounded(at, millionths)},
        {QStringLiteral("within"), rounded(within, millionths)}, {QStringLiteral("item"), item}};
    if (position)
        json.insert(QStringLiteral("position"), rounded(*position, millionths));
    if (item > 0)
        json.insert(QStringLiteral("speed"), rounded(speed, millionths));
    if (level)
        json.insert(QStringLiteral("level"), rounded(*level, thousandths));
    if (!doubt.isEmpty())
        json.insert(QStringLiteral("doubt"), doubt);
    return json;
}

std::optional<Hearing> Hearing::of(const QJsonObject &json)
{
    const std::string word = json.value(QLatin1String("kind")).toString().toStdString();
    const auto *const kind = std::find(kinds.cbegin(), kinds.cend(), word);
    const std::optional<double> at = numberIn(json, QLatin1String("at"));
    if (kind == kinds.cend() || !at)
        return std::nullopt;
    Hearing hearing;
    hearing.kind = Kind(kind - kinds.cbegin());
    hearing.at = *at;
    hearing.within = json.value(QLatin1String("within")).toDouble();
    hearing.item = json.value(QLatin1String("item")).toInt();
    hearing.position = numberIn(json, QLatin1String("position"));
    hearing.speed = json.value(QLatin1String("speed")).toDouble(1);
    hearing.level = numberIn(json, QLatin1String("level"));
    hearing.doubt = json.value(QLatin1String("doubt")).toString();
    return hearing;
}

QByteArray Hearing::line() const
{
    return QJsonDocument(json()).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<Hearing> Hearing::ofLine(const QByteArray &line)
{
    const QJsonDocument document = QJsonDocument::fromJson(line);
    return document.isObject() ? of(document.object()) : std::nullopt;
}
