// SPDX-License-Identifier: MIT
#include "Sighting.h"

#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <cmath>

namespace {
constexpr std::array sightingKinds{"begins", "goes", "jumps", "rests", "ends", "fails"};

/// Numbers are for people, too.
double inMillionths(double value)
{
    constexpr double millionths = 1e6;
    return std::round(value * millionths) / millionths;
}
} // namespace

QString Sighting::kindText() const
{
    return QString::fromLatin1(sightingKinds.at(size_t(kind)));
}

QJsonObject Sighting::json() const
{
    QJsonObject json{{QStringLiteral("kind"), kindText()}, {QStringLiteral("at"), inMillionths(at)},
        {QStringLiteral("within"), inMillionths(within)}, {QStringLiteral("item"), moment.item}};
    if (moment.item > 0) {
        json.insert(QStringLiteral("frame"), moment.frame);
        json.insert(QStringLiteral("speed"), inMillionths(speed));
        json.insert(QStringLiteral("left-out"), leftOut);
    }
    if (!doubt.isEmpty())
        json.insert(QStringLiteral("doubt"), doubt);
    return json;
}

std::optional<Sighting> Sighting::of(const QJsonObject &json)
{
    const std::string word = json.value(QLatin1String("kind")).toString().toStdString();
    const auto *const kind = std::find(sightingKinds.cbegin(), sightingKinds.cend(), word);
    const QJsonValue at = json.value(QLatin1String("at"));
    if (kind == sightingKinds.cend() || !at.isDouble())
        return std::nullopt;
    Sighting sighting;
    sighting.kind = Kind(kind - sightingKinds.cbegin());
    sighting.at = at.toDouble();
    sighting.within = json.value(QLatin1String("within")).toDouble();
    sighting.moment
        = {json.value(QLatin1String("item")).toInt(), json.value(QLatin1String("frame")).toInteger()};
    sighting.speed = json.value(QLatin1String("speed")).toDouble(1);
    sighting.leftOut = json.value(QLatin1String("left-out")).toInt();
    sighting.doubt = json.value(QLatin1String("doubt")).toString();
    return sighting;
}

QByteArray Sighting::line() const
{
    return QJsonDocument(json()).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<Sighting> Sighting::ofLine(const QByteArray &line)
{
    const QJsonDocument document = QJsonDocument::fromJson(line);
    return document.isObject() ? of(document.object()) : std::nullopt;
}
