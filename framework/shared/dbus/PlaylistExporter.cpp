// SPDX-License-Identifier: MIT
#include "PlaylistExporter.h"

#include "ExportedPlaylist.h"
#include "ItemServer.h"
#include "KelvoMessageHandler.h"
#include "KelvoPlaylist.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

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
{
    connect(&m_turn, &QTimer::timeout, this, &PlaylistExporter::serveNext);
    m_gate = std::make_unique<CallGate>(m_connection, [this] { m_turn.start(0); });
    // Last: who sees the name finds the objects.
    requestName(1);
}

PlaylistExporter::~PlaylistExporter()
{
    // First: who hears of that asks for nothing any more.
    releaseName();
    m_gate.reset();
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
    connect(object.get(), &ExportedPlaylist::Changed, this,
        [this, changed = object.get()] { announceChange(*changed); });
    connect(playlist, &QObject::destroyed, this, &PlaylistExporter::remove);
    const SharedInterfaces interfaces = object->interfaces();
    m_exports.push_back({playlist, std::move(object)});
    tellChildren();
    announceObject(path, QStringLiteral("InterfacesAdded"), QVariant::fromValue(interfaces));
}

void PlaylistExporter::remove(const QObject *playlist)
{
    const auto found = std::find_if(m_exports.begin(), m_exports.end(),
        [playlist](const Export &entry) { return entry.playlist == playlist; });
    if (found == m_exports.end())
        return;
    disconnect(found->playlist, nullptr, this, nullptr);
    const QString path = found->object->path();
    m_exports.erase(found);
    tellChildren();
    announceObject(path, QStringLiteral("InterfacesRemoved"), QStringList{PlaylistProtocol::interface});
}

void PlaylistExporter::tellChildren()
{
    QStringList names;
    for (const Export &entry : m_exports)
        names.append(entry.object->path().section(u'/', -1));
    m_gate->setChildren(names);
}

void PlaylistExporter::announceObject(const QString &path, const QString &change, const QVariant &what)
{
    auto signal = QDBusMessage::createSignal(
        PlaylistProtocol::rootPath, PlaylistProtocol::objectManagerInterface, change);
    signal << QVariant::fromValue(QDBusObjectPath(path)) << what;
    m_connection.send(signal);
}

void PlaylistExporter::announceChange(const ExportedPlaylist &object)
{
    auto change
        = QDBusMessage::createSignal(object.path(), PlaylistProtocol::interface, QStringLiteral("Changed"));
    change << object.revision();
    m_connection.send(change);
    auto signal = QDBusMessage::createSignal(
        object.path(), PlaylistProtocol::propertiesInterface, QStringLiteral("PropertiesChanged"));
    const QVariantMap changed{{QStringLiteral("Name"), object.name()},
        {QStringLiteral("ItemCount"), object.itemCount()}, {QStringLiteral("Revision"), object.revision()}};
    signal << QString(PlaylistProtocol::interface) << changed << QStringList();
    m_connection.send(signal);
}

void PlaylistExporter::serveNext()
{
    if (const std::optional<QDBusMessage> call = m_gate->take())
        serve(*call);
    else
        m_turn.stop();
}

void PlaylistExporter::serve(const QDBusMessage &call)
{
    if (call.path() == PlaylistProtocol::rootPath && call.member() == PlaylistProtocol::getManagedObjects) {
        m_connection.send(call.createReply(QVariant::fromValue(managedObjects())));
        return;
    }
    const auto found = std::find_if(m_exports.begin(), m_exports.end(),
        [&call](const Export &entry) { return entry.object->path() == call.path(); });
    if (found == m_exports.end() || call.member() == PlaylistProtocol::getManagedObjects)
        m_connection.send(call.createErrorReply(
            QDBusError::UnknownObject, QStringLiteral("There is no such object at %1").arg(call.path())));
    else if (call.member() == PlaylistProtocol::getItems || call.member() == PlaylistProtocol::openItems)
        m_items->enqueue(found->object.get(), call);
    else
        giveProperties(*found->object, call);
}

void PlaylistExporter::giveProperties(const ExportedPlaylist &object, const QDBusMessage &call)
{
    const QString interface = call.arguments().value(0).toString();
    const QVariantMap properties
        = object.interfaces().value(interface.isEmpty() ? QString(PlaylistProtocol::interface) : interface);
    if (call.member() == PlaylistProtocol::getAllProperties) {
        m_connection.send(call.createReply(properties));
        return;
    }
    const QString name = call.arguments().value(1).toString();
    m_connection.send(properties.contains(name)
            ? call.createReply(QVariant::fromValue(QDBusVariant(properties.value(name))))
            : call.createErrorReply(
                QDBusError::UnknownProperty, QStringLiteral("There is no property %1").arg(name)));
}

SharedObjects PlaylistExporter::managedObjects() const
{
    SharedObjects objects;
    for (const Export &entry : m_exports)
        objects.insert(QDBusObjectPath(entry.object->path()), entry.object->interfaces());
    return objects;
}
