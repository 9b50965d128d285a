// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>

#include <chrono>

class QNetworkAccessManager;
class QNetworkReply;

/// What a download may take. Where it would take more it is ended, with what has come by then.
struct ThumbnailLimits
{
    /// Far more than a thumbnail has. A server that never ends its answer must not fill the memory.
    qint64 bytes = 16 * 1024 * 1024;
    std::chrono::milliseconds time = std::chrono::seconds(60);
};

/// Fetches pictures from URLs and hands their bytes on. Failures are not told apart: every download ends with
/// downloadFinished(), with what has come, which often is nothing. GUI thread only; nothing blocks.
class KelvoThumbnailDownloader : public QObject
{
    Q_OBJECT
public:
    explicit KelvoThumbnailDownloader(QObject *parent, const ThumbnailLimits &limits = {});
    ~KelvoThumbnailDownloader() override;

    /// Starts a download. One that runs already goes on; both are reported, in the order in which they finish.
    void download(const QString &file);

Q_SIGNALS:
    void downloadFinished(const QByteArray &data);

public Q_SLOTS:
    void requestFinished(QNetworkReply *reply);

private:
    struct Transfer
    {
        qint64 limit = 0;
        QByteArray data;
    };

    void limit(QNetworkReply *reply);
    void take(QNetworkReply *reply);

    QNetworkAccessManager *m_manager;
    QNetworkReply *m_reply = nullptr; // of the last download that has finished; owned
    QList<QNetworkReply *>
        m_replaced; // of those that finished before it, until the next download; the manager's
    QHash<QNetworkReply *, Transfer> m_transfers; // under way
    const ThumbnailLimits m_limits;
};
