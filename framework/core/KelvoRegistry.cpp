// SPDX-License-Identifier: MIT
#include "KelvoRegistry.h"

#include "KelvoMessageHandler.h"
#include "KelvoPlaylist.h"
#include "KelvoRenderer.h"
#include "KelvoSource.h"

#include <QCoreApplication>
#include <QHash>

#include <map>

namespace {
/// The objects of one kind, in the order of their arrival. Uuid and name are kept beside the pointer, so that an
/// object can still be named when its own destructor has already run.
template <typename Object> class Shelf
{
public:
    struct Entry
    {
        Object *object = nullptr;
        QString uuid;
        QString name;
        QMetaObject::Connection destroyed;
    };

    QList<Object *> objects() const
    {
        QList<Object *> list;
        list.reserve(qsizetype(m_entries.size()));
        for (const auto &[arrival, entry] : m_entries)
            list.append(entry.object);
        return list;
    }

    Object *find(const QString &uuid) const { return m_byUuid.value(uuid); }

    void add(Entry entry)
    {
        m_byUuid.insert(entry.uuid, entry.object);
        m_arrivals.insert(entry.object, m_nextArrival);
        m_entries.emplace(m_nextArrival++, std::move(entry));
    }

    /// The entry taken out, or one without an object.
    Entry take(const QObject *object)
    {
        const auto arrival = m_arrivals.constFind(object);
        if (arrival == m_arrivals.constEnd())
            return {};
        Entry entry = std::move(m_entries.extract(*arrival).mapped());
        m_arrivals.erase(arrival);
        m_byUuid.remove(entry.uuid);
        return entry;
    }

private:
    std::map<quint64, Entry> m_entries;
    QHash<const QObject *, quint64> m_arrivals;
    QHash<QString, Object *> m_byUuid;
    quint64 m_nextArrival = 0;
};
} // namespace

struct KelvoRegistry::Private
{
    Shelf<KelvoRenderer> renderers;
    Shelf<KelvoSource> sources;
    Shelf<KelvoPlaylist> playlists;
    std::unique_ptr<KelvoPluginLoader> plugins;

    using Notify = void (KelvoRegistry::*)(const QString &, const QString &);

    template <typename Object>
    static bool add(
        KelvoRegistry *registry, Shelf<Object> &shelf, Object *object, Notify added, Notify removed)
    {
        if (!object || object->uuid().isEmpty()) {
            qCWarning(lcKelvo) << "Refused to register an object without a uuid:" << object;
            return false;
        }
        const QString uuid = object->uuid();
        const QString name = object->name();
        if (shelf.find(uuid)) {
            qCWarning(lcKelvo) << "Refused to register" << object << "- its uuid is in use:" << uuid;
            return false;
        }
        const auto connection = QObject::connect(object, &QObject::destroyed, registry,
            [registry, &shelf, removed](QObject *gone) { report(registry, shelf.take(gone), removed); });
        shelf.add({object, uuid, name, connection});
        Q_EMIT(registry->*added)(uuid, name);
        return true;
    }

    template <typename Object>
    static bool remove(KelvoRegistry *registry, Shelf<Object> &shelf, Object *object, Notify removed)
    {
        auto entry = shelf.take(object);
        if (!entry.object) {
            qCWarning(lcKelvo) << "Not registered, so not removed:" << static_cast<const void *>(object);
            return false;
        }
        entry.name = object->name();
        report(registry, entry, removed);
        return true;
    }

    template <typename Entry> static void report(KelvoRegistry *registry, const Entry &entry, Notify removed)
    {
        QObject::disconnect(entry.destroyed);
        Q_EMIT(registry->*removed)(entry.uuid, entry.name);
    }
};

namespace {
/// Runs while the event loop's machinery still stands, so that back ends end like on any other unload.
void unloadPlugins()
{
    KelvoRegistry::instance()->pluginLoader()->unloadAll();
}
} // namespace

KelvoRegistry *KelvoRegistry::instance()
{
    static KelvoRegistry registry;
    static const bool hooked = [] {
        qAddPostRoutine(unloadPlugins);
        return true;
    }();
    Q_UNUSED(hooked)
    return &registry;
}

KelvoRegistry::KelvoRegistry(QObject *parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{
    d->plugins = std::make_unique<KelvoPluginLoader>(this);
}

KelvoRegistry::~KelvoRegistry()
{
    // While the shelves still stand: the plug-ins take their objects out as they stop.
    d->plugins.reset();
}

QList<KelvoRenderer *> KelvoRegistry::renderers() const
{
    return d->renderers.objects();
}

QList<KelvoSource *> KelvoRegistry::sources() const
{
    return d->sources.objects();
}

QList<KelvoPlaylist *> KelvoRegistry::allPlaylists() const
{
    return d->playlists.objects();
}

KelvoRenderer *KelvoRegistry::findRendererByUuid(const QString &uuid) const
{
    return d->renderers.find(uuid);
}

KelvoSource *KelvoRegistry::findSourceByUuid(const QString &uuid) const
{
    return d->sources.find(uuid);
}

KelvoPlaylist *KelvoRegistry::findPlaylistByUuid(const QString &uuid) const
{
    return d->playlists.find(uuid);
}

bool KelvoRegistry::addRenderer(KelvoRenderer *renderer)
{
    return Private::add(
        this, d->renderers, renderer, &KelvoRegistry::rendererAdded, &KelvoRegistry::rendererRemoved);
}

bool KelvoRegistry::removeRenderer(KelvoRenderer *renderer)
{
    return Private::remove(this, d->renderers, renderer, &KelvoRegistry::rendererRemoved);
}

bool KelvoRegistry::addSource(KelvoSource *source)
{
    return Private::add(this, d->sources, source, &KelvoRegistry::sourceAdded, &KelvoRegistry::sourceRemoved);
}

bool KelvoRegistry::removeSource(KelvoSource *source)
{
    return Private::remove(this, d->sources, source, &KelvoRegistry::sourceRemoved);
}

bool KelvoRegistry::addPlaylist(KelvoPlaylist *playlist)
{
    return Private::add(
        this, d->playlists, playlist, &KelvoRegistry::playlistAdded, &KelvoRegistry::playlistRemoved);
}

bool KelvoRegistry::removePlaylist(KelvoPlaylist *playlist)
{
    return Private::remove(this, d->playlists, playlist, &KelvoRegistry::playlistRemoved);
}

QStringList KelvoRegistry::availablePlugins() const
{
    return d->plugins->available();
}

QStringList KelvoRegistry::loadedPlugins() const
{
    return d->plugins->loaded();
}

void KelvoRegistry::loadPlugin(const QString &fileName)
{
    d->plugins->load(fileName);
}

void KelvoRegistry::unloadPlugin(const QString &fileName)
{
    d->plugins->unload(fileName);
}

KelvoPluginLoader *KelvoRegistry::pluginLoader() const
{
    return d->plugins.get();
}
