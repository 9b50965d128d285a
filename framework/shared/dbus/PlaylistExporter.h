// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistProtocol.h"

#include <QDBusConnection>
#include <QObject>

#include <memory>
#include <vector>

class ExportedPlaylist;
class ItemServer;
class KelvoPlaylist;
class ObjectManagerAdaptor;

/// Offers the playlists of this process to the other ones: the well-known name, the object manager and an
/// object for each playlist. GUI thread; never waits for the bus.
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
    void announceProperties(const ExportedPlaylist &object);
    SharedObjects managedObjects() const;

    QDBusConnection m_connection;
    const int m_timeout;
    QString m_name; // Once it is owned.
    ItemServer *m_items;
    ObjectManagerAdaptor *m_objectManager;
    std::vector<Export> m_exports;
    quint64 m_nextNumber = 0;
};
