// SPDX-License-Identifier: MIT
#include "MprisBrowser.h"

#include "KelvoMessageHandler.h"
#include "KelvoRegistry.h"
#include "MprisPlayer.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingReply>

#include <algorithm>

namespace {
constexpr qsizetype MaximumPlayers = 100;

/// Passes every command on to another player, which is there itself.
constexpr QLatin1String Proxy{"org.mpris.MediaPlayer2.playerctld"};

bool isPlayer(const QString &name)
{
    return name.startsWith(Mpris::ServicePrefix) && name != Proxy;
}

QDBusMessage busCall(const QString &member)
{
    return QDBusMessage::createMethodCall(Mpris::BusService, Mpris::BusPath, Mpris::BusService, member);
}
} // namespace

MprisBrowser::MprisBrowser(
    KelvoRegistry *registry, const QDBusConnection &connection, int timeout, QObject *parent)
    : QObject(parent)
    , m_registry(registry)
    , m_connection(connection)
    , m_timeout(timeout)
{
    // In this order nothing that comes meanwhile is missed.
    subscribe();
    listNames();
}

MprisBrowser::~MprisBrowser()
{
    qDeleteAll(std::exchange(m_players, {}));
}

void MprisBrowser::subscribe()
{
    // Without a service name: naming one makes QtDBus ask for its owner and wait for the answer. Who sent a
    // signal is checked on arrival.
    const QString anyone;
    m_connection.connect(anyone, Mpris::BusPath, Mpris::BusService, QStringLiteral("NameOwnerChanged"), this,
        SLOT(handleNameOwnerChanged(QDBusMessage)));
    m_connection.connect(anyone, Mpris::Path, Mpris::PropertiesInterface, QStringLiteral("PropertiesChanged"),
        {Mpris::PlayerInterface}, QString(), this, SLOT(handlePlayerSignal(QDBusMessage)));
    m_connection.connect(anyone, Mpris::Path, Mpris::PropertiesInterface, QStringLiteral("PropertiesChanged"),
        {Mpris::RootInterface}, QString(), this, SLOT(handleRootSignal(QDBusMessage)));
    m_connection.connect(anyone, Mpris::Path, Mpris::PlayerInterface, QStringLiteral("Seeked"), this,
        SLOT(handlePlayerSignal(QDBusMessage)));
    m_connection.connect(anyone, QStringLiteral("/org/freedesktop/DBus/Local"),
        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
        SIGNAL(busLost()));
}

void MprisBrowser::listNames()
{
    auto *watcher = new QDBusPendingCallWatcher(
        m_connection.asyncCall(busCall(QStringLiteral("ListNames")), m_timeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QStringList> reply = *watcher;
        if (reply.isError())
            qCWarning(lcKelvo) << "The session bus does not tell who is there:" << reply.error().message();
        const QStringList names = reply.isError() ? QStringList() : reply.value();
        for (const QString &name : names) {
            if (isPlayer(name))
                askOwner(name);
        }
    });
}

void MprisBrowser::askOwner(const QString &name)
{
    QDBusMessage call = busCall(QStringLiteral("GetNameOwner"));
    call << name;
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(call, m_timeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, name] {
        watcher->deleteLater();
        const QDBusPendingReply<QString> reply = *watcher;
        if (!reply.isError()) // Else it has gone meanwhile.
            setOwner(name, reply.value());
    });
}

void MprisBrowser::handleNameOwnerChanged(const QDBusMessage &message)
{
    // Anybody can send a signal of this name.
    if (message.service() != Mpris::BusService || message.signature() != u"sss")
        return;
    const QString name = message.arguments().at(0).toString();
    if (isPlayer(name))
        setOwner(name, message.arguments().at(2).toString());
}

void MprisBrowser::setOwner(const QString &name, const QString &owner)
{
    const QString before = m_owners.take(name);
    if (!owner.isEmpty())
        m_owners.insert(name, owner);
    // A player may have two names, and our own would be driven in a circle.
    if (!owner.isEmpty() && owner != m_connection.baseService() && !m_players.contains(owner))
        addPlayer(name, owner);
    // Last: whoever hears that a renderer goes may unload all of this.
    if (before != owner && !before.isEmpty())
        dropOwner(before);
}

void MprisBrowser::addPlayer(const QString &name, const QString &owner)
{
    if (!m_registry || m_players.size() >= MaximumPlayers)
        return;
    const auto namer = [this, name](const QString &identity) {
        return uniqueName(identity, name);
    };
    m_players.insert(
        owner, new MprisPlayer(m_registry, {m_connection, owner, {}, m_timeout}, name, namer, this));
}

void MprisBrowser::dropOwner(const QString &owner)
{
    const bool hasOtherName = std::any_of(
        m_owners.cbegin(), m_owners.cend(), [&owner](const QString &other) { return other == owner; });
    MprisPlayer *player = hasOtherName ? nullptr : m_players.take(owner);
    if (player)
        player->leave();
}

/// Two players of one kind are told apart by the last part of the bus name, as in "mpv (instance1234)".
QString MprisBrowser::uniqueName(const QString &name, const QString &service) const
{
    const bool taken = std::any_of(m_players.cbegin(), m_players.cend(),
        [&](const MprisPlayer *player) { return player->service() != service && player->name() == name; });
    return taken ? QStringLiteral("%1 (%2)").arg(name, service.section(QLatin1Char('.'), -1)) : name;
}

void MprisBrowser::handlePlayerSignal(const QDBusMessage &message)
{
    if (MprisPlayer *player = m_players.value(message.service()))
        player->noteSignal(message);
}

void MprisBrowser::handleRootSignal(const QDBusMessage &message)
{
    if (MprisPlayer *player = m_players.value(message.service()))
        player->noteNewIdentity();
}
