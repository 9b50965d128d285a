// SPDX-License-Identifier: MIT
#include "RendererProperties.h"

#include "KelvoRenderer.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace {
enum class Kind { Flag, Volume, Speed, Number, Rectangle };
enum class Access { Set, OnlyReported };
enum class About { Playback, Window };

struct Row
{
    QLatin1String name;
    Kind kind;
    QVariant initial;
    Access access = Access::Set;
    About about = About::Playback;
};

const std::array<Row, 9> &table()
{
    using R = KelvoRenderer;
    static const std::array<Row, 9> rows{{
        {R::KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, Kind::Flag, true},
        {R::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, Kind::Flag, false, Access::OnlyReported},
        {R::PropertyXid, Kind::Number, 0U, Access::Set, About::Window},
        {R::PropertyAutopaint, Kind::Flag, true, Access::Set, About::Window},
        {R::PropertyRenderRectangle, Kind::Rectangle, QString(), Access::Set, About::Window},
        {R::PropertyColorKey, Kind::Number, 0U, Access::OnlyReported},
        {R::PropertyCurrentFrameOnPause, Kind::Flag, false},
        {R::PropertyPlaybackSpeed, Kind::Speed, 1.0},
        {R::PropertyVolume, Kind::Volume, uint(RendererProperties::MaximumVolume)},
    }};
    return rows;
}

const Row *find(const QString &name)
{
    const auto row = std::find_if(
        table().begin(), table().end(), [&name](const Row &each) { return each.name == name; });
    return row == table().end() ? nullptr : row;
}

std::optional<double> number(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return value.toDouble();
    default:
        return std::nullopt;
    }
}

std::optional<QVariant> whole(const QVariant &value, double maximum)
{
    const std::optional<double> given = number(value);
    if (!given || !(*given >= 0 && *given <= maximum) || *given != std::floor(*given))
        return std::nullopt;
    return uint(*given);
}

std::optional<QVariant> speed(const QVariant &value)
{
    const std::optional<double> given = number(value);
    if (!given || !(std::abs(*given) > 0 && std::abs(*given) <= RendererProperties::MaximumSpeed))
        return std::nullopt;
    return *given;
}

std::optional<QVariant> rectangle(const QVariant &value)
{
    static const QRegularExpression form(QStringLiteral("\\A-?\\d{1,6},-?\\d{1,6},\\d{1,6},\\d{1,6}\\z"));
    if (value.typeId() != QMetaType::QString || !form.match(value.toString()).hasMatch())
        return std::nullopt;
    return value;
}

std::optional<QVariant> flag(const QVariant &value)
{
    return value.typeId() == QMetaType::Bool ? std::optional<QVariant>(value) : std::nullopt;
}

/// What a text stands for; the text itself when it stands for nothing.
QVariant read(const QString &text)
{
    if (text == QLatin1String("true") || text == QLatin1String("false"))
        return text == QLatin1String("true");
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    return isNumber ? QVariant(value) : QVariant(text);
}
} // namespace

RendererProperties::RendererProperties()
{
    for (const Row &row : table())
        m_values.insert(row.name, row.initial);
}

bool RendererProperties::isSettable(const QString &name) const
{
    const Row *row = find(name);
    return row && (row->access == Access::Set || m_madeSettable.contains(name));
}

bool RendererProperties::isOfWindow(const QString &name)
{
    const Row *row = find(name);
    return row && row->about == About::Window;
}

std::optional<QVariant> RendererProperties::accepted(const QString &name, const QVariant &value) const
{
    const Row *row = find(name);
    if (!row)
        return std::nullopt;
    const bool isText = m_takesTexts && value.typeId() == QMetaType::QString;
    const QVariant given = isText ? read(value.toString()) : value;
    switch (row->kind) {
    case Kind::Flag:
        return flag(given);
    case Kind::Volume:
        return whole(given, MaximumVolume);
    case Kind::Speed:
        return speed(given);
    case Kind::Number:
        return whole(given, std::numeric_limits<uint>::max());
    case Kind::Rectangle:
        return rectangle(value);
    }
    return std::nullopt;
}

void RendererProperties::set(const QString &name, const QVariant &value)
{
    m_values.insert(name, value);
    m_awaited.remove(name);
}
