// SPDX-License-Identifier: MIT
#include "HttpTestServer.h"

#include <QFile>
#include <QHostAddress>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <memory>

namespace {
constexpr int sliceTime = 20; // milliseconds
constexpr qint64 slice = 64 * 1024;

qint64 firstByte(const QByteArray &head)
{
    static const QRegularExpression range(QStringLiteral("^range: *bytes=(\\d+)-"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::MultilineOption);
    return range.match(QString::fromLatin1(head)).captured(1).toLongLong();
}
} // namespace

struct HttpTestServer::Transfer
{
    Resource resource;
    qint64 offset = 0;
    qint64 end = 0;
    QTimer timer;
};

HttpTestServer::HttpTestServer(QObject *parent)
    : QObject(parent)
{
    connect(&m_server, &QTcpServer::newConnection, this, &HttpTestServer::accept);
    if (!m_server.listen(QHostAddress::LocalHost))
        qFatal("The test server cannot listen");
}

void HttpTestServer::serve(const QString &path, const Resource &resource)
{
    m_resources.insert(path.toLatin1(), resource);
}

void HttpTestServer::serve(const QString &path, const Answerer &answerer)
{
    m_answerers.insert(path.toLatin1(), answerer);
}

void HttpTestServer::serveFile(const QString &path, const QString &fileName, const QByteArray &contentType)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("The test server cannot read %s", qPrintable(fileName));
    Resource resource;
    resource.body = file.readAll();
    resource.contentType = contentType;
    serve(path, resource);
}

QUrl HttpTestServer::url(const QString &path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
}

QUrl HttpTestServer::refusingUrl()
{
    QTcpServer taken;
    taken.listen(QHostAddress::LocalHost);
    return QUrl(QStringLiteral("http://127.0.0.1:%1/nobody.mp3").arg(taken.serverPort()));
}

void HttpTestServer::release()
{
    m_released = true;
}

void HttpTestServer::accept()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket, head = QByteArray()]() mutable {
            head += socket->readAll();
            if (!head.contains("\r\n\r\n"))
                return;
            answer(socket, std::exchange(head, {}));
        });
    }
}

void HttpTestServer::answer(QTcpSocket *socket, const QByteArray &head)
{
    const QList<QByteArray> request = head.left(head.indexOf('\r')).split(' ');
    const QByteArray path = request.value(1);
    const qint64 from = firstByte(head);
    m_requests.append({path, from, head});
    Resource resource = m_resources.value(path);
    if (const Answerer answerer = m_answerers.value(path))
        resource = answerer(m_requests.constLast());
    else if (!m_resources.contains(path))
        resource.status = 404;
    if (resource.silent)
        return;
    if (resource.delay > 0)
        QTimer::singleShot(
            resource.delay, socket, [this, socket, head, resource] { send(socket, head, resource); });
    else
        send(socket, head, resource);
}

void HttpTestServer::send(QTcpSocket *socket, const QByteArray &head, const Resource &resource)
{
    const QList<QByteArray> request = head.left(head.indexOf('\r')).split(' ');
    const qint64 from = firstByte(head);
    if (resource.closeAfter >= 0)
        m_resources[request.value(1)].closeAfter = -1;

    auto transfer = std::make_shared<Transfer>();
    transfer->resource = resource;
    transfer->end = resource.body.size() + resource.padding;
    const bool part = resource.ranges && from > 0 && from < transfer->end && resource.status == 200;
    transfer->offset = part ? from : 0;
    QByteArray answer = "HTTP/1.1 " + QByteArray::number(part ? 206 : resource.status)
        + " Test\r\nContent-Type: " + resource.contentType
        + "\r\nContent-Length: " + QByteArray::number(transfer->end - transfer->offset)
        + "\r\nConnection: close\r\nAccept-Ranges: " + (resource.ranges ? "bytes" : "none") + "\r\n";
    if (part)
        answer += "Content-Range: bytes " + QByteArray::number(from) + "-"
            + QByteArray::number(transfer->end - 1) + "/" + QByteArray::number(transfer->end) + "\r\n";
    answer += resource.headers;
    if (!resource.location.isEmpty())
        answer += "Location: " + resource.location + "\r\n";
    socket->write(answer + "\r\n");
    if (request.value(0) == "HEAD") {
        socket->disconnectFromHost();
        return;
    }
    connect(&transfer->timer, &QTimer::timeout, socket,
        [this, socket, transfer] { sendMore(socket, *transfer); });
    connect(socket, &QObject::destroyed, &transfer->timer, [timer = &transfer->timer] { timer->stop(); });
    transfer->timer.start(resource.bytesPerSecond > 0 ? sliceTime : 0);
}

void HttpTestServer::sendMore(QTcpSocket *socket, Transfer &transfer)
{
    const Resource &resource = transfer.resource;
    // Whoever stalls, or waits for the other side, looks now and then only.
    transfer.timer.setInterval(sliceTime);
    if (socket->bytesToWrite() > 4 * slice)
        return;
    qint64 end = transfer.end;
    if (resource.stallAfter >= 0 && !m_released)
        end = std::min(end, resource.stallAfter);
    if (resource.closeAfter >= 0)
        end = std::min(end, resource.closeAfter);
    const qint64 most
        = resource.bytesPerSecond > 0 ? std::max(1, resource.bytesPerSecond * sliceTime / 1000) : slice;
    const qint64 size = std::min(most, end - transfer.offset);
    if (size > 0) {
        QByteArray data = resource.body.mid(transfer.offset, size);
        data.append(size - data.size(), '\0');
        socket->write(data);
        m_bytesSent += size;
        transfer.offset += size;
        if (resource.bytesPerSecond <= 0)
            transfer.timer.setInterval(0);
    }
    const bool cut = resource.closeAfter >= 0 && transfer.offset >= resource.closeAfter;
    if (transfer.offset >= transfer.end || cut) {
        transfer.timer.stop();
        socket->disconnectFromHost();
    }
}
