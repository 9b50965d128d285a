// SPDX-License-Identifier: MIT
#include "UpnpPlugin.h"

#include "ItemRenderer.h"
#include "KelvoMessageHandler.h"
#include "KelvoRegistry.h"
#include "RemotePlayer.h"
#include "UpnpNetwork.h"
#include "UpnpSource.h"
#include "UpnpTransport.h"

#include <algorithm>

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
    Upnp::Description named = device;
    named.name = nameFor(device);
    auto transport = std::make_unique<UpnpTransport>(m_network->link(named), UpnpTransport::Patience());
    auto player = std::make_unique<RemotePlayer>(std::move(transport), named.name);
    const auto [renderer, isNew]
        = m_renderers.emplace(udn, std::make_unique<ItemRenderer>(std::move(player), udn));
    if (isNew && !m_registry->addRenderer(renderer->second.get()))
        m_renderers.erase(udn);
}

/// The later one of two that have the same name gets its host in brackets, and if need be its port, so that they can be
/// told apart.
QString UpnpPlugin::nameFor(const Upnp::Description &renderer) const
{
    const QString udn = renderer.key.udn;
    if (!isNameTaken(renderer.name, udn))
        return renderer.name;
    const QString format = QStringLiteral("%1 (%2)");
    const QString withHost = format.arg(renderer.name, renderer.address.host());
    return isNameTaken(withHost, udn) ? format.arg(renderer.name, renderer.address.authority()) : withHost;
}

bool UpnpPlugin::isNameTaken(const QString &name, const QString &udn) const
{
    const QList<KelvoRenderer *> renderers = m_registry->renderers();
    return std::any_of(renderers.cbegin(), renderers.cend(),
        [&](const KelvoRenderer *renderer) { return renderer->uuid() != udn && renderer->name() == name; });
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
    if (device.key.kind == Upnp::Kind::Renderer) {
        m_network->rename(device.key, nameFor(device));
        return;
    }
    const auto source = m_sources.find(device.key.udn);
    if (source != m_sources.end())
        source->second->describe(device);
}

void UpnpPlugin::setSearchable(const Upnp::DeviceKey &device, bool canSearch)
{
    const auto source = m_sources.find(device.udn);
    if (source != m_sources.end())
        source->second->setSearchable(canSearch);
}
