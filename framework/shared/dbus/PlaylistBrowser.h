// SPDX-License-Identifier: MIT
#pragma once

#include "BusBrowser.h"
#include "PlaylistPeer.h"

class QDBusMessage;

/// Finds the processes that offer playlists, as they come and go, and brings their playlists into the
/// registry. GUI thread; never waits for the bus or for another process. Destroying it takes all of them out.
class PlaylistBrowser : public BusBrowser
{
    Q_OBJECT
public:
    /// @param timeout  milliseconds that each call may take
    PlaylistBrowser(
        KelvoRegistry *registry, const QDBusConnection &connection, int timeout, QObject *parent = nullptr);
    ~PlaylistBrowser() override;

protected:
    void add(const QString &owner, const QString &name) override;
    void drop(const QString &owner) override;

private Q_SLOTS:
    // Slots that take the message get it whatever its arguments are, so that wrong ones are noticed.
    void handleInterfacesAdded(const QDBusMessage &message);
    void handleInterfacesRemoved(const QDBusMessage &message);
    void handleChanged(const QDBusMessage &message);
    void handlePropertiesChanged(const QDBusMessage &message);

private:
    /// The sender, when it offers playlists and the arguments are of these types; else null.
    PlaylistPeer *senderOf(const QDBusMessage &message, QStringView signature);

    QPointer<KelvoRegistry> m_registry;
    QHash<QString, PlaylistPeer *> m_peers; // By unique names.
    bool m_tooMany = false;
};
