// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class MediaServer;
class QTcpSocket;
struct ServedMedium;

/// One client of a MediaServer, who gets one answer.
class MediaConnection : public QObject
{
    Q_OBJECT
public:
    /// @param socket  becomes the parent, and is deleted when the connection ends
    /// @param server  not owned; outlives this
    MediaConnection(QTcpSocket *socket, MediaServer *server);

Q_SIGNALS:
    void answered(const QString &path, int status, qint64 from);

private:
    struct Range
    {
        qint64 from = 0;
        qint64 end = 0; ///< the byte behind the last
        bool isPart = false;
    };

    void read();
    void takeRequest(const QByteArray &head);
    void answer(const QByteArray &head, bool wantsBody);
    void refuse(int status);
    static Range rangeOf(const QByteArray &head, qint64 size);
    static QByteArray headOf(const ServedMedium &medium, const Range &range);
    void sendMore();
    /// How far the client may be served now.
    qint64 limit(const ServedMedium &medium) const;
    void close();

    QTcpSocket *const m_socket;
    MediaServer *const m_server;
    QByteArray m_request;
    QString m_path;
    qint64 m_from = 0;
    qint64 m_offset = 0;
    qint64 m_end = 0;
    QElapsedTimer m_sending;
    QTimer m_tick; ///< looks whether faults have changed, and measures out what goes slowly
    QTimer m_patience; ///< for a request that does not come
};
