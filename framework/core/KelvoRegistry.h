// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoCoreGlobal.h"
#include "KelvoPluginLoader.h"

#include <QList>
#include <QObject>
#include <QStringList>

#include <memory>

class KelvoPlaylist;
class KelvoRenderer;
class KelvoSource;

/// The registry of the renderers, sources, playlists and plug-ins of this process. GUI thread only.
///
/// Back ends add their objects and take them out again; nothing here ever deletes one. Adding emits
/// ...Added(uuid, name) once the object can be found; removing takes it out of lists and lookups and then emits
/// ...Removed(uuid, name) while the pointer is still valid. An object that is destroyed without having been
/// removed is taken out by the registry itself. A null object, an empty uuid or one already in use is refused
/// with a warning and false; so is removing what is not there.
class KELVO_CORE_EXPORT KelvoRegistry : public QObject
{
    Q_OBJECT
public:
    /// The one registry of the process; made on first use, lives until the process ends. Its plug-ins are
    /// unloaded when the application object goes.
    static KelvoRegistry *instance();

    /// A registry of its own, for tests.
    explicit KelvoRegistry(QObject *parent = nullptr);
    ~KelvoRegistry() override;

    /// In the order in which they were added.
    QList<KelvoRenderer *> renderers() const;
    QList<KelvoSource *> sources() const;
    QList<KelvoPlaylist *> allPlaylists() const;

    /// Null for a uuid that is not there, also for an empty one.
    KelvoRenderer *findRendererByUuid(const QString &uuid) const;
    KelvoSource *findSourceByUuid(const QString &uuid) const;
    KelvoPlaylist *findPlaylistByUuid(const QString &uuid) const;

    bool addRenderer(KelvoRenderer *renderer);
    bool removeRenderer(KelvoRenderer *renderer);
    bool addSource(KelvoSource *source);
    bool removeSource(KelvoSource *source);
    bool addPlaylist(KelvoPlaylist *playlist);
    bool removePlaylist(KelvoPlaylist *playlist);

    /// File names of the plug-ins that could be loaded or are, sorted.
    QStringList availablePlugins() const;
    /// File names of the plug-ins that run.
    QStringList loadedPlugins() const;
    /// See KelvoPluginLoader::load() and unload().
    void loadPlugin(const QString &fileName);
    void unloadPlugin(const QString &fileName);
    /// For what the two lists do not tell: state, reason of failure, metadata, and signals.
    KelvoPluginLoader *pluginLoader() const;

Q_SIGNALS:
    void rendererAdded(const QString &uuid, const QString &name);
    void rendererRemoved(const QString &uuid, const QString &name);
    void sourceAdded(const QString &uuid, const QString &name);
    void sourceRemoved(const QString &uuid, const QString &name);
    void playlistAdded(const QString &uuid, const QString &name);
    void playlistRemoved(const QString &uuid, const QString &name);

private:
    struct Private;
    std::unique_ptr<Private> d;
};
