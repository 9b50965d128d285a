// SPDX-License-Identifier: MIT
#pragma once

#include "ForeignPlaylist.h"

#include <QHash>
#include <QPointer>

class KelvoRegistry;

/// Another process that offers playlists. Keeps the registry in step with what it offers; destroying the
/// object takes all its playlists out.
class PlaylistPeer : public QObject
{
    Q_OBJECT
public:
    /// @param owner    its unique bus name
    /// @param label    what tells the tester which process it is
    /// @param timeout  milliseconds that each call may take
    PlaylistPeer(KelvoRegistry *registry, const QDBusConnection &connection, const QString &owner,
        QString label, int timeout, QObject *parent = nullptr);
    ~PlaylistPeer() override;

    /// The process has gone: takes its playlists out at once and deletes this object from the event loop.
    void leave();
    /// Asks for everything that it offers; what it no longer offers goes.
    void list();

    void add(const QString &path, const SharedInterfaces &interfaces);
    void remove(const QString &path);
    void noteRevision(const QString &path, uint revision);
    void noteProperties(const QString &path, const QVariantMap &changed);
    /// A warning that names the process; a process that gives reason for many is ignored after a while.
    void complain(const QString &text);

private:
    void handleList(const QDBusMessage &reply);
    void handleListError(const QDBusError &error);
    void handleSilence();
    void takeOver(const SharedObjects &objects);
    void withdrawAll();
    void create(const QString &path, const PlaylistDescription &description);
    void withdraw(ForeignPlaylist *playlist);
    void noteFreedId(const QString &id);

    QPointer<KelvoRegistry> m_registry;
    PeerCalls m_calls;
    const QString m_label;
    QHash<QString, ForeignPlaylist *> m_playlists; // By path.
    QHash<QString, QString> m_refusedIds; // By path; in use by other playlists when they were offered.
    bool m_listing = false;
    int m_attempt = 1;
    int m_complaints = 0;
};
