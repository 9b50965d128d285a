// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoPlugin.h"

#include <QObject>
#include <QPointer>

#include <memory>

class KelvoPlayCounter;
class TrackerSource;

/// Keeps the tracker store: opens and indexes it, counts what is played, and shows it as a source.
class TrackerSourcePlugin : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "tracker-source.json")
    Q_INTERFACES(KelvoPlugin)
public:
    TrackerSourcePlugin();
    ~TrackerSourcePlugin() override;

    bool start(KelvoRegistry *registry, QString *error) override;
    void stop() override;

private:
    QPointer<KelvoRegistry> m_registry;
    std::unique_ptr<TrackerSource> m_source;
    std::unique_ptr<KelvoPlayCounter> m_counter;
};
