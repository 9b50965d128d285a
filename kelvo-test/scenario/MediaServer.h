// SPDX-License-Identifier: MIT
#pragma once

#include "Medium.h"

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QObject>
#include <QTcpServer>
#include <QUrl>

#include <functional>

/// What is behind a path of a MediaServer.
struct ServedMedium
{
    qint64 size = 0;
    /// At most so many bytes from an offset on; fewer at the end.
    std::function<QByteArray(qint64 from, qint64 most)> read;
    QByteArray type; ///< IANA media type
    qint64 head = 0; ///< bytes before the first that plays
    double bytesPerSecond = 0; ///< of those that play
    MediaFault fault;

    /// The byte at that second.
    qint64 byteAt(double second) const { return head + qint64(second * bytesPerSecond); }
};

/// A web server for media that treats its clients as badly as it is told. Lives on the GUI thread and serves while the
/// event loop runs; whatever is asked of it, it keeps at most a few hundred kilobytes for each of 64 clients.
class MediaServer : public QObject
{
    Q_OBJECT
public:
    static constexpr int MostClients = 64;

    explicit MediaServer(QObject *parent = nullptr);

    /// False, with the reason, where that cannot be listened at. Any free port.
    bool listen(const QHostAddress &address, QString *error);
    /// @param path  without the slash
    void serve(const QString &path, const ServedMedium &medium);
    /// From now on, also for those who are being served. A path that is not served is ignored.
    void setFault(const QString &path, const MediaFault &fault);
    /// Serves nothing any more.
    void clear() { m_media.clear(); }

    QUrl url(const QString &path) const;
    /// Null where there is none.
    const ServedMedium *medium(const QString &path) const;

Q_SIGNALS:
    /// Somebody asked, and was answered with that HTTP status, from that byte on.
    void requested(const QString &path, int status, qint64 from);

private:
    void accept();

    QTcpServer m_server;
    QHash<QString, ServedMedium> m_media;
    int m_clients = 0;
};
