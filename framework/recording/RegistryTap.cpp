// SPDX-License-Identifier: MIT
#include "RegistryTap.h"

#include "EventWriter.h"
#include "KelvoPlaylist.h"
#include "KelvoPluginLoader.h"
#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "KelvoSource.h"

RegistryTap::RegistryTap(KelvoRegistry *registry, const EventWriter &writer)
    : m_registry(registry)
    , m_writer(writer)
    , m_plugins(registry->pluginLoader(), KelvoPluginLoader::staticMetaObject, {}, writer)
{
    follow("renderer", registry->renderers(), &KelvoRegistry::findRendererByUuid,
        &KelvoRegistry::rendererAdded, &KelvoRegistry::rendererRemoved, m_renderers);
    follow("source", registry->sources(), &KelvoRegistry::findSourceByUuid, &KelvoRegistry::sourceAdded,
        &KelvoRegistry::sourceRemoved, m_sources);
    follow("playlist", registry->allPlaylists(), &KelvoRegistry::findPlaylistByUuid,
        &KelvoRegistry::playlistAdded, &KelvoRegistry::playlistRemoved, m_playlists);
}

template <typename Object>
void RegistryTap::follow(const char *what, const QList<Object *> &present,
    Object *(KelvoRegistry::*find)(const QString &) const, Notify added, Notify removed, Taps &taps)
{
    connect(m_registry, added, this, [this, what, find, &taps](const QString &uuid, const QString &name) {
        appear(what, (m_registry->*find)(uuid), Object::staticMetaObject, uuid, name, taps);
    });
    connect(m_registry, removed, this, [this, what, &taps](const QString &uuid, const QString &name) {
        taps.erase(uuid);
        m_writer.note(uuid, "vanishes", what, {name});
    });
    for (const Object *object : present)
        appear(what, object, Object::staticMetaObject, object->uuid(), object->name(), taps);
}

void RegistryTap::appear(const char *what, const QObject *object, const QMetaObject &scope,
    const QString &uuid, const QString &name, Taps &taps)
{
    m_writer.note(uuid, "appears", what, {name});
    // Somebody who heard of it before may have taken it out again.
    if (object)
        taps[uuid] = std::make_unique<SignalTap>(object, scope, uuid, m_writer);
}
