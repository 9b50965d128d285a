// SPDX-License-Identifier: MIT
#include "PlaylistBrowser.h"

#include "KelvoMessageHandler.h"
#include "KelvoRegistry.h"

#include <QDBusMessage>
#include <QRegularExpression>

using namespace PlaylistProtocol;

namespace {
bool isWanted(const QString &name)
{
    return name.startsWith(servicePrefix);
}

/// "pid 1234" of the names that our processes take, else what stands behind the prefix.
QString labelOf(const QString &name)
{
    static const QRegularExpression ours(QStringLiteral("^pid(\\d+)(_\\d+)?$"));
    const QString rest = name.mid(servicePrefix.size());
    const auto match = ours.match(rest);
    return match.hasMatch() ? QStringLiteral("pid ") + match.captured(1) : rest;
}
} // namespace

PlaylistBrowser::PlaylistBrowser(
    KelvoRegistry *registry, const QDBusConnection &connection, int timeout, QObject *parent)
    : BusBrowser(connection, timeout, parent)
    , m_registry(registry)
{
    const QString anywhere;
    hear(rootPath, objectManagerInterface, QStringLiteral("InterfacesAdded"),
        SLOT(handleInterfacesAdded(QDBusMessage)));
    hear(rootPath, objectManagerInterface, QStringLiteral("InterfacesRemoved"),
        SLOT(handleInterfacesRemoved(QDBusMessage)));
    hear(anywhere, interface, QStringLiteral("Changed"), SLOT(handleChanged(QDBusMessage)));
    hear(anywhere, propertiesInterface, QStringLiteral("PropertiesChanged"),
        SLOT(handlePropertiesChanged(QDBusMessage)), interface);
    browse(isWanted);
}

PlaylistBrowser::~PlaylistBrowser()
{
    qDeleteAll(std::exchange(m_peers, {}));
}

void PlaylistBrowser::add(const QString &owner, const QString &name)
{
    if (!m_registry)
        return;
    if (m_peers.size() >= maxPeers) {
        if (!std::exchange(m_tooMany, true))
            qCWarning(lcKelvo) << "More than" << maxPeers
                               << "processes offer playlists, the others are not shown";
        return;
    }
    auto *peer = new PlaylistPeer(m_registry, connection(), owner, labelOf(name), timeout(), this);
    m_peers.insert(owner, peer);
    peer->list();
}

void PlaylistBrowser::drop(const QString &owner)
{
    if (PlaylistPeer *peer = m_peers.take(owner))
        peer->leave();
}

PlaylistPeer *PlaylistBrowser::senderOf(const QDBusMessage &message, QStringView signature)
{
    PlaylistPeer *peer = m_peers.value(message.service());
    if (!peer || message.signature() == signature)
        return peer;
    peer->complain(
        QStringLiteral("its signal %1 is of the type \"%2\"").arg(message.member(), message.signature()));
    return nullptr;
}

void PlaylistBrowser::handleInterfacesAdded(const QDBusMessage &message)
{
    PlaylistPeer *peer = senderOf(message, u"oa{sa{sv}}");
    if (!peer)
        return;
    const auto path = message.arguments().at(0).value<QDBusObjectPath>();
    peer->add(path.path(), qdbus_cast<SharedInterfaces>(message.arguments().at(1)));
}

void PlaylistBrowser::handleInterfacesRemoved(const QDBusMessage &message)
{
    PlaylistPeer *peer = senderOf(message, u"oas");
    if (peer && message.arguments().at(1).toStringList().contains(interface))
        peer->remove(message.arguments().at(0).value<QDBusObjectPath>().path());
}

void PlaylistBrowser::handleChanged(const QDBusMessage &message)
{
    if (PlaylistPeer *peer = senderOf(message, u"u"))
        peer->noteRevision(message.path(), message.arguments().constFirst().toUInt());
}

void PlaylistBrowser::handlePropertiesChanged(const QDBusMessage &message)
{
    if (PlaylistPeer *peer = senderOf(message, u"sa{sv}as"))
        peer->noteProperties(message.path(), qdbus_cast<QVariantMap>(message.arguments().at(1)));
}
