// SPDX-License-Identifier: MIT
#include "EarCondition.h"

#include "HeardSound.h"

#include <QStringList>

#include <cmath>

namespace {
using Reading = std::optional<Measured>;

bool isWithin(const Reading &measured, const Tolerance &wanted)
{
    return measured && wanted.takes(measured->value, measured->error);
}

bool isAtMost(const Reading &measured, double most)
{
    return measured && measured->value <= most + measured->error;
}

Reading levelOf(const EarCondition::Level &level, const HeardSound &heard)
{
    return level.against ? heard.levelAgainst(*level.against) : heard.level();
}

QString milliseconds(const Measured &seconds)
{
    return QStringLiteral("%1 ms (± %2 ms)")
        .arg(seconds.value * 1000, 0, 'f', 1)
        .arg(seconds.error * 1000, 0, 'f', 1);
}

QString milliseconds(double seconds)
{
    return Quantities::text(std::chrono::milliseconds(std::llround(seconds * 1000)));
}

QString numbers(const Tolerance &range, double factor, const QString &unit)
{
    const QString value = QStringLiteral("%1%2").arg(range.value * factor).arg(unit);
    return range.deviation > 0 ? value + QStringLiteral(" ± %1%2").arg(range.deviation * factor).arg(unit)
                               : value;
}
} // namespace

bool EarCondition::isEmpty() const
{
    return !item && !position && !silence && !gap && !level && !speed;
}

bool EarCondition::holds(const HeardSound &heard, bool isStill) const
{
    const bool asksForPlace = item || position;
    // Neither a sound that goes on after all, nor an end that was before the command.
    if (asksForPlace && (isStill || !heard.sounds()) && !heard.isAtRest())
        return false;
    return (!item || *item == heard.item()) && (!position || isWithin(heard.position(), *position))
        && (!silence || isAtMost(heard.silence(), *silence)) && (!gap || isAtMost(heard.gap(), *gap))
        && (!level || isWithin(levelOf(*level, heard), level->decibels))
        && (!speed || isWithin(heard.speed(), *speed));
}

QString EarCondition::unmeasured(const HeardSound &heard) const
{
    if (isEmpty())
        return {};
    if (!heard.isListening())
        return heard.doubt();
    const bool isKnown = (!item || heard.item() > 0) && (!position || heard.position())
        && (!silence || heard.silence() || heard.sounds()) && (!gap || heard.gap())
        && (!level || levelOf(*level, heard)) && (!speed || heard.speed());
    if (isKnown)
        return {};
    if (!heard.doubt().isEmpty())
        return heard.doubt();
    if (level && level->against && heard.level())
        return QStringLiteral("nothing was heard at volume %1 before").arg(*level->against);
    // What should have been there was just not: that is known.
    return {};
}

QString EarCondition::measured(const HeardSound &heard) const
{
    QStringList words;
    if (item)
        words.append(QStringLiteral("item %1").arg(heard.item()));
    if (const Reading place = heard.position(); position && place)
        words.append(QStringLiteral("position %1 s (± %2 ms)")
                         .arg(place->value, 0, 'f', 4)
                         .arg(place->error * 1000, 0, 'f', 1));
    if (const Reading silent = heard.silence(); silence && silent)
        words.append(QStringLiteral("silence after ") + milliseconds(*silent));
    if (const Reading pause = heard.gap(); gap && pause)
        words.append(QStringLiteral("a gap of ") + milliseconds(*pause));
    if (const Reading loudness = level ? levelOf(*level, heard) : Reading(); loudness)
        words.append(QStringLiteral("%1 dB (± %2 dB)")
                         .arg(loudness->value, 0, 'f', 2)
                         .arg(loudness->error, 0, 'f', 1));
    if (const Reading pace = heard.speed(); speed && pace)
        words.append(
            QStringLiteral("speed %1 (± %2)").arg(pace->value, 0, 'f', 4).arg(pace->error, 0, 'f', 3));
    return words.join(QStringLiteral(", "));
}

QString EarCondition::text() const
{
    QStringList words;
    if (item)
        words.append(QStringLiteral("item %1 heard").arg(*item));
    if (position)
        words.append(QStringLiteral("position heard ") + Quantities::text(*position));
    if (silence)
        words.append(QStringLiteral("silence within ") + milliseconds(*silence));
    if (gap)
        words.append(QStringLiteral("a gap of at most ") + milliseconds(*gap));
    if (level)
        words.append(QStringLiteral("level ") + numbers(level->decibels, 1, QStringLiteral(" dB"))
            + (level->against ? QStringLiteral(" against volume %1").arg(*level->against) : QString()));
    if (speed)
        words.append(QStringLiteral("speed ") + numbers(*speed, 1, QString()));
    return words.join(QStringLiteral(", "));
}
