// SPDX-License-Identifier: MIT
#pragma once

#include "CallGate.h"
#include "PlaylistProtocol.h"

#include <QDBusConnection>
#include <QObject>
#include <QTimer>

#include <memory>
#include <vector>

class ExportedPlaylist;
class ItemServer;
class KelvoPlaylist;

/// Offers the playlists of this process to the other ones: the well-known name, the object manager and an
/// object for each playlist. What others ask comes by a CallGate and is answered one by one, in turns of the event loop, so
/// that however many ask, the window goes on. GUI thread; never waits for the bus.
class PlaylistExporter : public QObject
{
    Q_OBJECT
public:
    /// @param timeout  milliseconds that the bus has for an answer
    PlaylistExporter(const QDBusConnection &connection, int timeout, QObject *parent = nullptr);
    ~PlaylistExporter() override;

    /// Not owned. Taken back by itself when the playlist is destroyed.
    void add(KelvoPlaylist *playlist);
    /// Nothing happens when it is not there.
    void remove(const QObject *playlist);

private:
    struct Export
    {
        const QObject *playlist;
        std::unique_ptr<ExportedPlaylist> object;
    };

    void requestName(int attempt);
    void releaseName();
    void serveNext();
    void serve(const QDBusMessage &call);
    void giveProperties(const ExportedPlaylist &object, const QDBusMessage &call);
    void announceChange(const ExportedPlaylist &object);
    void announceObject(const QString &path, const QString &change, const QVariant &what);
    void tellChildren();
    SharedObjects managedObjects() const;

    QDBusConnection m_connection;
    const int m_timeout;
    QString m_name; // Once it is owned.
    ItemServer *m_items;
    QTimer m_turn;
    std::vector<Export> m_exports;
    quint64 m_nextNumber = 0;
    std::unique_ptr<CallGate> m_gate;
};
