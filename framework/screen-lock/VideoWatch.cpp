// SPDX-License-Identifier: MIT
#include "VideoWatch.h"

#include "KelvoPlaylist.h"
#include "KelvoRegistry.h"

#include <algorithm>
#include <utility>

namespace {
const auto outputFact = QStringLiteral("video-output");
const auto noOutput = QStringLiteral("no video output");
} // namespace

/// What is known of one renderer.
class VideoWatch::Player : public QObject
{
public:
    Player(const KelvoRenderer *renderer, VideoWatch *watch)
        : m_watch(watch)
    {
        connect(renderer, &KelvoRenderer::stateChanged, this, &Player::takeState);
        connect(renderer, &KelvoRenderer::kelvoPropertyChanged, this, &Player::takeProperty);
        connect(renderer, &KelvoRenderer::metadataChanged, this, &Player::takeFact);
        connect(renderer, &KelvoRenderer::mediaChanged, this, &Player::takeItem);
        connect(renderer, &KelvoRenderer::playlistChanged, this, &Player::takePlaylist);
    }

    bool isShown() const { return m_isShown; }

private:
    void takeState(KelvoRenderer::State state)
    {
        m_state = state;
        update();
    }

    void takeProperty(const QString &name, const QVariant &value)
    {
        if (name != KelvoRenderer::PropertyXid)
            return;
        m_hasWindow = value.toUInt() != 0;
        update();
    }

    void takeFact(const QString &key, const QList<QVariant> &values)
    {
        if (key != outputFact)
            return;
        m_hasOutput = values.constFirst().toString() != noOutput;
        update();
    }

    /// The facts about another item are told anew, those about the same one are not.
    void takeItem(int, const KelvoContent &content)
    {
        const bool isOther = content.uuid != m_item.uuid || content.url != m_item.url;
        m_item = content;
        if (isOther)
            forgetFacts();
    }

    void takePlaylist(const KelvoPlaylist *playlist)
    {
        if (!playlist)
            forgetFacts();
    }

    void forgetFacts()
    {
        m_hasOutput = false;
        update();
    }

    void update()
    {
        // On its way from one item to the next, or to another place in one: what comes of it is told soon.
        if (m_state == KelvoRenderer::Transitioning)
            return;
        m_isShown = m_state == KelvoRenderer::Playing && m_hasWindow && m_hasOutput;
        m_watch->update();
    }

    VideoWatch *const m_watch;
    KelvoRenderer::State m_state = KelvoRenderer::Stopped;
    KelvoContent m_item;
    bool m_hasWindow = false;
    bool m_hasOutput = false;
    bool m_isShown = false;
};

VideoWatch::VideoWatch(const KelvoRegistry *registry)
    : m_registry(registry)
{
    connect(registry, &KelvoRegistry::rendererAdded, this, &VideoWatch::follow);
    connect(registry, &KelvoRegistry::rendererRemoved, this, &VideoWatch::forget);
    const QList<KelvoRenderer *> renderers = registry->renderers();
    for (const KelvoRenderer *renderer : renderers)
        follow(renderer->uuid());
}

VideoWatch::~VideoWatch() = default;

void VideoWatch::follow(const QString &uuid)
{
    // Somebody who heard of it before may have taken it out again.
    if (const KelvoRenderer *renderer = m_registry->findRendererByUuid(uuid))
        m_players[uuid] = std::make_unique<Player>(renderer, this);
}

void VideoWatch::forget(const QString &uuid)
{
    m_players.erase(uuid);
    update();
}

void VideoWatch::update()
{
    const bool isShown = std::any_of(
        m_players.cbegin(), m_players.cend(), [](const auto &entry) { return entry.second->isShown(); });
    if (std::exchange(m_isShown, isShown) != isShown)
        Q_EMIT shownChanged(isShown);
}
