// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QPointer>

#include <deque>
#include <functional>

/// Calls to one other process, asynchronous all of them.
///
/// An answer goes to its handler from the event loop, and nowhere when the asker is gone by then. Silence, also when
/// somebody else answered, is the error NoReply.
class PeerCalls : public QObject
{
    Q_OBJECT
public:
    using Handler = std::function<void(const QDBusMessage &reply)>;

    /// How many of the queued calls are under way: no more than the process answers at a time. A thousand of its lists
    /// may be wanted at once.
    static constexpr int AtOnce = 32;

    /// @param owner    unique bus name of the process
    /// @param timeout  milliseconds that each call may take
    PeerCalls(const QDBusConnection &connection, QString owner, int timeout);

    int timeout() const { return m_timeout; }
    /// Whether the bus hands over files.
    bool passesFiles() const;

    QDBusMessage make(const QString &path, const QString &interface, const QString &member) const;
    /// Sends a call at once.
    void send(QObject *asker, const QDBusMessage &call, const Handler &handler);
    /// Sends a call at once, or as soon as others are answered.
    void queue(QObject *asker, const QDBusMessage &call, const Handler &handler);
    /// Nothing more is sent from the queue, and no answer is handed on.
    void end();

private:
    struct Queued
    {
        QPointer<QObject> asker;
        QDBusMessage call;
        Handler handler;
    };

    QObject *begin(QObject *asker, const QDBusMessage &call, const Handler &handler);
    void sendQueued();

    QDBusConnection m_connection;
    const QString m_owner;
    const int m_timeout;
    bool m_ended = false;
    int m_underWay = 0; // Of the queued calls.
    std::deque<Queued> m_queued;
};
