// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoPlugin.h"
#include "SimulatedClock.h"

#include <QObject>

#include <memory>
#include <vector>

class ItemRenderer;
class KelvoRegistry;
class KelvoRenderer;
class SimulatedSource;

/// Brings three renderers, one of them without a name, and two sources, all living by one clock.
class SimulatorPlugin : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "simulator.json")
    Q_INTERFACES(KelvoPlugin)
public:
    SimulatorPlugin();
    ~SimulatorPlugin() override;

    bool start(KelvoRegistry *registry, QString *error) override;
    void stop() override;

private:
    bool addRenderer(const QString &uuid, const QString &name);
    bool addSource(const QString &uuid, const QString &name, const QStringList &refused);
    void vanish(const QString &uuid, const QString &name, int milliseconds);
    void setUp(KelvoRenderer *renderer) const;

    KelvoRegistry *m_registry = nullptr;
    std::unique_ptr<SimulatedClock> m_clock;
    std::vector<std::unique_ptr<ItemRenderer>> m_renderers;
    std::vector<std::unique_ptr<SimulatedSource>> m_sources;
};
