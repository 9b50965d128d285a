// SPDX-License-Identifier: MIT
#include "ItemRenderer.h"
#include "KelvoPlugin.h"
#include "KelvoRegistry.h"
#include "SimulatedClock.h"
#include "SimulatedEngine.h"

#include <QTimer>

namespace {
/// What it does wrong is named by the environment variable KELVO_WRONG: see the operations. Without it, nothing.
class WrongRenderer : public ItemRenderer
{
public:
    using ItemRenderer::ItemRenderer;

    void pause() override
    {
        if (is("reports-inside-commands"))
            Q_EMIT kelvoPropertyChanged(QStringLiteral("volume"), 50U);
        ItemRenderer::pause();
    }
    void setPosition(int seconds, int mode) override
    {
        if (is("refuses-to-seek")) {
            QTimer::singleShot(0, this, [this] {
                Q_EMIT error({KelvoError::NotSeekable, QStringLiteral("no way but forward")});
            });
            return;
        }
        if (is("ignores-seeks"))
            return;
        ItemRenderer::setPosition(seconds, is("relative-is-absolute") ? int(SeekAbsolute) : mode);
    }
    void pauseAt(uint seconds) override
    {
        if (!is("forgets-pause-at"))
            ItemRenderer::pauseAt(seconds);
    }
    void stop() override
    {
        if (!is("does-not-stop"))
            ItemRenderer::stop();
    }

private:
    static bool is(const char *wrong) { return qgetenv("KELVO_WRONG") == wrong; }
};
} // namespace

class WrongRendererPlugin : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "wrong-renderer.json")
    Q_INTERFACES(KelvoPlugin)
public:
    bool start(KelvoRegistry *registry, QString *) override
    {
        m_registry = registry;
        m_clock = std::make_unique<SimulatedClock>();
        m_renderer = std::make_unique<WrongRenderer>(
            std::make_unique<SimulatedEngine>(m_clock.get(), QStringLiteral("Wrong <renderer>")),
            QStringLiteral("wrong-renderer"));
        return m_registry->addRenderer(m_renderer.get());
    }
    void stop() override
    {
        const auto renderer = std::move(m_renderer);
        if (renderer && m_registry->findRendererByUuid(renderer->uuid()))
            m_registry->removeRenderer(renderer.get());
    }

private:
    KelvoRegistry *m_registry = nullptr;
    std::unique_ptr<SimulatedClock> m_clock;
    std::unique_ptr<ItemRenderer> m_renderer;
};

#include "WrongRendererPlugin.moc"
