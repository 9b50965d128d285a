// SPDX-License-Identifier: MIT
#include "EarConditionReader.h"

#include "ClockReader.h"
#include "YamlNode.h"

namespace {
const auto percent = QStringLiteral("%");

/// "2 ± 0.02" or "2.0 ± 1 %".
Tolerance speedOf(const YamlNode &node)
{
    QString text = node.text().trimmed();
    const bool isShare = text.endsWith(percent);
    if (isShare)
        text.chop(percent.size());
    const auto speed = Quantities::numberWithTolerance(text);
    constexpr double hundred = 100;
    if (!speed || speed->value <= 0 || (isShare && speed->deviation <= 0))
        node.fail(QStringLiteral("speed takes a number such as \"2.0 ± 1 %\", not \"%1\"").arg(node.text()));
    return isShare ? Tolerance{speed->value, speed->value * speed->deviation / hundred} : *speed;
}

double onlyTime(const YamlNode &node, const QString &key)
{
    node.entries({key});
    const auto time = node.find(key);
    if (!time)
        node.fail(QStringLiteral("%1 needs \"%2\": a time").arg(node.name(), key));
    return double(time->time().count()) / 1000;
}

void takePlace(EarCondition &condition, const YamlNode &node, const QList<Medium> &media)
{
    for (const YamlNode &entry : node.entries({QStringLiteral("item"), QStringLiteral("position")})) {
        if (entry.name() == QLatin1String("item"))
            condition.item = ClockReader::itemOf(entry, media);
        else
            condition.position = ClockReader::timeOf(entry);
    }
    if (!condition.item && !condition.position)
        node.fail(QStringLiteral("heard needs \"item\", \"position\" or both"));
}

EarCondition::Level levelOf(const YamlNode &node)
{
    constexpr int loudest = 99;
    node.entries({QStringLiteral("dB"), QStringLiteral("against")});
    const auto wanted = node.find(QStringLiteral("dB"));
    const auto decibels = wanted ? Quantities::numberWithTolerance(wanted->text()) : std::nullopt;
    if (!decibels)
        node.fail(QStringLiteral("level needs \"dB\": a number such as \"-18 ± 1\""));
    EarCondition::Level level{*decibels, {}};
    if (const auto against = node.find(QStringLiteral("against")))
        level.against = against->integer(0, loudest);
    return level;
}
} // namespace

const QStringList &EarConditionReader::keys()
{
    static const QStringList keys{QStringLiteral("heard"), QStringLiteral("silence"), QStringLiteral("gap"),
        QStringLiteral("level"), QStringLiteral("speed")};
    return keys;
}

void EarConditionReader::take(EarCondition &condition, const YamlNode &entry, const QList<Medium> &media)
{
    const QString key = entry.name();
    if (key == QLatin1String("heard"))
        takePlace(condition, entry, media);
    else if (key == QLatin1String("silence"))
        condition.silence = onlyTime(entry, QStringLiteral("within"));
    else if (key == QLatin1String("gap"))
        condition.gap = onlyTime(entry, QStringLiteral("at most"));
    else if (key == QLatin1String("level"))
        condition.level = levelOf(entry);
    else if (key == QLatin1String("speed"))
        condition.speed = speedOf(entry);
}
