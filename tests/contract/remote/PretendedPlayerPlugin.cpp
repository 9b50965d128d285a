// SPDX-License-Identifier: MIT
#include "ItemRenderer.h"
#include "KelvoPlugin.h"
#include "KelvoRegistry.h"
#include "PretendedPlayer.h"
#include "RemotePlayer.h"

/// A remote player for the renderer contract.
class PretendedPlayerPlugin : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "pretended-player.json")
    Q_INTERFACES(KelvoPlugin)
public:
    bool start(KelvoRegistry *registry, QString *) override
    {
        m_registry = registry;
        auto player = std::make_unique<PretendedPlayer>();
        // Into the registry once all that the player says at first is known.
        connect(
            player.get(), &RemoteTransport::volumeReported, this,
            [this] {
                if (m_renderer && !m_registry->findRendererByUuid(m_renderer->uuid()))
                    m_registry->addRenderer(m_renderer.get());
            },
            Qt::QueuedConnection);
        m_renderer = std::make_unique<ItemRenderer>(
            std::make_unique<RemotePlayer>(std::move(player), QStringLiteral("Pretended player")),
            QStringLiteral("pretended-player"));
        return true;
    }
    void stop() override
    {
        const auto renderer = std::move(m_renderer);
        if (renderer && m_registry->findRendererByUuid(renderer->uuid()))
            m_registry->removeRenderer(renderer.get());
    }

private:
    KelvoRegistry *m_registry = nullptr;
    std::unique_ptr<ItemRenderer> m_renderer;
};

#include "PretendedPlayerPlugin.moc"
