// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoPlugin.h"

#include <QObject>

#include <memory>

class ItemRenderer;

/// Brings the GStreamer renderer. GStreamer itself starts on the engine thread, since that can take a second
/// on a cold machine; the renderer is added to the registry when it is ready.
class GstRendererPlugin : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "gst-renderer.json")
    Q_INTERFACES(KelvoPlugin)
public:
    GstRendererPlugin();
    ~GstRendererPlugin() override;

    bool start(KelvoRegistry *registry, QString *error) override;
    void stop() override;

private:
    void engineStarted(const QString &problem);

    KelvoRegistry *m_registry = nullptr;
    std::unique_ptr<ItemRenderer> m_renderer;
    bool m_added = false;
};
