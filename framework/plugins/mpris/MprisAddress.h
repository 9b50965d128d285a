// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QLatin1String>

class QDBusError;

/// Where a player is reached, and how long it may take.
struct MprisAddress
{
    QDBusConnection connection;
    QString owner; ///< unique bus name of the process
    QString label; ///< names the player in messages
    int timeout; ///< milliseconds that a question may take

    int commandTimeout() const { return timeout * 3 / 2; }

    QDBusMessage call(
        QLatin1String interface, const QString &method, const QVariantList &arguments = {}) const;
    QDBusMessage getAll(QLatin1String interface) const;
    /// Whether a reply comes from the player, or from the bus on its behalf. Any process may answer a request that it
    /// was not asked, and the bus passes that on.
    bool isAnswer(const QDBusMessage &reply) const;
};

/// The names of the MPRIS D-Bus Interface Specification, version 2.2.
namespace Mpris {
inline constexpr QLatin1String servicePrefix{"org.mpris.MediaPlayer2."};
inline constexpr QLatin1String path{"/org/mpris/MediaPlayer2"};
inline constexpr QLatin1String rootInterface{"org.mpris.MediaPlayer2"};
inline constexpr QLatin1String playerInterface{"org.mpris.MediaPlayer2.Player"};
inline constexpr QLatin1String trackListInterface{"org.mpris.MediaPlayer2.TrackList"};
inline constexpr QLatin1String propertiesInterface{"org.freedesktop.DBus.Properties"};
inline constexpr QLatin1String peerInterface{"org.freedesktop.DBus.Peer"};
inline constexpr QLatin1String busService{"org.freedesktop.DBus"};

/// No answer came, as opposed to an answer that refuses.
bool isSilence(const QDBusError &error);
/// The player is not there any more.
bool isAbsence(const QDBusError &error);
} // namespace Mpris
