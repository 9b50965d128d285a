// SPDX-License-Identifier: MIT
#include "MprisBrowser.h"

#include "BusNames.h"
#include "KelvoMessageHandler.h"
#include "KelvoRegistry.h"
#include "MprisPlayer.h"

#include <QDBusMessage>

#include <algorithm>

namespace {
constexpr qsizetype MaximumPlayers = 100;

/// Passes every command on to another player, which is there itself.
constexpr QLatin1String Proxy{"org.mpris.MediaPlayer2.playerctld"};

bool isPlayer(const QString &name)
{
    return name.startsWith(Mpris::ServicePrefix) && name != Proxy;
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
    watchNames();
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
    m_connection.connect(anyone, Mpris::Path, Mpris::PropertiesInterface, QStringLiteral("PropertiesChanged"),
        {Mpris::PlayerInterface}, QString(), this, SLOT(handlePlayerSignal(QDBusMessage)));
    m_connection.connect(anyone, Mpris::Path, Mpris::PropertiesInterface, QStringLiteral("PropertiesChanged"),
        {Mpris::RootInterface}, QString(), this, SLOT(handleRootSignal(QDBusMessage)));
    m_connection.connect(anyone, Mpris::Path, Mpris::PlayerInterface, QStringLiteral("Seeked"), this,
        SLOT(handlePlayerSignal(QDBusMessage)));
}

void MprisBrowser::watchNames()
{
    const auto *names = new BusNames(m_connection, isPlayer, m_timeout, this);
    connect(names, &BusNames::appeared, this, &MprisBrowser::addPlayer);
    connect(names, &BusNames::vanished, this, &MprisBrowser::dropPlayer);
    connect(names, &BusNames::busLost, this, &MprisBrowser::busLost);
    connect(names, &BusNames::listingFailed, this, [](const QString &reason) {
        qCWarning(lcKelvo) << "The session bus does not tell who is there:" << reason;
    });
}

void MprisBrowser::addPlayer(const QString &owner, const QString &name)
{
    if (!m_registry || m_players.size() >= MaximumPlayers)
        return;
    const auto namer = [this, name](const QString &identity) {
        return uniqueName(identity, name);
    };
    m_players.insert(
        owner, new MprisPlayer(m_registry, {m_connection, owner, {}, m_timeout}, name, namer, this));
}

void MprisBrowser::dropPlayer(const QString &owner)
{
    if (MprisPlayer *player = m_players.take(owner))
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
