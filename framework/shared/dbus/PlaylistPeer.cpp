// SPDX-License-Identifier: MIT
#include "PlaylistPeer.h"

#include "KelvoMessageHandler.h"
#include "KelvoRegistry.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QTimer>

#include <optional>

using namespace PlaylistProtocol;

namespace {
constexpr int maxComplaints = 20;
constexpr qsizetype longestComplaint = 500;

bool isText(const QVariant &value)
{
    return value.metaType() == QMetaType::fromType<QString>();
}

bool isNumber(const QVariant &value)
{
    return value.metaType() == QMetaType::fromType<uint>();
}

/// Nothing when a property is missing or of another type.
std::optional<PlaylistDescription> describe(const QVariantMap &properties)
{
    const QVariant id = properties.value(QStringLiteral("Id"));
    const QVariant name = properties.value(QStringLiteral("Name"));
    const QVariant itemCount = properties.value(QStringLiteral("ItemCount"));
    const QVariant revision = properties.value(QStringLiteral("Revision"));
    if (!isText(id) || !isText(name) || !isNumber(itemCount) || !isNumber(revision))
        return std::nullopt;
    return PlaylistDescription{id.toString(), name.toString(), itemCount.toUInt(), revision.toUInt()};
}
} // namespace

PlaylistPeer::PlaylistPeer(KelvoRegistry *registry, const QDBusConnection &connection, const QString &owner,
    QString label, int timeout, QObject *parent)
    : QObject(parent)
    , m_registry(registry)
    , m_calls(connection, owner, timeout)
    , m_label(std::move(label))
{
    connect(registry, &KelvoRegistry::playlistRemoved, this, &PlaylistPeer::noteFreedId);
}

PlaylistPeer::~PlaylistPeer()
{
    withdrawAll();
}

void PlaylistPeer::leave()
{
    // Answers that are still under way must not bring anything back.
    m_calls.end();
    withdrawAll();
    deleteLater();
}

void PlaylistPeer::withdrawAll()
{
    if (m_registry)
        m_registry->disconnect(this);
    const auto playlists = std::exchange(m_playlists, {});
    for (ForeignPlaylist *playlist : playlists)
        withdraw(playlist);
}

void PlaylistPeer::list()
{
    if (m_listing)
        return;
    m_listing = true;
    const QDBusMessage call
        = m_calls.make(rootPath, objectManagerInterface, QStringLiteral("GetManagedObjects"));
    m_calls.send(this, call, [this](const QDBusMessage &reply) {
        m_listing = false;
        if (reply.type() == QDBusMessage::ErrorMessage)
            handleListError(QDBusError(reply));
        else
            handleList(reply);
    });
}

void PlaylistPeer::handleListError(const QDBusError &error)
{
    switch (error.type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::Disconnected:
        break; // It is just going; the news of that is on its way.
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        handleSilence();
        break;
    default:
        complain(
            QStringLiteral("it does not list its playlists: ") + error.message().left(maxTextCharacters));
    }
}

void PlaylistPeer::handleSilence()
{
    if (m_attempt < maxAttempts)
        list();
    else
        QTimer::singleShot(restInTimeouts * m_calls.timeout(), this, &PlaylistPeer::list);
    if (m_attempt++ == maxAttempts)
        complain(QStringLiteral("it does not answer"));
}

void PlaylistPeer::handleList(const QDBusMessage &reply)
{
    m_attempt = 1;
    if (reply.signature() != u"a{oa{sa{sv}}}") {
        complain(QStringLiteral("its list is of the type \"%1\"").arg(reply.signature()));
        return;
    }
    bool more = false;
    const auto argument = reply.arguments().constFirst().value<QDBusArgument>();
    takeOver(readObjects(argument, maxPlaylistsOfPeer, &more));
    if (more)
        complain(QStringLiteral("it offers more than %1 playlists, the others are not shown")
                     .arg(maxPlaylistsOfPeer));
}

void PlaylistPeer::takeOver(const SharedObjects &objects)
{
    const QStringList known = m_playlists.keys();
    for (const QString &path : known) {
        if (!objects.contains(QDBusObjectPath(path)))
            remove(path);
    }
    for (auto object = objects.cbegin(); object != objects.cend(); ++object)
        add(object.key().path(), object.value());
}

void PlaylistPeer::add(const QString &path, const SharedInterfaces &interfaces)
{
    if (!interfaces.contains(interface) || m_playlists.contains(path))
        return;
    const auto description = describe(interfaces.value(interface));
    if (!path.startsWith(QString(rootPath) + u'/'))
        complain(QStringLiteral("it offers a playlist at the wrong place ") + path.left(maxTextCharacters));
    else if (!description)
        complain(QStringLiteral("its playlist %1 lacks properties or has them of other types").arg(path));
    else if (description->id.isEmpty() || description->id.size() > maxTextCharacters)
        complain(QStringLiteral("its playlist %1 has no id of use").arg(path));
    else if (m_playlists.size() >= maxPlaylistsOfPeer)
        complain(QStringLiteral("it offers more than %1 playlists, %2 is not shown")
                     .arg(maxPlaylistsOfPeer)
                     .arg(path));
    else
        create(path, *description);
}

void PlaylistPeer::create(const QString &path, const PlaylistDescription &description)
{
    if (!m_registry)
        return;
    if (m_registry->findPlaylistByUuid(description.id)) {
        // Announced and listed, it comes here twice.
        if (m_refusedIds.value(path) == description.id)
            return;
        if (m_refusedIds.size() < maxPlaylistsOfPeer)
            m_refusedIds.insert(path, description.id);
        complain(QStringLiteral("the id of its playlist %1 is in use, it is not shown: %2")
                     .arg(path, description.id));
        return;
    }
    auto *playlist = new ForeignPlaylist(&m_calls, path, description, m_label);
    connect(playlist, &ForeignPlaylist::complaint, this, [this, path](const QString &text) {
        complain(QStringLiteral("its playlist %1: %2").arg(path, text));
    });
    connect(playlist, &ForeignPlaylist::broken, this, [this, path](const QString &reason) {
        complain(QStringLiteral("its playlist %1 is no longer shown: %2").arg(path, reason));
        remove(path);
    });
    // First, so that whoever hears of it may already make the process withdraw it.
    m_playlists.insert(path, playlist);
    m_registry->addPlaylist(playlist);
}

void PlaylistPeer::remove(const QString &path)
{
    m_refusedIds.remove(path);
    if (ForeignPlaylist *playlist = m_playlists.take(path))
        withdraw(playlist);
}

void PlaylistPeer::withdraw(ForeignPlaylist *playlist)
{
    playlist->disconnect(this);
    if (m_registry)
        m_registry->removePlaylist(playlist);
    playlist->deleteLater();
}

void PlaylistPeer::noteRevision(const QString &path, uint revision)
{
    if (ForeignPlaylist *playlist = m_playlists.value(path))
        playlist->noteRevision(revision);
}

void PlaylistPeer::noteProperties(const QString &path, const QVariantMap &changed)
{
    ForeignPlaylist *playlist = m_playlists.value(path);
    if (!playlist)
        return;
    const QVariant name = changed.value(QStringLiteral("Name"));
    if (isText(name))
        playlist->rename(name.toString());
    // The revision comes with the signal Changed.
}

void PlaylistPeer::noteFreedId(const QString &id)
{
    if (m_refusedIds.removeIf([&id](const auto &refused) { return refused.value() == id; }) > 0)
        list();
}

void PlaylistPeer::complain(const QString &text)
{
    // Parts of the text come from the other process: they stay on one line.
    if (m_complaints++ < maxComplaints)
        qCWarning(lcKelvo).noquote() << "Playlists of" << m_label + u':'
                                     << text.left(longestComplaint).simplified();
    else if (m_complaints == maxComplaints + 1)
        qCWarning(lcKelvo).noquote() << "Playlists of" << m_label + u':' << "further faults are not reported";
}
