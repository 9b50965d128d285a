// SPDX-License-Identifier: MIT
#pragma once

#include <KelvoPlugin.h>

#include <QObject>

#include <memory>

class KelvoRenderer;

/// The root object of the library: brings one renderer.
class SilencePlugin : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "silence.json")
    Q_INTERFACES(KelvoPlugin)
public:
    SilencePlugin();
    ~SilencePlugin() override;

    bool start(KelvoRegistry *registry, QString *error) override;
    void stop() override;

private:
    KelvoRegistry *m_registry = nullptr;
    std::unique_ptr<KelvoRenderer> m_renderer;
};
