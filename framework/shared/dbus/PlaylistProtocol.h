// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariantMap>

#include <fcntl.h>

/// One playlist item as it crosses the bus: (ssssx).
struct SharedItem
{
    QString id; ///< uuid of the item within its playlist
    QString title;
    QString url;
    QString mimeType;
    qlonglong duration = -1; ///< seconds; -1 when not known

    bool operator==(const SharedItem &) const = default;
    qsizetype characters() const { return id.size() + title.size() + url.size() + mimeType.size(); }
};

Q_DECLARE_TYPEINFO(SharedItem, Q_RELOCATABLE_TYPE);

using SharedItems = QList<SharedItem>; ///< a(ssssx)
using SharedInterfaces = QMap<QString, QVariantMap>; ///< a{sa{sv}}: properties by interface
using SharedObjects = QMap<QDBusObjectPath, SharedInterfaces>; ///< a{oa{sa{sv}}}

QDBusArgument &operator<<(QDBusArgument &argument, const SharedItem &item);
const QDBusArgument &operator>>(const QDBusArgument &argument, SharedItem &item);

/// The names, signatures and bounds of playlist sharing; data/org.kelvo.Playlist1.xml describes the
/// interface.
namespace PlaylistProtocol {
inline constexpr QLatin1String servicePrefix{"org.kelvo.Playlists."};
inline constexpr QLatin1String rootPath{"/org/kelvo/Playlists"};
inline constexpr QLatin1String interface {
    "org.kelvo.Playlist1"
};
inline constexpr QLatin1String getItems{"GetItems"};
inline constexpr QLatin1String openItems{"OpenItems"};
inline constexpr QLatin1String getManagedObjects{"GetManagedObjects"};
inline constexpr QLatin1String getProperty{"Get"};
inline constexpr QLatin1String getAllProperties{"GetAll"};
inline constexpr QLatin1String changedError{"org.kelvo.Playlist1.Error.Changed"};
inline constexpr QLatin1String objectManagerInterface{"org.freedesktop.DBus.ObjectManager"};
inline constexpr QLatin1String propertiesInterface{"org.freedesktop.DBus.Properties"};
inline constexpr QLatin1String busService{"org.freedesktop.DBus"};
inline constexpr QLatin1String busPath{"/org/freedesktop/DBus"};

/// What one reply may hold. The bus disconnects whoever sends an array above 64 MiB, so the owner must not
/// give as much as it is asked for.
inline constexpr uint maxPageItems = 1000;
inline constexpr qsizetype maxPageCharacters = 256 * 1024;
inline constexpr qsizetype maxTextCharacters = 4096;
inline constexpr qsizetype maxUrlCharacters = 128 * 1024;

/// What is taken from another process, whatever it offers.
inline constexpr uint firstPageItems = 100;
inline constexpr uint nextPageItems = 500; ///< also taken out of a file for each turn of the event loop
inline constexpr qsizetype maxItems = 100'000;
inline constexpr qsizetype maxCharacters = 32 * 1024 * 1024;
/// The files of OpenItems hold what is taken, and no more.
inline constexpr qsizetype leastItemBytes = 4 * sizeof(quint32) + sizeof(qlonglong);
inline constexpr qsizetype maxFileBytes = maxItems * leastItemBytes + 2 * maxCharacters;
inline constexpr int fileSeals = F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;
inline constexpr qsizetype maxPlaylistsOfPeer = 2000;
inline constexpr qsizetype maxPeers = 500;

/// Tries before a silent process is given up for now, and how many time-outs pass before it is tried again.
inline constexpr int maxAttempts = 3;
inline constexpr int restInTimeouts = 6;

/// Makes the types above known to Qt's D-Bus; before any connection is made to a slot or signal that has
/// them.
void registerTypes();

/// Whether a reply comes from the process with this unique bus name, or from the bus on its behalf. Any process may
/// answer a request that it was not asked, and the bus passes that on.
bool isAnswerOf(const QDBusMessage &reply, const QString &owner);

/// The first `limit` items of a(ssssx); `more` tells whether there were others.
SharedItems readItems(const QDBusArgument &argument, uint limit, bool *more);
/// The first `limit` objects of a{oa{sa{sv}}}.
SharedObjects readObjects(const QDBusArgument &argument, qsizetype limit, bool *more);
} // namespace PlaylistProtocol
