// SPDX-License-Identifier: MIT
#include "SimulatorSettings.h"

#include "KelvoError.h"
#include "SimulatorProperties.h"

#include <QUrl>

#include <optional>

namespace Sim = SimulatorProperties;

namespace {
using Reading = std::optional<QVariant> (*)(const QVariant &value);

std::optional<QVariant> flag(const QVariant &value)
{
    if (value.typeId() == QMetaType::Bool)
        return value;
    if (value == QVariant(QStringLiteral("true")) || value == QVariant(QStringLiteral("false")))
        return value.toString() == QLatin1String("true");
    return std::nullopt;
}

std::optional<QVariant> milliseconds(const QVariant &value)
{
    bool ok = false;
    const int number = value.toInt(&ok);
    const int type = value.typeId();
    const bool isNumeric = type == QMetaType::Int || type == QMetaType::UInt || type == QMetaType::QString;
    return ok && isNumeric && number >= 0 ? std::optional<QVariant>(number) : std::nullopt;
}

/// The error code in front of a comma.
std::optional<QVariant> code(const QVariant &value)
{
    bool ok = false;
    const int number = value.toString().section(QLatin1Char(','), 0, 0).toInt(&ok);
    return ok && number >= 0 ? std::optional<QVariant>(number) : std::nullopt;
}

std::optional<QVariant> failure(const QVariant &value)
{
    const bool isCounted
        = SimulatorSettings::rest(value).isEmpty() || SimulatorSettings::rest(value).toInt() >= 1;
    return isCounted ? code(value) : std::nullopt;
}

std::optional<QVariant> error(const QVariant &value)
{
    const std::optional<QVariant> given = code(value);
    return given && given->toInt() != KelvoError::NoError ? given : std::nullopt;
}

std::optional<QVariant> anyNumber(const QVariant &value)
{
    bool ok = false;
    const int number = value.toInt(&ok);
    return ok ? std::optional<QVariant>(number) : std::nullopt;
}

std::optional<QVariant> text(const QVariant &value)
{
    return value.typeId() == QMetaType::QString ? std::optional<QVariant>(value) : std::nullopt;
}

std::optional<QVariant> metadata(const QVariant &value)
{
    return SimulatorSettings::facts(value).isEmpty() ? std::nullopt : std::optional<QVariant>(value);
}

std::optional<QVariant> foreignDeed(const QVariant &value)
{
    const QString deed = value.toString();
    const bool isKnown = deed == Sim::foreignPause || deed == Sim::foreignResume || deed == Sim::foreignStop;
    return isKnown || !QUrl(deed).isRelative() ? text(value) : std::nullopt;
}

std::optional<QVariant> clockMode(const QVariant &value)
{
    const bool isKnown
        = value == QVariant(QString(Sim::clockManual)) || value == QVariant(QString(Sim::clockReal));
    return isKnown ? std::optional<QVariant>(value) : std::nullopt;
}

const QHash<QString, Reading> &readings()
{
    static const QHash<QString, Reading> table{
        {Sim::latency, milliseconds},
        {Sim::failure, failure},
        {Sim::error, error},
        {Sim::buffering, milliseconds},
        {Sim::stall, flag},
        {Sim::vanish, anyNumber},
        {Sim::name, text},
        {Sim::duration, milliseconds},
        {Sim::seekable, flag},
        {Sim::metadata, metadata},
        {Sim::foreign, foreignDeed},
        {Sim::clock, clockMode},
        {Sim::advance, milliseconds},
    };
    return table;
}
} // namespace

SimulatorSettings::SimulatorSettings(const QString &name)
    : m_values{
        {Sim::latency, 0},
        {Sim::failure, 0},
        {Sim::error, 0},
        {Sim::buffering, 0},
        {Sim::stall, false},
        {Sim::vanish, -1},
        {Sim::name, name},
        {Sim::duration, 30},
        {Sim::seekable, true},
        {Sim::metadata, QString()},
        {Sim::foreign, QString()},
        {Sim::advance, 0},
    }
{
}

bool SimulatorSettings::has(const QString &name)
{
    return readings().contains(name);
}

bool SimulatorSettings::take(const QString &name, const QVariant &value)
{
    const std::optional<QVariant> accepted = readings().value(name)(value);
    if (accepted)
        m_values.insert(name, *accepted);
    return accepted.has_value();
}

int SimulatorSettings::itemsToFail(const QVariant &value)
{
    const bool fails = code(value).value_or(0).toInt() != KelvoError::NoError;
    const QString count = rest(value);
    return fails ? (count.isEmpty() ? 1 : count.toInt()) : 0;
}

QString SimulatorSettings::rest(const QVariant &value)
{
    return value.toString().section(QLatin1Char(','), 1);
}

QVariantMap SimulatorSettings::facts(const QVariant &value)
{
    QVariantMap facts = value.toMap();
    const QString text = value.toString();
    const qsizetype sign = text.indexOf(QLatin1Char('='));
    if (sign > 0)
        facts.insert(text.left(sign), text.mid(sign + 1));
    return facts;
}
