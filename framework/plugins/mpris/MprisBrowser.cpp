// SPDX-License-Identifier: MIT
#include "MprisBrowser.h"

#include "KelvoMessageHandler.h"
#include "KelvoRegistry.h"
#include "MprisPlayer.h"

#include <QDBusMessage>

#include <algorithm>

namespace {
constexpr qsizetype maximumPlayers = 100;

/// Passes every command on to another player, which is there itself.
constexpr QLatin1String proxy{"org.mpris.MediaPlayer2.playerctld"};

bool isPlayer(const QString &name)
{
    return name.startsWith(Mpris::servicePrefix) && name != proxy;
}
} // namespace

MprisBrowser::MprisBrowser(
    KelvoRegistry *registry, const QDBusConnection &connection, int timeout, QObject *parent)
    : BusBrowser(connection, timeout, parent)
    , m_registry(registry)
{
    const auto changed = QStringLiteral("PropertiesChanged");
    hear(Mpris::path, Mpris::propertiesInterface, changed, SLOT(handlePlayerSignal(QDBusMessage)),
        Mpris::playerInterface);
    hear(Mpris::path, Mpris::propertiesInterface, changed, SLOT(handleRootSignal(QDBusMessage)),
        Mpris::rootInterface);
    hear(Mpris::path, Mpris::playerInterface, QStringLiteral("Seeked"),
        SLOT(handlePlayerSignal(QDBusMessage)));
    browse(isPlayer);
}

MprisBrowser::~MprisBrowser()
{
    qDeleteAll(std::exchange(m_players, {}));
}

void MprisBrowser::add(const QString &owner, const QString &name)
{
    if (!m_registry || m_players.size() >= maximumPlayers)
        return;
    const auto namer = [this, name](const QString &identity) {
        return uniqueName(identity, name);
    };
    m_players.insert(
        owner, new MprisPlayer(m_registry, {connection(), owner, {}, timeout()}, name, namer, this));
}

void MprisBrowser::drop(const QString &owner)
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
