// SPDX-License-Identifier: MIT
#include "Reporter.h"

#include "Engine.h"
#include "KelvoPlaylist.h"

#include <utility>

Reporter::Reporter(KelvoRenderer &renderer, Engine &engine)
    : m_renderer(renderer)
    , m_engine(engine)
{
}

void Reporter::tell(std::function<void(KelvoRenderer &)> report)
{
    m_engine.post([&renderer = m_renderer, report = std::move(report)] { report(renderer); });
}

void Reporter::setState(KelvoRenderer::State state)
{
    if (state == m_state)
        return;
    if (m_state == KelvoRenderer::Stopped && state != KelvoRenderer::Transitioning)
        setState(KelvoRenderer::Transitioning);
    m_state = state;
    tellState(state);
}

void Reporter::tellState(KelvoRenderer::State state)
{
    tell([state](KelvoRenderer &renderer) { Q_EMIT renderer.stateChanged(state); });
}

void Reporter::announce(const Item &item)
{
    if (!item.playlist)
        tell([](KelvoRenderer &renderer) { Q_EMIT renderer.playlistChanged(nullptr); });
    m_facts.announce(item.content, item.playlist);
    tellItem(item);
}

void Reporter::tellItem(const Item &item)
{
    if (item.playlist && item.playlist != m_playlist) {
        tell([guarded = QPointer<KelvoPlaylist>(item.playlist)](
                 KelvoRenderer &renderer) { Q_EMIT renderer.playlistChanged(guarded); });
    }
    m_playlist = item.playlist;
    tell([index = item.index, content = item.content](
             KelvoRenderer &renderer) { Q_EMIT renderer.mediaChanged(index, content); });
}

void Reporter::move(const Item &item)
{
    m_facts.announce(item.content, true);
    tell([index = item.index, content = item.content](
             KelvoRenderer &renderer) { Q_EMIT renderer.mediaChanged(index, content); });
}

void Reporter::takeFact(const QString &key, const QList<QVariant> &values)
{
    if (m_facts.take(key, values))
        tellFact({key, values});
}

void Reporter::tellFact(const KelvoItemFacts::Fact &fact)
{
    tell([fact](KelvoRenderer &renderer) { Q_EMIT renderer.metadataChanged(fact.key, fact.values); });
}

void Reporter::tellCompleted()
{
    tell([](KelvoRenderer &renderer) { Q_EMIT renderer.playbackCompleted(); });
}

void Reporter::setBuffering(float fraction)
{
    if (std::exchange(m_buffering, fraction) != fraction)
        tell([fraction](KelvoRenderer &renderer) { Q_EMIT renderer.bufferingInfo(fraction); });
}

void Reporter::setScanning(float fraction)
{
    if (std::exchange(m_scanning, fraction) != fraction)
        tell([fraction](KelvoRenderer &renderer) { Q_EMIT renderer.scanningInfo(fraction); });
}

void Reporter::tellProperty(const QString &name, const QVariant &value)
{
    tell([name, value](KelvoRenderer &renderer) { Q_EMIT renderer.kelvoPropertyChanged(name, value); });
}

void Reporter::tellName(const QString &name)
{
    tell([name](KelvoRenderer &renderer) { Q_EMIT renderer.nameChanged(name); });
}

void Reporter::tellError(const KelvoError &problem)
{
    tell([problem](KelvoRenderer &renderer) { Q_EMIT renderer.error(problem); });
}

void Reporter::tellAgain(const std::optional<Item> &item, bool policyOverride)
{
    tell([](KelvoRenderer &renderer) { Q_EMIT renderer.playlistChanged(nullptr); });
    m_playlist = nullptr;
    if (item)
        tellItem(*item);
    else
        m_facts.clear();
    if (m_state == KelvoRenderer::Paused)
        tellState(KelvoRenderer::Playing);
    tellState(m_state);
    for (const KelvoItemFacts::Fact &fact : m_facts.told())
        tellFact(fact);
    // Also where there is none: one of the renderer that was chosen before may still show.
    tellProperty(KelvoRenderer::KELVO_RENDERER_PROPERTY_POLICY_OVERRIDE, policyOverride);
}
