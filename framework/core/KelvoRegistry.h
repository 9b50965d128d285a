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
    /// The same of sources.
    QList<KelvoSource *> sources() const;
    /// The same of playlists.
    QList<KelvoPlaylist *> allPlaylists() const;

    /// Null for a uuid that is not there, also for an empty one.
    KelvoRenderer *findRendererByUuid(const QString &uuid) const;
    /// The same of sources.
    KelvoSource *findSourceByUuid(const QString &uuid) const;
    /// The same of playlists.
    KelvoPlaylist *findPlaylistByUuid(const QString &uuid) const;

    /// Not owned. False, with a warning, when its uuid is empty or in use.
    bool addRenderer(KelvoRenderer *renderer);
    /// Before it is deleted. False, with a warning, when it is not there.
    bool removeRenderer(KelvoRenderer *renderer);
    /// The same of sources.
    bool addSource(KelvoSource *source);
    /// The same of sources.
    bool removeSource(KelvoSource *source);
    /// The same of playlists.
    bool addPlaylist(KelvoPlaylist *playlist);
    /// The same of playlists.
    bool removePlaylist(KelvoPlaylist *playlist);

    /// File names of the plug-ins that could be loaded or are, sorted.
    QStringList availablePlugins() const;
    /// File names of the plug-ins that run.
    QStringList loadedPlugins() const;
    /// See KelvoPluginLoader::load().
    void loadPlugin(const QString &fileName);
    /// See KelvoPluginLoader::unload().
    void unloadPlugin(const QString &fileName);
    /// For what the two lists do not tell: state, reason of failure, metadata, and signals.
    KelvoPluginLoader *pluginLoader() const;

Q_SIGNALS:
    /// It can be found by its uuid.
    void rendererAdded(const QString &uuid, const QString &name);
    /// It can no longer be found; the pointer is valid until this returns.
    void rendererRemoved(const QString &uuid, const QString &name);
    /// The same of sources.
    void sourceAdded(const QString &uuid, const QString &name);
    /// The same of sources.
    void sourceRemoved(const QString &uuid, const QString &name);
    /// The same of playlists.
    void playlistAdded(const QString &uuid, const QString &name);
    /// The same of playlists.
    void playlistRemoved(const QString &uuid, const QString &name);

private:
    struct Private;
    std::unique_ptr<Private> d;
};
