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

/// The shared-objects service of the process: it starts the tracking of what can be played and played on, and
/// makes playlists known to the registry and to other processes. GUI thread only.
class KELVO_SHARED_EXPORT KelvoShared : public QObject
{
    Q_OBJECT
public:
    /// The one service of the process; made on first use, lives until the process ends.
    static KelvoShared *instance();

    ~KelvoShared() override;

    /// Starts discovery through this registry and returns at once: the plug-ins are started from the event loop,
    /// so that whoever starts up now has connected to the registry before the first object is announced. False
    /// when there is no session bus: playlists then stay within this process, everything else works.
    /// Calling it again changes nothing and gives the same answer.
    bool initTracking(KelvoRegistry *registry);

    /// Takes ownership of the playlist, adds it to the registry and offers it to other processes. False (and no
    /// ownership taken) before initTracking() or when the registry refuses it.
    bool publishPlaylist(KelvoPlaylist *playlist);

    /// Withdraws a playlist that was published here: the registry reports it removed, then it is deleted from
    /// the event loop. Other ids give a warning.
    void unPublishPlaylist(const QString &uuid);

private:
    KelvoShared();
    struct Private;
    std::unique_ptr<Private> d;
};
