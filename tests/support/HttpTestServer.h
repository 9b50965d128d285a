// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QTcpServer>
#include <QUrl>

#include <functional>

class QTcpSocket;

/// A web server on the loopback address that misbehaves as told. Lives on the test's thread: it serves while
/// the event loop runs.
class HttpTestServer : public QObject
{
    Q_OBJECT
public:
    /// What one path gives.
    struct Resource
    {
        QByteArray body;
        QByteArray contentType = "application/octet-stream";
        int status = 200;
        QByteArray location = {}; ///< of a redirection
        int bytesPerSecond = 0; ///< 0: as fast as the client reads
        qint64 padding = 0; ///< this many zeros follow the body
        qint64 stallAfter
            = -1; ///< sends nothing more from this offset of the body on, and keeps the connection
        qint64 closeAfter = -1; ///< closes the connection at this offset, once
        bool silent = false; ///< accepts, and never answers
        int delay = 0; ///< milliseconds that the answer comes late
        bool ranges = true; ///< answers requests for a part with that part
        QByteArray headers = {}; ///< further ones, each with the end of its line
    };

    struct Request
    {
        QByteArray path;
        qint64 from = 0; ///< first byte asked for
        QByteArray head = {}; ///< all of its lines
    };
    using Answerer = std::function<Resource(const Request &)>;

    explicit HttpTestServer(QObject *parent = nullptr);

    void serve(const QString &path, const Resource &resource);
    /// Makes up an answer for each request.
    void serve(const QString &path, const Answerer &answerer);
    void serveFile(const QString &path, const QString &fileName, const QByteArray &contentType);
    QUrl url(const QString &path) const;
    /// A URL that refuses connections.
    static QUrl refusingUrl();

    QList<Request> requests() const { return m_requests; }
    qint64 bytesSent() const { return m_bytesSent; }
    /// Ends every stall: what was held back is sent.
    void release();

private:
    struct Transfer;
    void accept();
    void answer(QTcpSocket *socket, const QByteArray &head);
    void send(QTcpSocket *socket, const QByteArray &head, const Resource &resource);
    void sendMore(QTcpSocket *socket, Transfer &transfer);

    QTcpServer m_server;
    QHash<QByteArray, Resource> m_resources;
    QHash<QByteArray, Answerer> m_answerers;
    QList<Request> m_requests;
    qint64 m_bytesSent = 0;
    bool m_released = false;
};
