// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoContent.h"
#include "KelvoError.h"
#include "KelvoItemFacts.h"
#include "KelvoRenderer.h"

#include <QPointer>

#include <functional>
#include <optional>

class Engine;
class KelvoPlaylist;

/// Tells what a renderer has to tell: each change once, all of it through the engine's queue, so that whoever hears it may
/// call anything, and may delete the renderer.
class Reporter
{
public:
    /// What is in play.
    struct Item
    {
        KelvoPlaylist *playlist = nullptr; ///< null: it belongs to none
        int index = -1;
        KelvoContent content;
    };

    /// Neither is owned; both must outlive the reporter.
    Reporter(KelvoRenderer &renderer, Engine &engine);

    /// The state told last.
    KelvoRenderer::State state() const { return m_state; }
    /// On its way out of Stopped it passes through Transitioning, which a player that somebody else starts may skip.
    void setState(KelvoRenderer::State state);
    /// Another item is in play, or the same one anew or at another index.
    void announce(const Item &item);
    /// Another item is current, without being played.
    void move(const Item &item);
    /// Told when it is news.
    void takeFact(const QString &key, const QList<QVariant> &values);
    void tellCompleted();
    /// 0..1; told on change.
    void setBuffering(float fraction);
    /// 0..1; told on change.
    void setScanning(float fraction);
    void tellProperty(const QString &name, const QVariant &value);
    void tellName(const QString &name);
    void tellError(const KelvoError &problem);

    /// For whoever has chosen the renderer only now. `item`: what is in play, none while Stopped.
    void tellAgain(const std::optional<Item> &item, bool policyOverride);

private:
    void tell(std::function<void(KelvoRenderer &)> report);
    void tellState(KelvoRenderer::State state);
    void tellItem(const Item &item);
    void tellFact(const KelvoItemFacts::Fact &fact);

    KelvoRenderer &m_renderer;
    Engine &m_engine;
    KelvoRenderer::State m_state = KelvoRenderer::Stopped;
    QPointer<KelvoPlaylist> m_playlist; ///< the one told as in play
    KelvoItemFacts m_facts;
    float m_buffering = 1;
    float m_scanning = 1;
};
