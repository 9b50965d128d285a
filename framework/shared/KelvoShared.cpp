// SPDX-License-Identifier: MIT
#include "KelvoShared.h"

#include "KelvoMessageHandler.h"
#include "KelvoPlaylist.h"
#include "KelvoRegistry.h"

#include <QDBusConnection>
#include <QPointer>

#include <utility>
#include <vector>

struct KelvoShared::Private
{
    QPointer<KelvoRegistry> registry;
    bool onBus = false;
    std::vector<std::unique_ptr<KelvoPlaylist>> published;
};

KelvoShared *KelvoShared::instance()
{
    static KelvoShared shared;
    return &shared;
}

KelvoShared::KelvoShared()
    : d(std::make_unique<Private>())
{
    // Made first, so that it outlives this object: the playlists' destructors take themselves out of it.
    KelvoRegistry::instance();
}

KelvoShared::~KelvoShared() = default;

bool KelvoShared::initTracking(KelvoRegistry *registry)
{
    if (d->registry || !registry)
        return d->onBus;
    d->registry = registry;
    d->onBus = QDBusConnection::sessionBus().isConnected();
    if (!d->onBus)
        qCWarning(lcKelvo) << "There is no session bus: playlists stay within this process";
    KelvoPluginLoader *plugins = registry->pluginLoader();
    QMetaObject::invokeMethod(plugins, [plugins] { plugins->loadDefaults(); }, Qt::QueuedConnection);
    return d->onBus;
}

bool KelvoShared::publishPlaylist(KelvoPlaylist *playlist)
{
    if (!d->registry || !playlist)
        return false;
    // Owned before it is announced: who hears of it may withdraw it at once.
    d->published.emplace_back(playlist);
    if (d->registry->addPlaylist(playlist))
        return true;
    std::erase_if(d->published, [playlist](auto &owned) {
        if (owned.get() != playlist)
            return false;
        owned.release(); // stays with the caller
        return true;
    });
    return false;
}

void KelvoShared::unPublishPlaylist(const QString &uuid)
{
    const auto found = std::find_if(d->published.begin(), d->published.end(),
        [&uuid](const auto &owned) { return owned->uuid() == uuid; });
    if (found == d->published.end()) {
        qCWarning(lcKelvo) << "No playlist of this process has the id" << uuid << "- not withdrawn";
        return;
    }
    KelvoPlaylist *playlist = found->release();
    d->published.erase(found);
    if (d->registry)
        d->registry->removePlaylist(playlist);
    playlist->deleteLater();
}
