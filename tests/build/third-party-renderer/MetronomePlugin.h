// SPDX-License-Identifier: MIT
#pragma once

#include <KelvoPlugin.h>

#include "MetronomeRenderer.h"

#include <QObject>

/// The root object of the library: brings one renderer.
class MetronomePlugin : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "third-party.json")
    Q_INTERFACES(KelvoPlugin)
public:
    bool start(KelvoRegistry *registry, QString *error) override;
    void stop() override;

private:
    KelvoRegistry *m_registry = nullptr;
    MetronomeRenderer m_renderer;
};
