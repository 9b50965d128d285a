// SPDX-License-Identifier: MIT
#include "KelvoAnswer.h"
#include "SimulatedClock.h"
#include "SimulatedRenderer.h"
#include "SimulatorProperties.h"

#include <QRegularExpression>

#include <cmath>

namespace {
constexpr double MaximumSpeed = 64;

bool isText(const QVariant &value)
{
    return value.typeId() == QMetaType::QString;
}

std::optional<bool> asBool(const QVariant &value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool();
    if (isText(value) && (value == QLatin1String("true") || value == QLatin1String("false")))
        return value == QLatin1String("true");
    return std::nullopt;
}

std::optional<int> asInt(const QVariant &value)
{
    bool ok = false;
    const int number = value.toInt(&ok);
    const bool numeric
        = value.typeId() == QMetaType::Int || value.typeId() == QMetaType::UInt || isText(value);
    return ok && numeric ? std::optional<int>(number) : std::nullopt;
}

std::optional<uint> asUint(const QVariant &value)
{
    bool ok = false;
    const uint number = value.toUInt(&ok);
    const bool negative = asInt(value).value_or(0) < 0 && value.typeId() == QMetaType::Int;
    return ok && !negative && value.typeId() != QMetaType::Bool ? std::optional<uint>(number) : std::nullopt;
}
} // namespace

const QHash<QString, SimulatedRenderer::Setter> &SimulatedRenderer::setters()
{
    namespace Sim = SimulatorProperties;
    static const QHash<QString, Setter> table{
        {PropertyVolume, &SimulatedRenderer::setVolume},
        {PropertyPlaybackSpeed, &SimulatedRenderer::setSpeed},
        {KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, &SimulatedRenderer::setAutoAdvance},
        {PropertyXid, &SimulatedRenderer::setXid},
        {PropertyAutopaint, &SimulatedRenderer::setAutopaint},
        {PropertyRenderRectangle, &SimulatedRenderer::setRectangle},
        {PropertyCurrentFrameOnPause, &SimulatedRenderer::setFrameOnPause},
        {KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, &SimulatedRenderer::setPolicyOverride},
        {PropertyColorKey, &SimulatedRenderer::setColorKey},
        {Sim::Latency, &SimulatedRenderer::setLatency},
        {Sim::Failure, &SimulatedRenderer::setFailure},
        {Sim::Error, &SimulatedRenderer::setError},
        {Sim::Buffering, &SimulatedRenderer::setBuffering},
        {Sim::Stall, &SimulatedRenderer::setStall},
        {Sim::Vanish, &SimulatedRenderer::setVanish},
        {Sim::Name, &SimulatedRenderer::setName},
        {Sim::Duration, &SimulatedRenderer::setDuration},
        {Sim::Seekable, &SimulatedRenderer::setSeekable},
        {Sim::Metadata, &SimulatedRenderer::setMetadata},
        {Sim::Clock, &SimulatedRenderer::setClock},
        {Sim::Advance, &SimulatedRenderer::setAdvance},
    };
    return table;
}

void SimulatedRenderer::setKelvoProperty(const QString &name, const QVariant &value)
{
    const auto task = [this, name, value] {
        doSetProperty(name, value);
    };
    if (name.startsWith(SimulatorProperties::Prefix))
        later(0, task);
    else
        command(task);
}

void SimulatedRenderer::kelvoProperty(const QString &name, QObject *receiver, const char *slot)
{
    command([this, name, answer = KelvoAnswer(receiver, slot)] { answer.deliver({name, valueOf(name)}); });
}

QVariant SimulatedRenderer::valueOf(const QString &name) const
{
    if (name == PropertyPosition)
        return position() / 1000;
    if (name == SimulatorProperties::Clock) {
        return QString(
            m_clock->isManual() ? SimulatorProperties::ClockManual : SimulatorProperties::ClockReal);
    }
    return m_properties.value(name);
}

void SimulatedRenderer::doSetProperty(const QString &name, const QVariant &value)
{
    const auto setter = setters().constFind(name);
    if (setter == setters().cend()) {
        reportError(KelvoError::NotSupported, name);
        return;
    }
    const Outcome outcome = (this->**setter)(value);
    if (outcome == Outcome::Invalid)
        reportError(KelvoError::InvalidValue, name + QLatin1String(" = ") + value.toString());
    else if (outcome == Outcome::Done)
        changed(name, m_properties.value(name));
}

void SimulatedRenderer::changed(const QString &name, const QVariant &value)
{
    m_properties[name] = value;
    report([this, name, value] { Q_EMIT kelvoPropertyChanged(name, value); });
}

SimulatedRenderer::Outcome SimulatedRenderer::storeBool(QLatin1String name, const QVariant &value)
{
    const std::optional<bool> flag = asBool(value);
    if (!flag)
        return Outcome::Invalid;
    m_properties[name] = *flag;
    return Outcome::Done;
}

SimulatedRenderer::Outcome SimulatedRenderer::storeMilliseconds(QLatin1String name, const QVariant &value)
{
    const std::optional<int> time = asInt(value);
    if (!time || *time < 0)
        return Outcome::Invalid;
    m_properties[name] = *time;
    return Outcome::Done;
}

SimulatedRenderer::Outcome SimulatedRenderer::setVolume(const QVariant &value)
{
    const std::optional<uint> volume = asUint(value);
    if (!volume || *volume > 99)
        return Outcome::Invalid;
    m_properties[PropertyVolume] = *volume;
    return Outcome::Done;
}

SimulatedRenderer::Outcome SimulatedRenderer::setSpeed(const QVariant &value)
{
    bool ok = false;
    const double speed = value.toDouble(&ok);
    if (!ok || value.typeId() == QMetaType::Bool || !(std::abs(speed) > 0) || std::abs(speed) > MaximumSpeed)
        return Outcome::Invalid;
    m_properties[PropertyPlaybackSpeed] = speed;
    m_position.moveTo(position(), m_clock->now());
    m_position.setSpeed(speed, m_clock->now());
    updateRunning();
    return Outcome::Done;
}

SimulatedRenderer::Outcome SimulatedRenderer::setAutoAdvance(const QVariant &value)
{
    return storeBool(KELVO_RENDERER_PROPERTY_AUTO_ADVANCE, value);
}

SimulatedRenderer::Outcome SimulatedRenderer::setXid(const QVariant &value)
{
    const std::optional<uint> window = asUint(value);
    if (!window)
        return Outcome::Invalid;
    // With its window a renderer learns that somebody has chosen it.
    changed(PropertyXid, *window);
    tellAgain();
    return Outcome::Reported;
}

SimulatedRenderer::Outcome SimulatedRenderer::setAutopaint(const QVariant &value)
{
    return storeBool(PropertyAutopaint, value);
}

SimulatedRenderer::Outcome SimulatedRenderer::setRectangle(const QVariant &value)
{
    static const QRegularExpression rectangle(QStringLiteral("^-?\\d+,-?\\d+,\\d+,\\d+$"));
    if (!isText(value) || !rectangle.match(value.toString()).hasMatch())
        return Outcome::Invalid;
    m_properties[PropertyRenderRectangle] = value;
    return Outcome::Done;
}

SimulatedRenderer::Outcome SimulatedRenderer::setFrameOnPause(const QVariant &value)
{
    return storeBool(PropertyCurrentFrameOnPause, value);
}

SimulatedRenderer::Outcome SimulatedRenderer::setPolicyOverride(const QVariant &value)
{
    return storeBool(KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, value);
}

SimulatedRenderer::Outcome SimulatedRenderer::setColorKey(const QVariant &value)
{
    const std::optional<uint> color = asUint(value);
    if (!color)
        return Outcome::Invalid;
    m_properties[PropertyColorKey] = *color;
    return Outcome::Done;
}
