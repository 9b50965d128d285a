// SPDX-License-Identifier: MIT
#include "Condition.h"

#include "Event.h"

#include <QMetaEnum>
#include <QStringList>

#include <algorithm>

namespace {
bool fits(const QString &wanted, const QVariant &value)
{
    if (value.toString() == wanted)
        return true;
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    const std::optional<Tolerance> range = Quantities::numberWithTolerance(wanted);
    return isNumber && range && value.typeId() != QMetaType::Bool && range->takes(number);
}

bool anyFits(const QString &wanted, const QVariantList &values)
{
    return std::any_of(
        values.cbegin(), values.cend(), [&wanted](const QVariant &value) { return fits(wanted, value); });
}

bool isNear(const Tolerance &wanted, double position, double resolution)
{
    return position <= wanted.value + wanted.deviation
        && position + resolution >= wanted.value - wanted.deviation;
}

void addAll(QStringList &words, const QString &what, const QMap<QString, QString> &values)
{
    for (auto value = values.cbegin(); value != values.cend(); ++value)
        words.append(QStringLiteral("%1 %2 \"%3\"").arg(what, value.key(), value.value()));
}
} // namespace

bool Condition::isReport() const
{
    const int parts = int(state.has_value()) + int(item.has_value()) + int(index.has_value())
        + int(properties.size()) + int(metadata.size()) + int(error.has_value()) + int(completed)
        + int(there.has_value());
    return parts == 1 && !position && heard.isEmpty() && seen.isEmpty();
}

bool Condition::holds(const Observation &observed) const
{
    const bool isStill = state && (*state == KelvoRenderer::Paused || *state == KelvoRenderer::Stopped);
    return isTold(observed) && (heard.isEmpty() || heard.holds(observed.heard, isStill))
        && (seen.isEmpty() || seen.holds(observed.seen, observed.heard, isStill));
}

QString Condition::unmeasured(const Observation &observed) const
{
    if (!isTold(observed))
        return {};
    const QString unheard = heard.unmeasured(observed.heard);
    return unheard.isEmpty() ? seen.unmeasured(observed.seen, observed.heard) : unheard;
}

QString Condition::measured(const Observation &observed) const
{
    QStringList words;
    if (const QString sound = heard.measured(observed.heard); !sound.isEmpty())
        words.append(QStringLiteral("heard ") + sound);
    if (const QString picture = seen.measured(observed.seen, observed.heard); !picture.isEmpty())
        words.append(QStringLiteral("seen ") + picture);
    return words.join(QStringLiteral("; "));
}

bool Condition::isTold(const Observation &observed) const
{
    if (there && *there != observed.there)
        return false;
    if (!observed.there)
        return there && !*there;
    const auto hasProperty = [&](const QString &name) {
        return fits(properties.value(name), observed.properties.value(name));
    };
    const auto hasFact = [&](const QString &key) {
        return anyFits(metadata.value(key), observed.metadata.value(key));
    };
    const QStringList names = properties.keys();
    const QStringList keys = metadata.keys();
    return (!state || *state == observed.state) && (!item || *item == observed.item)
        && (!index || *index == observed.index)
        && (!position || (observed.position && isNear(*position, *observed.position, observed.resolution)))
        && std::all_of(names.cbegin(), names.cend(), hasProperty)
        && std::all_of(keys.cbegin(), keys.cend(), hasFact)
        && (!error || (*error == AnyError ? !observed.errors.isEmpty() : observed.errors.contains(*error)))
        && (!completed || observed.completed > 0);
}

bool Condition::isToldBy(const Event &event) const
{
    if (event.renderer != renderer)
        return false;
    if (there)
        return event.kind == (*there ? Event::Appears : Event::Vanishes);
    if (event.kind != Event::Report)
        return false;
    const QVariantList &told = event.arguments;
    if (state)
        return event.name == QLatin1String("stateChanged")
            && told.value(0).value<KelvoRenderer::State>() == *state;
    if (item || index)
        return event.name == QLatin1String("mediaChanged")
            && (item ? told.value(1).toString() == *item : told.value(0).toInt() == *index);
    if (error)
        return event.name == QLatin1String("error")
            && (*error == AnyError || told.value(0).toInt() == *error);
    if (completed)
        return event.name == QLatin1String("playbackCompleted");
    const QString key = told.value(0).toString();
    if (event.name == QLatin1String("metadataChanged") && metadata.contains(key))
        return anyFits(metadata.value(key), told.value(1).toList());
    return event.name == QLatin1String("kelvoPropertyChanged") && properties.contains(key)
        && fits(properties.value(key), told.value(1));
}

QString Condition::text() const
{
    QStringList words;
    if (there)
        words.append(*there ? QStringLiteral("the renderer there") : QStringLiteral("the renderer gone"));
    if (state)
        words.append(QStringLiteral("state ")
            + QString::fromLatin1(QMetaEnum::fromType<KelvoRenderer::State>().valueToKey(*state)));
    if (item)
        words.append(QStringLiteral("item ") + *item);
    if (index)
        words.append(QStringLiteral("index %1").arg(*index));
    if (position)
        words.append(QStringLiteral("position ") + Quantities::text(*position));
    addAll(words, QStringLiteral("property"), properties);
    addAll(words, QStringLiteral("metadata"), metadata);
    if (error)
        words.append(
            *error == AnyError ? QStringLiteral("any error") : QStringLiteral("error %1").arg(*error));
    if (completed)
        words.append(QStringLiteral("playback completed"));
    if (!heard.isEmpty())
        words.append(heard.text());
    if (!seen.isEmpty())
        words.append(seen.text());
    return words.join(QStringLiteral(", "));
}
