// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistFile.h"

#include <QByteArray>
#include <QObject>

class QNetworkAccessManager;
class QNetworkReply;

/// Reads one playlist file at a time, local or over HTTP. Lives on a thread of its own: large lists take a
/// second.
class PlaylistFileReader : public QObject
{
    Q_OBJECT
public:
    /// How long a server may stay silent, in seconds.
    explicit PlaylistFileReader(int networkTimeout);
    ~PlaylistFileReader() override;

    /// Ends with finished(), unless another read() or cancel() comes first.
    void read(quint64 ticket, const QUrl &uri, const QString &contentType);
    void cancel();

Q_SIGNALS:
    void finished(quint64 ticket, const PlaylistFile::Contents &contents);

private:
    void readRemote(const QUrl &uri);
    void takeMore();
    void takeEnd();
    bool recognise();
    void finish(const PlaylistFile::Contents &contents);

    const int m_networkTimeout;
    QNetworkAccessManager *m_network = nullptr;
    QNetworkReply *m_reply = nullptr;
    quint64 m_ticket = 0;
    QUrl m_uri;
    PlaylistFile::Formats m_announced = PlaylistFile::Format::None;
    PlaylistFile::Format m_format = PlaylistFile::Format::None;
    QByteArray m_text;
};
