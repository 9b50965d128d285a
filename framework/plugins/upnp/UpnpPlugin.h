// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoPlugin.h"
#include "UpnpTypes.h"

#include <QHash>
#include <QObject>

#include <memory>
#include <unordered_map>

class KelvoRegistry;
class KelvoRenderer;
class UpnpNetwork;
class UpnpSource;

/// Brings every media renderer of the network as a renderer and every media server as a source, for as long as they
/// are there and answer.
class UpnpPlugin : public QObject, public KelvoPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KelvoPlugin_iid FILE "upnp.json")
    Q_INTERFACES(KelvoPlugin)
public:
    UpnpPlugin();
    ~UpnpPlugin() override;

    bool start(KelvoRegistry *registry, QString *error) override;
    void stop() override;

private:
    void add(const Upnp::Description &device);
    void remove(const Upnp::DeviceKey &device);
    void addRenderer(const Upnp::Description &device);
    void addSource(const Upnp::Description &device);
    void removeRenderer(const QString &udn);
    void removeSource(const QString &udn);
    void describe(const Upnp::Description &device);
    QString nameFor(const Upnp::Description &renderer) const;
    bool isNameTaken(const QString &name, const QString &udn) const;
    void setSearchable(const Upnp::DeviceKey &device, bool canSearch);

    KelvoRegistry *m_registry = nullptr;
    std::unique_ptr<UpnpNetwork> m_network;
    std::unordered_map<QString, std::unique_ptr<KelvoRenderer>> m_renderers; // by UDN
    std::unordered_map<QString, std::unique_ptr<UpnpSource>> m_sources;
};
