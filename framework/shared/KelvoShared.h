// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include <memory>

#ifdef KELVO_SHARED_BUILD
#define KELVO_SHARED_EXPORT Q_DECL_EXPORT
#else
#define KELVO_SHARED_EXPORT Q_DECL_IMPORT
#endif

class KelvoPlaylist;
class KelvoRegistry;
class QDBusConnection;

/// The shared-objects service of the process: it starts the tracking of what can be played and played on, and
/// shares playlists with the other processes of the session, over the session bus.
///
/// The playlists published here are offered to the other processes for reading. What those offer appears in
/// the registry as playlists that cannot be edited (KelvoPlaylist::isWritable()), named "<name> [pid
/// <process>]", and goes with its process. A playlist whose id is in use in this process is not taken. Where
/// the bus or another process does not answer, the milliseconds in the environment variable KELVO_BUS_TIMEOUT
/// (5000) are waited, never on the caller's time. When the bus breaks down, the playlists of other processes
/// go, with a warning; those of this process stay.
///
/// GUI thread only. The sharing ends with the application object.
class KELVO_SHARED_EXPORT KelvoShared : public QObject
{
    Q_OBJECT
public:
    /// The one service of the process; made on first use, lives until the process ends.
    static KelvoShared *instance();

    ~KelvoShared() override;

    /// Starts discovery through this registry and returns at once: the plug-ins are started from the event
    /// loop, so that whoever starts up now has connected to the registry before the first object is
    /// announced. False when there is no session bus: playlists then stay within this process, everything
    /// else works. True when something listens at the bus's address; the connection is made behind the
    /// caller's back, and a warning says so if it fails. Calling it again changes nothing and gives the same
    /// answer.
    bool initTracking(KelvoRegistry *registry);

    /// Takes ownership of the playlist, adds it to the registry and offers it to other processes. False (and
    /// no ownership taken) before initTracking() or when the registry refuses it.
    bool publishPlaylist(KelvoPlaylist *playlist);

    /// Withdraws a playlist that was published here: the registry reports it removed, then it is deleted from
    /// the event loop. Other ids give a warning.
    void unPublishPlaylist(const QString &uuid);

private:
    KelvoShared();
    bool connectToBus();
    void startSharing(const QDBusConnection &connection);
    void stopSharing();
    static void endWithApplication();
    void forget(const QObject *playlist);

    struct Private;
    std::unique_ptr<Private> d;
};
