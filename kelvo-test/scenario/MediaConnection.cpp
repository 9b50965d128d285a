// SPDX-License-Identifier: MIT
#include "MediaConnection.h"

#include "MediaServer.h"

#include <QRegularExpression>
#include <QTcpSocket>

#include <algorithm>

namespace {
constexpr int tickTime = 20; // milliseconds
constexpr int patienceTime = 30'000; // milliseconds
constexpr qsizetype longestRequest = 16 * 1024;
constexpr qint64 slice = 64 * 1024;
constexpr qint64 mostWaiting = 4 * slice;
/// What is sent slowly begins with this much of it at once: players want to see a beginning. Seconds.
constexpr double headStart = 1;

const char *reasonOf(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 206:
        return "Partial Content";
    case 400:
        return "Bad Request";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 416:
        return "Range Not Satisfiable";
    case 500:
        return "Internal Server Error";
    case 503:
        return "Service Unavailable";
    default:
        return "Status";
    }
}

QByteArray statusLine(int status)
{
    return "HTTP/1.1 " + QByteArray::number(status) + ' ' + reasonOf(status) + "\r\n";
}
} // namespace

MediaConnection::MediaConnection(QTcpSocket *socket, MediaServer *server)
    : QObject(socket)
    , m_socket(socket)
    , m_server(server)
{
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    connect(socket, &QTcpSocket::readyRead, this, &MediaConnection::read);
    connect(socket, &QTcpSocket::bytesWritten, this, &MediaConnection::sendMore);
    connect(&m_tick, &QTimer::timeout, this, &MediaConnection::sendMore);
    connect(&m_patience, &QTimer::timeout, socket, &QTcpSocket::abort);
    m_patience.start(patienceTime);
}

void MediaConnection::read()
{
    if (!m_patience.isActive()) {
        // It has had its answer: what else it says is of no interest.
        m_socket->readAll();
        return;
    }
    m_request += m_socket->read(longestRequest + 1 - m_request.size());
    const qsizetype end = m_request.indexOf("\r\n\r\n");
    if (end >= 0)
        takeRequest(m_request.left(end + 2));
    else if (m_request.size() > longestRequest)
        refuse(400);
}

void MediaConnection::takeRequest(const QByteArray &head)
{
    m_patience.stop();
    const QList<QByteArray> line = head.left(head.indexOf('\r')).split(' ');
    const QByteArray &method = line.at(0);
    const QUrl target = QUrl::fromEncoded(line.value(1));
    m_path = target.path().mid(1);
    if (line.size() != 3 || !line.at(2).startsWith("HTTP/1."))
        refuse(400);
    else if (method != "GET" && method != "HEAD")
        refuse(405);
    else if (!m_server->medium(m_path))
        refuse(404);
    else
        QTimer::singleShot(m_server->medium(m_path)->fault.delay, this,
            [this, head, isGet = method == "GET"] { answer(head, isGet); });
}

void MediaConnection::refuse(int status)
{
    m_patience.stop();
    m_socket->write(statusLine(status) + "Content-Length: 0\r\nConnection: close\r\n\r\n");
    Q_EMIT answered(m_path, status, 0);
    close();
}

MediaConnection::Range MediaConnection::rangeOf(const QByteArray &head, qint64 size)
{
    static const QRegularExpression form(QStringLiteral("^range: *bytes=(\\d{0,18})-(\\d{0,18}) *\\r?$"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = form.match(QString::fromLatin1(head));
    const QString first = match.captured(1);
    const QString last = match.captured(2);
    if (!match.hasMatch() || (first.isEmpty() && last.isEmpty()))
        return {0, size, false};
    // The last so many bytes.
    if (first.isEmpty())
        return {std::max<qint64>(0, size - last.toLongLong()), size, true};
    const qint64 end = last.isEmpty() ? size : std::min(size, last.toLongLong() + 1);
    return {first.toLongLong(), end, true};
}

QByteArray MediaConnection::headOf(const ServedMedium &medium, const Range &range)
{
    const qint64 length = medium.fault.length.value_or(range.end - range.from);
    QByteArray head = statusLine(range.isPart ? 206 : 200) + "Content-Type: " + medium.type
        + "\r\nContent-Length: " + QByteArray::number(length)
        + "\r\nAccept-Ranges: bytes\r\nConnection: close\r\n";
    if (range.isPart)
        head += "Content-Range: bytes " + QByteArray::number(range.from) + '-'
            + QByteArray::number(range.end - 1) + '/' + QByteArray::number(medium.size) + "\r\n";
    return head + "\r\n";
}

void MediaConnection::answer(const QByteArray &head, bool wantsBody)
{
    const ServedMedium *medium = m_server->medium(m_path);
    if (!medium || medium->fault.status != 200) {
        refuse(medium ? medium->fault.status : 404);
        return;
    }
    const Range range = rangeOf(head, medium->size);
    if (range.from >= range.end) {
        refuse(416);
        return;
    }
    m_socket->write(headOf(*medium, range));
    m_from = m_offset = range.from;
    m_end = wantsBody ? range.end : range.from;
    m_sending.start();
    Q_EMIT answered(m_path, range.isPart ? 206 : 200, range.from);
    m_tick.start(tickTime);
    sendMore();
}

qint64 MediaConnection::limit(const ServedMedium &medium) const
{
    qint64 limit = m_end;
    if (medium.fault.stallAt)
        limit = std::min(limit, medium.byteAt(*medium.fault.stallAt));
    if (medium.fault.cutAt)
        limit = std::min(limit, medium.byteAt(*medium.fault.cutAt));
    if (medium.fault.speed > 0) {
        const double seconds = headStart + medium.fault.speed * double(m_sending.elapsed()) / 1000;
        limit = std::min(limit, m_from + medium.head + qint64(seconds * medium.bytesPerSecond));
    }
    return limit;
}

void MediaConnection::sendMore()
{
    if (!m_tick.isActive())
        return;
    const ServedMedium *medium = m_server->medium(m_path);
    if (!medium) {
        close();
        return;
    }
    while (m_socket->bytesToWrite() < mostWaiting && m_offset < limit(*medium)) {
        const QByteArray data = medium->read(m_offset, std::min(slice, limit(*medium) - m_offset));
        if (data.isEmpty()) {
            close();
            return;
        }
        m_socket->write(data);
        m_offset += data.size();
    }
    const bool isCut = medium->fault.cutAt && m_offset >= medium->byteAt(*medium->fault.cutAt);
    if (m_offset >= m_end || isCut)
        close();
}

void MediaConnection::close()
{
    m_tick.stop();
    m_socket->disconnectFromHost();
}
