// SPDX-License-Identifier: MIT
#include "SilencePlugin.h"

#include "SilenceEngine.h"

#include <KelvoRegistry.h>
#include <playback/ItemRenderer.h>

SilencePlugin::SilencePlugin() = default;

SilencePlugin::~SilencePlugin() = default;

bool SilencePlugin::start(KelvoRegistry *registry, QString *error)
{
    m_registry = registry;
    m_renderer = std::make_unique<ItemRenderer>(
        std::make_unique<SilenceEngine>(), QStringLiteral("org.example.Silence"));
    if (registry->addRenderer(m_renderer.get()))
        return true;
    m_renderer.reset();
    *error = QStringLiteral("there is a renderer of that uuid already");
    return false;
}

void SilencePlugin::stop()
{
    // Out of the registry before it is deleted: who hears of its going may still ask it for its name.
    m_registry->removeRenderer(m_renderer.get());
    m_renderer.reset();
}
