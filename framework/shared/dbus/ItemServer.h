// SPDX-License-Identifier: MIT
#pragma once

#include "ItemPacker.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <deque>
#include <memory>

/// Answers the requests for items, a page or a slice of a file for each turn of the event loop, so that neither a long
/// list nor a caller who asks for a thousand pages at once holds up the window. No more is given than the bus takes: what it
/// has not taken yet is in the memory of this process.
class ItemServer : public QObject
{
    Q_OBJECT
public:
    explicit ItemServer(const QDBusConnection &connection, QObject *parent = nullptr);

    /// @param request  a call of GetItems or OpenItems
    void enqueue(ExportedPlaylist *playlist, const QDBusMessage &request);

private:
    struct Request
    {
        QPointer<ExportedPlaylist> playlist;
        QDBusMessage message;
    };

    void serveNext();
    void waitForBus();
    void givePage(const Request &request);
    bool giveFile(const Request &request);
    void refuse(const Request &request, QDBusError::ErrorType type, const QString &text);

    QDBusConnection m_connection;
    std::deque<Request> m_requests;
    std::unique_ptr<ItemPacker> m_packer; // Kept for the next who asks for the same.
    QTimer m_turn;
    qsizetype m_sent = 0; // characters, since the bus was last known to have taken everything
    bool m_isWaitingForBus = false;
};
