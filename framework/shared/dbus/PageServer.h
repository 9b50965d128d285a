// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <deque>

class ExportedPlaylist;

/// Answers the requests for pages, one for each turn of the event loop, so that a caller who asks for a
/// thousand pages at once does not hold up the window.
class PageServer : public QObject
{
    Q_OBJECT
public:
    explicit PageServer(const QDBusConnection &connection, QObject *parent = nullptr);

    void enqueue(ExportedPlaylist *playlist, const QDBusMessage &request, uint start, uint count);

private:
    struct Request
    {
        QPointer<ExportedPlaylist> playlist;
        QDBusMessage message;
        uint start;
        uint count;
    };

    void serveNext();

    QDBusConnection m_connection;
    std::deque<Request> m_requests;
    QTimer m_turn;
};
