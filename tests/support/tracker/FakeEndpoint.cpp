// SPDX-License-Identifier: MIT
#include "FakeEndpoint.h"

#include <QTcpSocket>
#include <QUrlQuery>

FakeEndpoint::FakeEndpoint(Answerer answerer)
    : FakeEndpoint(std::make_unique<QTcpServer>(), QStringLiteral("http"), std::move(answerer))
{
}

FakeEndpoint::FakeEndpoint(std::unique_ptr<QTcpServer> server, const QString &scheme, Answerer answerer)
    : m_answerer(std::move(answerer))
    , m_server(std::move(server))
    , m_scheme(scheme)
{
    connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, &FakeEndpoint::accept);
    m_server->listen(QHostAddress::LocalHost);
    m_port = m_server->serverPort();
}

QUrl FakeEndpoint::url() const
{
    return QUrl(QStringLiteral("%1://127.0.0.1:%2/sparql").arg(m_scheme).arg(m_port));
}

void FakeEndpoint::goAway()
{
    m_server->close();
}

bool FakeEndpoint::comeBack()
{
    return m_server->listen(QHostAddress::LocalHost, m_port);
}

QByteArray FakeEndpoint::head(const QByteArray &status, const QByteArray &headers)
{
    return "HTTP/1.1 " + status + "\r\n" + headers + "\r\n";
}

QByteArray FakeEndpoint::good(const QByteArray &mediaType, const QByteArray &body)
{
    return head("200 OK",
               "Content-Type: " + mediaType + "\r\nContent-Length: " + QByteArray::number(body.size())
                   + "\r\n")
        + body;
}

void FakeEndpoint::accept()
{
    while (QTcpSocket *socket = m_server->nextPendingConnection()) {
        ++m_connections;
        ++m_open;
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            --m_open;
            socket->deleteLater();
        });
        const auto read = [this, socket, request = std::make_shared<QByteArray>()] {
            *request += socket->readAll();
            if (request->contains("\r\n\r\n"))
                answer(socket, std::exchange(*request, {}));
        };
        connect(socket, &QTcpSocket::readyRead, this, read);
        read(); // an encrypted one may have had its request before it was handed over
    }
}

void FakeEndpoint::answer(QTcpSocket *socket, const QByteArray &head)
{
    m_head = head;
    const QUrl target = QUrl::fromEncoded(head.left(head.indexOf('\r')).split(' ').value(1));
    m_queries.append(QUrlQuery(target).queryItemValue(QStringLiteral("query"), QUrl::FullyDecoded).toUtf8());
    const Answer answer = m_answerer(m_queries.constLast());
    socket->write(answer.bytes);
    m_bytesSent += answer.bytes.size();
    if (!answer.again.isEmpty()) {
        connect(socket, &QTcpSocket::bytesWritten, this,
            [this, socket, answer] { repeat(socket, answer.again); });
        repeat(socket, answer.again);
        return;
    }
    const bool saysItsEnd
        = answer.bytes.contains("Content-Length") && !answer.bytes.contains("Connection: close");
    if (!answer.staysOpen && !saysItsEnd)
        socket->disconnectFromHost();
}

// As fast as the other side reads.
void FakeEndpoint::repeat(QTcpSocket *socket, const QByteArray &bytes)
{
    constexpr qint64 ahead = 64 * 1024;
    while (socket->state() == QTcpSocket::ConnectedState && socket->bytesToWrite() < ahead) {
        socket->write(bytes);
        m_bytesSent += bytes.size();
    }
}
