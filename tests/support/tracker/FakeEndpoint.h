// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QTcpServer>
#include <QUrl>

#include <functional>
#include <memory>

class QTcpSocket;

/// A SPARQL endpoint on the loopback address that says byte by byte what it is told. Lives on the test's thread: it serves
/// while the event loop runs.
class FakeEndpoint : public QObject
{
    Q_OBJECT
public:
    /// What a request is answered with.
    struct Answer
    {
        QByteArray bytes; ///< with the head
        QByteArray again = {}; ///< follows, over and over
        bool staysOpen = false; ///< sends nothing more, and keeps the connection
    };
    using Answerer = std::function<Answer(const QByteArray &query)>;

    explicit FakeEndpoint(Answerer answerer);
    /// The same behind this server, for addresses of this scheme.
    FakeEndpoint(std::unique_ptr<QTcpServer> server, const QString &scheme, Answerer answerer);

    QUrl url() const;
    /// From now on refuses connections, until it comes back at the same address.
    void goAway();
    bool comeBack();

    QList<QByteArray> queries() const { return m_queries; }
    /// The head of the last request.
    QByteArray lastHead() const { return m_head; }
    int connections() const { return m_connections; }
    int openConnections() const { return m_open; }
    qint64 bytesSent() const { return m_bytesSent; }

    /// An answer that ends where it says.
    static QByteArray good(const QByteArray &mediaType, const QByteArray &body);
    static QByteArray head(const QByteArray &status, const QByteArray &headers);

private:
    void accept();
    void answer(QTcpSocket *socket, const QByteArray &head);
    void repeat(QTcpSocket *socket, const QByteArray &bytes);

    const Answerer m_answerer;
    const std::unique_ptr<QTcpServer> m_server;
    const QString m_scheme;
    quint16 m_port = 0;
    QList<QByteArray> m_queries;
    QByteArray m_head;
    int m_connections = 0;
    int m_open = 0;
    qint64 m_bytesSent = 0;
};
