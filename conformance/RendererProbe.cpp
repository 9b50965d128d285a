// SPDX-License-Identifier: MIT
#include "RendererProbe.h"

#include "KelvoPlaylist.h"

#include <QThread>

#include <algorithm>
#include <utility>

namespace {
/// The tester's own remote control, not a report.
bool isControl(const QString &property)
{
    return property.startsWith(QLatin1String("sim-"));
}

QVariant lastOf(const QList<QPair<QString, QVariant>> &facts, const QString &name)
{
    const auto found
        = std::find_if(facts.crbegin(), facts.crend(), [&](const auto &fact) { return fact.first == name; });
    return found == facts.crend() ? QVariant() : found->second;
}

bool isRefusal(const KelvoError &error)
{
    return error.code() == KelvoError::NotSeekable || error.code() == KelvoError::NotSupported
        || error.code() == KelvoError::CommandRefused;
}
} // namespace

RendererProbe::RendererProbe(KelvoRenderer &renderer, std::function<qint64()> clock)
    : m_clock(std::move(clock))
{
    connect(&renderer, &KelvoRenderer::stateChanged, this, &RendererProbe::hearState);
    connect(&renderer, &KelvoRenderer::mediaChanged, this, [this](int index, const KelvoContent &content) {
        note(QStringLiteral("media %1").arg(index));
        if (content.uuid != m_item.uuid)
            m_factsTold.clear();
        m_item = content;
        media.append({index, content});
    });
    connect(&renderer, &KelvoRenderer::playbackCompleted, this, [this] {
        note(QStringLiteral("completed"));
        ++completed;
        if (m_state != KelvoRenderer::Stopped)
            violations.append(QStringLiteral("completed while ") + valueText(m_state));
    });
    connect(&renderer, &KelvoRenderer::playlistChanged, this, [this](KelvoPlaylist *playlist) {
        note(playlist ? QStringLiteral("playlist") : QStringLiteral("no playlist"));
        playlists.append(playlist);
        if (!playlist)
            m_factsTold.clear();
    });
    connect(&renderer, &KelvoRenderer::metadataChanged, this, &RendererProbe::hearMetadata);
    connect(&renderer, &KelvoRenderer::kelvoPropertyChanged, this,
        [this](const QString &name, const QVariant &value) {
            if (isControl(name))
                return;
            note(name + QLatin1String(" = ") + value.toString());
            properties.append({name, value});
        });
    connect(&renderer, &KelvoRenderer::bufferingInfo, this,
        [this](float fraction) { hearFraction(QStringLiteral("buffering"), fraction, &m_lastBuffering); });
    connect(&renderer, &KelvoRenderer::scanningInfo, this,
        [this](float fraction) { hearFraction(QStringLiteral("scanning"), fraction, &m_lastScanning); });
    connect(&renderer, &KelvoRenderer::error, this, [this](const KelvoError &error) {
        const QString text
            = QStringLiteral("error %1 (%2)").arg(QString::number(error.code()), error.message());
        note(text);
        errors.append(error);
        if (isRefusal(error))
            refusals.append(text);
    });
}

int RendererProbe::errorsOf(KelvoError::Code code) const
{
    return int(std::count_if(
        errors.cbegin(), errors.cend(), [code](const KelvoError &error) { return error.code() == code; }));
}

QVariant RendererProbe::property(const QString &name) const
{
    return lastOf(properties, name);
}

int RendererProbe::metadataCount(const QString &key) const
{
    return int(std::count_if(metadataHeard.cbegin(), metadataHeard.cend(),
        [&key](const auto &fact) { return fact.first == key; }));
}

QVariant RendererProbe::metadata(const QString &key) const
{
    return lastOf(metadataHeard, key);
}

void RendererProbe::clear()
{
    states.clear();
    media.clear();
    playlists.clear();
    properties.clear();
    metadataHeard.clear();
    errors.clear();
    completed = 0;
    events.append(QStringLiteral("|"));
}

void RendererProbe::statusAnswer(const QString &playlistId, uint index, int state, const QString &objectId)
{
    if (m_inCommand)
        violations.append(QStringLiteral("the status was answered inside the request"));
    statusAnswers.append({playlistId, index, state, objectId});
    Q_EMIT answered();
}

void RendererProbe::positionAnswer(uint seconds)
{
    if (m_inCommand)
        violations.append(QStringLiteral("the position was answered inside the request"));
    positionAnswers.append(seconds);
    Q_EMIT answered();
}

void RendererProbe::propertyAnswer(const QString &name, const QVariant &value)
{
    if (m_inCommand)
        violations.append(QStringLiteral("a property was answered inside the request"));
    propertyAnswers.append({name, value});
    Q_EMIT answered();
}

void RendererProbe::note(const QString &event)
{
    events.append(event);
    m_timedEvents.append({m_clock ? m_clock() : 0, event});
    if (m_inCommand)
        violations.append(event + QLatin1String(" was reported inside a command"));
    if (QThread::currentThread() != thread())
        violations.append(event + QLatin1String(" was reported on another thread"));
}

void RendererProbe::hearState(KelvoRenderer::State state)
{
    note(valueText(state));
    const bool skipped
        = m_state == KelvoRenderer::Stopped && state != KelvoRenderer::Transitioning && state != m_state;
    const bool repeated = state == m_state && !std::exchange(m_sameStateExpected, false);
    if (repeated || skipped || state < KelvoRenderer::Stopped || state > KelvoRenderer::Transitioning)
        violations.append(valueText(m_state) + QLatin1String(" -> ") + valueText(state));
    m_state = state;
    states.append(state);
}

void RendererProbe::hearFraction(const QString &what, float fraction, float *last)
{
    const QString event = what + QStringLiteral(" %1").arg(double(fraction));
    note(event);
    if (!(fraction >= 0 && fraction <= 1))
        violations.append(event + QLatin1String(" is not within 0..1"));
    if (qFuzzyCompare(1 + fraction, 1 + *last))
        violations.append(event + QLatin1String(" was reported twice"));
    *last = fraction;
}

void RendererProbe::hearMetadata(const QString &key, const QList<QVariant> &values)
{
    note(QLatin1String("metadata ") + key);
    if (values.isEmpty())
        violations.append(QLatin1String("metadata without a value: ") + key);
    // Whoever shows facts appends them; an entry of a list is another medium.
    if (m_factsOf != m_item.url)
        m_factsTold.clear();
    m_factsOf = m_item.url;
    const QString text = values.value(0).toString();
    if (m_factsTold.contains(key) && m_factsTold.value(key) == text)
        violations.append(QStringLiteral("metadata %1 was told twice: %2").arg(key, text));
    m_factsTold.insert(key, text);
    metadataHeard.append({key, values.value(0)});
}
