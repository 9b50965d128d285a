// SPDX-License-Identifier: MIT
#include "PlaylistExporter.h"

#include "ExportedPlaylist.h"
#include "ItemServer.h"
#include "KelvoMessageHandler.h"
#include "KelvoPlaylist.h"
#include "ObjectManagerAdaptor.h"
#include "playlist1adaptor.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {
constexpr int maxNames = 100;
constexpr uint doNotQueue = 4; // DBUS_NAME_FLAG_DO_NOT_QUEUE
constexpr uint primaryOwner = 1; // DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER

QString serviceName(int attempt)
{
    const QString name = PlaylistProtocol::servicePrefix + QStringLiteral("pid")
        + QString::number(QCoreApplication::applicationPid());
    // Processes of different containers may share a bus and have the same number.
    return attempt == 1 ? name : name + u'_' + QString::number(attempt);
}
} // namespace

PlaylistExporter::PlaylistExporter(const QDBusConnection &connection, int timeout, QObject *parent)
    : QObject(parent)
    , m_connection(connection)
    , m_timeout(timeout)
    , m_items(new ItemServer(connection, this))
    , m_objectManager(new ObjectManagerAdaptor(this, [this] { return managedObjects(); }))
{
    m_connection.registerObject(PlaylistProtocol::rootPath, this, QDBusConnection::ExportAdaptors);
    // Last: who sees the name finds the objects.
    requestName(1);
}

PlaylistExporter::~PlaylistExporter()
{
    // First: who hears of that asks for nothing any more.
    releaseName();
    m_exports.clear();
    m_connection.unregisterObject(PlaylistProtocol::rootPath);
}

void PlaylistExporter::requestName(int attempt)
{
    auto request = QDBusMessage::createMethodCall(PlaylistProtocol::busService, PlaylistProtocol::busPath,
        PlaylistProtocol::busService, QStringLiteral("RequestName"));
    request << serviceName(attempt) << doNotQueue;
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(request, m_timeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, attempt] {
        watcher->deleteLater();
        const QDBusPendingReply<uint> reply = *watcher;
        if (reply.isError())
            qCWarning(lcKelvo) << "The session bus gives no name, playlists are not shared:"
                               << reply.error().message();
        else if (reply.value() == primaryOwner)
            m_name = serviceName(attempt);
        else if (attempt < maxNames)
            requestName(attempt + 1);
        else
            qCWarning(lcKelvo) << "The session bus has no free name, playlists are not shared";
    });
}

void PlaylistExporter::releaseName()
{
    if (m_name.isEmpty())
        return;
    auto release = QDBusMessage::createMethodCall(PlaylistProtocol::busService, PlaylistProtocol::busPath,
        PlaylistProtocol::busService, QStringLiteral("ReleaseName"));
    release << m_name;
    m_connection.send(release);
}

void PlaylistExporter::add(KelvoPlaylist *playlist)
{
    const QString path = PlaylistProtocol::rootPath + QStringLiteral("/p") + QString::number(m_nextNumber++);
    auto object = std::make_unique<ExportedPlaylist>(playlist, path);
    new Playlist1Adaptor(object.get());
    connect(object.get(), &ExportedPlaylist::itemsRequested, m_items,
        [this, asked = object.get()](const QDBusMessage &request) { m_items->enqueue(asked, request); });
    connect(object.get(), &ExportedPlaylist::Changed, this,
        [this, changed = object.get()] { announceProperties(*changed); });
    connect(playlist, &QObject::destroyed, this, &PlaylistExporter::remove);
    if (!m_connection.registerObject(path, object.get(), QDBusConnection::ExportAdaptors)) {
        qCWarning(lcKelvo) << "The playlist" << playlist->uuid() << "cannot be offered at" << path;
        return;
    }
    const SharedInterfaces interfaces = object->interfaces();
    m_exports.push_back({playlist, std::move(object)});
    Q_EMIT m_objectManager->InterfacesAdded(QDBusObjectPath(path), interfaces);
}

void PlaylistExporter::remove(const QObject *playlist)
{
    const auto found = std::find_if(m_exports.begin(), m_exports.end(),
        [playlist](const Export &entry) { return entry.playlist == playlist; });
    if (found == m_exports.end())
        return;
    disconnect(found->playlist, nullptr, this, nullptr);
    const QString path = found->object->path();
    m_connection.unregisterObject(path);
    m_exports.erase(found);
    Q_EMIT m_objectManager->InterfacesRemoved(QDBusObjectPath(path), {PlaylistProtocol::interface});
}

void PlaylistExporter::announceProperties(const ExportedPlaylist &object)
{
    auto signal = QDBusMessage::createSignal(
        object.path(), PlaylistProtocol::propertiesInterface, QStringLiteral("PropertiesChanged"));
    const QVariantMap changed{{QStringLiteral("Name"), object.name()},
        {QStringLiteral("ItemCount"), object.itemCount()}, {QStringLiteral("Revision"), object.revision()}};
    signal << QString(PlaylistProtocol::interface) << changed << QStringList();
    m_connection.send(signal);
}

SharedObjects PlaylistExporter::managedObjects() const
{
    SharedObjects objects;
    for (const Export &entry : m_exports)
        objects.insert(QDBusObjectPath(entry.object->path()), entry.object->interfaces());
    return objects;
}
