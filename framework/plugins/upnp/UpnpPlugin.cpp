// SPDX-License-Identifier: MIT
#include "UpnpPlugin.h"

#include "KelvoMessageHandler.h"
#include "KelvoRegistry.h"
#include "RemoteRenderer.h"
#include "UpnpNetwork.h"
#include "UpnpSource.h"
#include "UpnpTransport.h"

namespace {
QStringList chosenInterfaces()
{
    QStringList names;
    for (const QString &name : qEnvironmentVariable("KELVO_UPNP_INTERFACE").split(QLatin1Char(','))) {
        if (!name.trimmed().isEmpty())
            names.append(name.trimmed());
    }
    return names;
}
} // namespace

UpnpPlugin::UpnpPlugin() = default;

UpnpPlugin::~UpnpPlugin()
{
    stop();
}

bool UpnpPlugin::start(KelvoRegistry *registry, QString *)
{
    m_registry = registry;
    m_network = std::make_unique<UpnpNetwork>(chosenInterfaces());
    connect(m_network.get(), &UpnpNetwork::appeared, this, &UpnpPlugin::add);
    connect(m_network.get(), &UpnpNetwork::disappeared, this, &UpnpPlugin::remove);
    connect(m_network.get(), &UpnpNetwork::described, this, &UpnpPlugin::describe);
    connect(m_network.get(), &UpnpNetwork::searchKnown, this, &UpnpPlugin::setSearchable);
    return true;
}

void UpnpPlugin::stop()
{
    if (m_network)
        m_network->disconnect(this);
    while (!m_sources.empty())
        removeSource(m_sources.begin()->first);
    while (!m_renderers.empty())
        removeRenderer(m_renderers.begin()->first);
    // It may be in the middle of a signal whose receiver unloads this plug-in.
    if (m_network)
        m_network.release()->deleteLater();
}

void UpnpPlugin::add(const Upnp::Description &device)
{
    if (device.key.kind == Upnp::Kind::Renderer)
        addRenderer(device);
    else
        addSource(device);
}

void UpnpPlugin::remove(const Upnp::DeviceKey &device)
{
    if (device.kind == Upnp::Kind::Renderer)
        removeRenderer(device.udn);
    else
        removeSource(device.udn);
}

void UpnpPlugin::addSource(const Upnp::Description &device)
{
    const QString udn = device.key.udn;
    const auto [source, isNew] = m_sources.emplace(udn, std::make_unique<UpnpSource>(device));
    if (isNew && !m_registry->addSource(source->second.get()))
        m_sources.erase(udn);
}

void UpnpPlugin::addRenderer(const Upnp::Description &device)
{
    const QString udn = device.key.udn;
    auto transport = std::make_unique<UpnpTransport>(m_network->link(device), UpnpTransport::Patience());
    const auto [renderer, isNew]
        = m_renderers.emplace(udn, std::make_unique<RemoteRenderer>(std::move(transport), udn, device.name));
    if (isNew && !m_registry->addRenderer(renderer->second.get()))
        m_renderers.erase(udn);
}

// Each leaves its list before the registry tells of it: whoever hears that may unload this plug-in.
void UpnpPlugin::removeRenderer(const QString &udn)
{
    if (const auto renderer = m_renderers.extract(udn))
        m_registry->removeRenderer(renderer.mapped().get());
}

void UpnpPlugin::removeSource(const QString &udn)
{
    if (const auto source = m_sources.extract(udn))
        m_registry->removeSource(source.mapped().get());
}

void UpnpPlugin::describe(const Upnp::Description &device)
{
    const auto source = m_sources.find(device.key.udn);
    if (device.key.kind == Upnp::Kind::Source && source != m_sources.end())
        source->second->describe(device);
}

void UpnpPlugin::setSearchable(const Upnp::DeviceKey &device, bool canSearch)
{
    const auto source = m_sources.find(device.udn);
    if (source != m_sources.end())
        source->second->setSearchable(canSearch);
}
