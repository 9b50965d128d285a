// SPDX-License-Identifier: MIT
#include "SimulatorPlugin.h"

#include "ItemRenderer.h"
#include "KelvoMessageHandler.h"
#include "KelvoRegistry.h"
#include "SimulatedEngine.h"
#include "SimulatedSource.h"
#include "SimulatorProperties.h"

#include <algorithm>

SimulatorPlugin::SimulatorPlugin() = default;

SimulatorPlugin::~SimulatorPlugin()
{
    stop();
}

bool SimulatorPlugin::start(KelvoRegistry *registry, QString *error)
{
    m_registry = registry;
    m_clock = std::make_unique<SimulatedClock>();
    const bool complete = addRenderer(QStringLiteral("KelvoSimulatorA"), QStringLiteral("Simulator A"))
        && addRenderer(QStringLiteral("KelvoSimulatorB"), QStringLiteral("Simulator B"))
        && addRenderer(QStringLiteral("KelvoSimulatorUnnamed"), QString())
        && addSource(QStringLiteral("KelvoSimulatorSourceA"), QStringLiteral("Simulated source A"), {})
        && addSource(QStringLiteral("KelvoSimulatorSourceB"), QStringLiteral("Simulated source B"),
            {QStringLiteral("modelNumber"), QStringLiteral("serialNumber"), QStringLiteral("iconURL")});
    if (!complete) {
        stop();
        *error = QStringLiteral("the registry refused a simulated renderer or source");
    }
    return complete;
}

void SimulatorPlugin::stop()
{
    // Each leaves its list before the registry tells of it: whoever hears that may unload this plug-in again.
    while (!m_sources.empty()) {
        const auto source = std::move(m_sources.back());
        m_sources.pop_back();
        m_registry->removeSource(source.get());
    }
    while (!m_renderers.empty()) {
        const auto renderer = std::move(m_renderers.back());
        m_renderers.pop_back();
        m_registry->removeRenderer(renderer.get());
    }
    m_clock.reset();
}

bool SimulatorPlugin::addRenderer(const QString &uuid, const QString &name)
{
    auto engine = std::make_unique<SimulatedEngine>(m_clock.get(), name);
    connect(engine.get(), &SimulatedEngine::vanishRequested, this,
        [this, uuid, name](int milliseconds) { vanish(uuid, name, milliseconds); });
    auto renderer = std::make_unique<ItemRenderer>(std::move(engine), uuid);
    setUp(renderer.get());
    // First into the list, so that whoever hears of it finds everything in place.
    m_renderers.push_back(std::move(renderer));
    const bool accepted = m_registry->addRenderer(m_renderers.back().get());
    if (!accepted)
        m_renderers.pop_back();
    return accepted;
}

bool SimulatorPlugin::addSource(const QString &uuid, const QString &name, const QStringList &refused)
{
    m_sources.push_back(std::make_unique<SimulatedSource>(uuid, name, refused));
    const bool accepted = m_registry->addSource(m_sources.back().get());
    if (!accepted)
        m_sources.pop_back();
    return accepted;
}

void SimulatorPlugin::vanish(const QString &uuid, const QString &name, int milliseconds)
{
    const auto found = std::find_if(m_renderers.begin(), m_renderers.end(),
        [&uuid](const auto &renderer) { return renderer->uuid() == uuid; });
    if (found == m_renderers.end())
        return;
    if (milliseconds >= 0) {
        m_clock->after(milliseconds, this, [this, uuid, name] { addRenderer(uuid, name); });
    }
    const auto renderer = std::move(*found);
    m_renderers.erase(found);
    m_registry->removeRenderer(renderer.get());
}

void SimulatorPlugin::setUp(KelvoRenderer *renderer) const
{
    const QString wishes = qEnvironmentVariable(SimulatorProperties::environment);
    for (const QString &wish : wishes.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const qsizetype sign = wish.indexOf(QLatin1Char('='));
        if (sign > 0)
            renderer->setKelvoProperty(wish.left(sign).trimmed(), wish.mid(sign + 1).trimmed());
        else
            qCWarning(lcKelvo) << SimulatorProperties::environment << "holds" << wish << "without a value";
    }
}
