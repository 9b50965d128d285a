// SPDX-License-Identifier: MIT
#include "KelvoShared.h"

#include "BusAddress.h"
#include "BusConnector.h"
#include "KelvoMessageHandler.h"
#include "KelvoPlaylist.h"
#include "KelvoRegistry.h"
#include "dbus/PlaylistBrowser.h"
#include "dbus/PlaylistExporter.h"
#include "dbus/PlaylistProtocol.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QPointer>

#include <algorithm>
#include <utility>
#include <vector>

namespace {
constexpr int defaultTimeout = 5000;
const auto connectionName = QStringLiteral("kelvo-playlists");

int timeoutOfEnvironment()
{
    bool given = false;
    const int timeout = qEnvironmentVariableIntValue("KELVO_BUS_TIMEOUT", &given);
    return given && timeout > 0 ? timeout : defaultTimeout;
}
} // namespace

struct KelvoShared::Private
{
    QPointer<KelvoRegistry> registry;
    bool hasBus = false;
    const int timeout = timeoutOfEnvironment();
    std::vector<std::unique_ptr<KelvoPlaylist>> published;
    std::unique_ptr<BusConnector> connector;
    std::unique_ptr<PlaylistExporter> exporter;
    std::unique_ptr<PlaylistBrowser> browser;

    auto find(const QString &uuid)
    {
        return std::find_if(published.begin(), published.end(),
            [&uuid](const auto &playlist) { return playlist->uuid() == uuid; });
    }
    auto find(const QObject *object)
    {
        return std::find_if(published.begin(), published.end(),
            [object](const auto &playlist) { return playlist.get() == object; });
    }
    /// Gives the ownership away.
    KelvoPlaylist *take(decltype(published)::iterator place)
    {
        KelvoPlaylist *playlist = place->release();
        published.erase(place);
        return playlist;
    }
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

KelvoShared::~KelvoShared()
{
    for (const auto &playlist : d->published)
        playlist->disconnect(this);
}

bool KelvoShared::initTracking(KelvoRegistry *registry)
{
    if (d->registry || !registry)
        return d->hasBus;
    d->registry = registry;
    d->hasBus = connectToBus();
    if (!d->hasBus)
        qCWarning(lcKelvo) << "There is no session bus: playlists stay within this process";
    KelvoPluginLoader *plugins = registry->pluginLoader();
    QMetaObject::invokeMethod(
        plugins, [plugins] { plugins->loadDefaults(); }, Qt::QueuedConnection);
    return d->hasBus;
}

bool KelvoShared::connectToBus()
{
    const QString address = BusAddress::ofSession();
    if (!BusAddress::mayListen(address))
        return false;
    PlaylistProtocol::registerTypes();
    d->connector = std::make_unique<BusConnector>(address, connectionName, d->timeout);
    connect(d->connector.get(), &BusConnector::connected, this, &KelvoShared::startSharing);
    connect(d->connector.get(), &BusConnector::failed, this, [](const QString &reason) {
        qCWarning(lcKelvo).noquote() << "There is no use of the session bus," << reason + u':'
                                     << "playlists stay within this process";
    });
    d->connector->start();
    qAddPostRoutine(endWithApplication);
    return true;
}

void KelvoShared::startSharing(const QDBusConnection &connection)
{
    if (!d->registry)
        return;
    d->exporter = std::make_unique<PlaylistExporter>(connection, d->timeout);
    for (const auto &playlist : d->published)
        d->exporter->add(playlist.get());
    d->browser = std::make_unique<PlaylistBrowser>(d->registry, connection, d->timeout);
    const auto handleLoss = [this] {
        qCWarning(lcKelvo) << "The session bus is gone: playlists stay within this process";
        stopSharing();
    };
    // Queued: the browser does not outlive it.
    connect(d->browser.get(), &PlaylistBrowser::busLost, this, handleLoss, Qt::QueuedConnection);
}

void KelvoShared::stopSharing()
{
    d->connector.reset();
    d->browser.reset();
    d->exporter.reset();
    QDBusConnection::disconnectFromBus(connectionName);
}

void KelvoShared::endWithApplication()
{
    instance()->stopSharing();
    // No event loop follows that would delete the playlists of others.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

bool KelvoShared::publishPlaylist(KelvoPlaylist *playlist)
{
    if (!d->registry || !playlist)
        return false;
    // Owned before it is announced: who hears of it may withdraw it at once.
    d->published.emplace_back(playlist);
    if (!d->registry->addPlaylist(playlist)) {
        d->take(d->find(playlist)); // stays with the caller
        return false;
    }
    if (d->find(playlist) == d->published.end())
        return true;
    connect(playlist, &QObject::destroyed, this, &KelvoShared::forget);
    if (d->exporter)
        d->exporter->add(playlist);
    return true;
}

void KelvoShared::unPublishPlaylist(const QString &uuid)
{
    const auto found = d->find(uuid);
    if (found == d->published.end()) {
        qCWarning(lcKelvo) << "No playlist of this process has the id" << uuid << "- not withdrawn";
        return;
    }
    KelvoPlaylist *playlist = d->take(found);
    playlist->disconnect(this);
    if (d->exporter)
        d->exporter->remove(playlist);
    if (d->registry)
        d->registry->removePlaylist(playlist);
    playlist->deleteLater();
}

void KelvoShared::forget(const QObject *playlist)
{
    const auto found = d->find(playlist);
    if (found != d->published.end())
        d->take(found);
}
