// SPDX-License-Identifier: MIT
#include "MediaServer.h"

#include "MediaConnection.h"

#include <QTcpSocket>

MediaServer::MediaServer(QObject *parent)
    : QObject(parent)
{
    connect(&m_server, &QTcpServer::newConnection, this, &MediaServer::accept);
}

bool MediaServer::listen(const QHostAddress &address, QString *error)
{
    const bool listens = m_server.listen(address);
    if (!listens)
        *error
            = QStringLiteral("cannot serve media at %1: %2").arg(address.toString(), m_server.errorString());
    return listens;
}

void MediaServer::serve(const QString &path, const ServedMedium &medium)
{
    m_media.insert(path, medium);
}

void MediaServer::setFault(const QString &path, const MediaFault &fault)
{
    const auto found = m_media.find(path);
    if (found != m_media.end())
        found->fault = fault;
}

QUrl MediaServer::url(const QString &path) const
{
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(m_server.serverAddress().toString());
    url.setPort(m_server.serverPort());
    url.setPath(u'/' + path);
    return url;
}

const ServedMedium *MediaServer::medium(const QString &path) const
{
    const auto found = m_media.constFind(path);
    return found == m_media.cend() ? nullptr : &*found;
}

void MediaServer::accept()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        if (m_clients >= MostClients) {
            delete socket;
            continue;
        }
        ++m_clients;
        // Goes with its socket.
        auto *connection = new MediaConnection(socket, this);
        connect(connection, &MediaConnection::answered, this, &MediaServer::requested);
        connect(socket, &QObject::destroyed, this, [this] { --m_clients; });
    }
}
