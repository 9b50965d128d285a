// SPDX-License-Identifier: MIT
#include "PeerCalls.h"

#include "PlaylistProtocol.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>

PeerCalls::PeerCalls(const QDBusConnection &connection, QString owner, int timeout)
    : m_connection(connection)
    , m_owner(std::move(owner))
    , m_timeout(timeout)
{
}

bool PeerCalls::passesFiles() const
{
    return m_connection.connectionCapabilities().testFlag(QDBusConnection::UnixFileDescriptorPassing);
}

QDBusMessage PeerCalls::make(const QString &path, const QString &interface, const QString &member) const
{
    auto call = QDBusMessage::createMethodCall(m_owner, path, interface, member);
    call.setAutoStartService(false);
    return call;
}

void PeerCalls::send(QObject *asker, const QDBusMessage &call, const Handler &handler)
{
    begin(asker, call, handler);
}

void PeerCalls::queue(QObject *asker, const QDBusMessage &call, const Handler &handler)
{
    m_queued.push_back({asker, call, handler});
    sendQueued();
}

void PeerCalls::sendQueued()
{
    while (m_underWay < AtOnce && !m_queued.empty()) {
        const Queued next = std::move(m_queued.front());
        m_queued.pop_front();
        if (!next.asker)
            continue;
        ++m_underWay;
        // It ends with its answer or with its asker.
        connect(begin(next.asker, next.call, next.handler), &QObject::destroyed, this, [this] {
            --m_underWay;
            sendQueued();
        });
    }
}

/// Lives as long as the call is under way; the asker's child.
QObject *PeerCalls::begin(QObject *asker, const QDBusMessage &call, const Handler &handler)
{
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(call, m_timeout), asker);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, handler] {
        watcher->deleteLater();
        if (m_ended)
            return;
        const QDBusMessage reply = watcher->reply();
        handler(PlaylistProtocol::isAnswerOf(reply, m_owner)
                ? reply
                : QDBusMessage::createError(QDBusError::NoReply, QStringLiteral("Somebody else answered")));
    });
    return watcher;
}

void PeerCalls::end()
{
    m_queued.clear();
    m_ended = true;
}
