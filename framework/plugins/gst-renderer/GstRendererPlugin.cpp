// SPDX-License-Identifier: MIT
#include "GstRendererPlugin.h"

#include "EngineAhead.h"
#include "EngineSettings.h"
#include "GstEngine.h"
#include "ItemRenderer.h"
#include "KelvoMessageHandler.h"
#include "KelvoRegistry.h"

#include <type_traits>
#include <utility>

extern "C" Q_DECL_EXPORT void kelvoPrepareAhead()
{
    EngineAhead::begin();
}
static_assert(std::is_same_v<decltype(kelvoPrepareAhead), KelvoPrepareAhead>);

GstRendererPlugin::GstRendererPlugin() = default;

GstRendererPlugin::~GstRendererPlugin()
{
    stop();
}

bool GstRendererPlugin::start(KelvoRegistry *registry, QString *)
{
    m_registry = registry;
    auto engine = std::make_unique<GstEngine>(EngineSettings::fromEnvironment());
    connect(engine.get(), &GstEngine::started, this, &GstRendererPlugin::engineStarted);
    engine->start();
    m_renderer = std::make_unique<ItemRenderer>(std::move(engine), QStringLiteral("kelvo-gst-renderer"));
    return true;
}

void GstRendererPlugin::engineStarted(const QString &problem)
{
    if (!problem.isEmpty()) {
        qCWarning(lcKelvo).noquote() << "The GStreamer renderer is not available:" << problem;
        // It is still in the middle of its signal.
        m_renderer.release()->deleteLater();
        return;
    }
    m_added = m_registry->addRenderer(m_renderer.get());
}

void GstRendererPlugin::stop()
{
    // Taken out of here first: whoever hears of the removal may unload this plug-in again.
    const std::unique_ptr<ItemRenderer> renderer = std::move(m_renderer);
    if (renderer && std::exchange(m_added, false))
        m_registry->removeRenderer(renderer.get());
}
