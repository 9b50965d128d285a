// SPDX-License-Identifier: MIT
// The properties of SimulatorProperties.h: time and trouble on the tester's demand.
#include "SimulatedClock.h"
#include "SimulatedRenderer.h"
#include "SimulatorProperties.h"

#include <QStringList>

namespace Sim = SimulatorProperties;

namespace {
/// "first,rest" of a value that may also be a mere number.
std::pair<QString, QString> halves(const QVariant &value)
{
    const QString text = value.toString();
    const qsizetype comma = text.indexOf(QLatin1Char(','));
    return comma < 0 ? std::pair(text, QString()) : std::pair(text.left(comma), text.mid(comma + 1));
}

std::optional<KelvoError::Code> asCode(const QString &text)
{
    bool ok = false;
    const int code = text.toInt(&ok);
    return ok && code >= 0 ? std::optional(KelvoError::Code(code)) : std::nullopt;
}
} // namespace

SimulatedRenderer::Outcome SimulatedRenderer::setLatency(const QVariant &value)
{
    return storeMilliseconds(Sim::Latency, value);
}

SimulatedRenderer::Outcome SimulatedRenderer::setFailure(const QVariant &value)
{
    const auto [first, rest] = halves(value);
    const std::optional<KelvoError::Code> code = asCode(first);
    bool ok = true;
    const int items = rest.isEmpty() ? 1 : rest.toInt(&ok);
    if (!code || !ok || items < 1)
        return Outcome::Invalid;
    m_properties[Sim::Failure] = int(*code);
    m_itemsToFail = *code == KelvoError::NoError ? 0 : items;
    return Outcome::Done;
}

SimulatedRenderer::Outcome SimulatedRenderer::setError(const QVariant &value)
{
    const auto [first, text] = halves(value);
    const std::optional<KelvoError::Code> code = asCode(first);
    if (!code || *code == KelvoError::NoError)
        return Outcome::Invalid;
    m_properties[Sim::Error] = int(*code);
    if (m_state == Stopped)
        reportError(*code, text);
    else
        failEntry(*code, text);
    return Outcome::Done;
}

SimulatedRenderer::Outcome SimulatedRenderer::setBuffering(const QVariant &value)
{
    const Outcome outcome = storeMilliseconds(Sim::Buffering, value);
    if (outcome == Outcome::Done && m_loaded && m_bufferStep < 0 && number(Sim::Buffering) > 0)
        startBuffering();
    return outcome;
}

SimulatedRenderer::Outcome SimulatedRenderer::setStall(const QVariant &value)
{
    const Outcome outcome = storeBool(Sim::Stall, value);
    updateRunning();
    return outcome;
}

SimulatedRenderer::Outcome SimulatedRenderer::setVanish(const QVariant &value)
{
    bool ok = false;
    const int time = value.toInt(&ok);
    if (!ok)
        return Outcome::Invalid;
    changed(Sim::Vanish, time);
    report([this, time] { Q_EMIT vanishRequested(time); });
    return Outcome::Reported;
}

SimulatedRenderer::Outcome SimulatedRenderer::setName(const QVariant &value)
{
    if (value.typeId() != QMetaType::QString)
        return Outcome::Invalid;
    m_name = value.toString();
    m_properties[Sim::Name] = m_name;
    report([this, name = m_name] { Q_EMIT nameChanged(name); });
    return Outcome::Done;
}

SimulatedRenderer::Outcome SimulatedRenderer::setDuration(const QVariant &value)
{
    return storeMilliseconds(Sim::Duration, value);
}

SimulatedRenderer::Outcome SimulatedRenderer::setSeekable(const QVariant &value)
{
    return storeBool(Sim::Seekable, value);
}

SimulatedRenderer::Outcome SimulatedRenderer::setMetadata(const QVariant &value)
{
    QVariantMap facts = value.toMap();
    const QString text = value.toString();
    const qsizetype sign = text.indexOf(QLatin1Char('='));
    if (sign > 0)
        facts.insert(text.left(sign), text.mid(sign + 1));
    if (facts.isEmpty())
        return Outcome::Invalid;
    for (auto fact = facts.cbegin(); fact != facts.cend(); ++fact) {
        const QList<QVariant> values
            = fact->typeId() == QMetaType::QVariantList ? fact->toList() : QList<QVariant>{*fact};
        if (values.isEmpty())
            continue;
        // What the tester wants told is told, news or not.
        m_facts.take(fact.key(), values);
        tellFact({fact.key(), values});
    }
    m_properties[Sim::Metadata] = value;
    return Outcome::Done;
}

SimulatedRenderer::Outcome SimulatedRenderer::setClock(const QVariant &value)
{
    const bool manual = value == QString(Sim::ClockManual);
    if (!manual && value != QString(Sim::ClockReal))
        return Outcome::Invalid;
    m_clock->setManual(manual);
    changed(Sim::Clock, value);
    return Outcome::Reported;
}

/// Reported when the clock has arrived.
SimulatedRenderer::Outcome SimulatedRenderer::setAdvance(const QVariant &value)
{
    if (!m_clock->isManual() || storeMilliseconds(Sim::Advance, value) != Outcome::Done)
        return Outcome::Invalid;
    m_clock->advance(number(Sim::Advance), this, [this, time = number(Sim::Advance)] {
        changed(Sim::Advance, time);
        flush();
    });
    return Outcome::Reported;
}
