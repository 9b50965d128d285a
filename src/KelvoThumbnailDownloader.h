// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>

#include <chrono>

class QNetworkAccessManager;
class QNetworkReply;

/// Fetches pictures from URLs and hands their bytes on. Failures are not told apart: every download ends with
/// downloadFinished(), with what has come, which often is nothing. GUI thread only; nothing blocks.
class KelvoThumbnailDownloader : public QObject
{
    Q_OBJECT
public:
    explicit KelvoThumbnailDownloader(QObject *parent);
    ~KelvoThumbnailDownloader() override;

    /// Starts a download. One that runs already goes on; both are reported, in the order in which they finish.
    void download(const QString &file);

    /// What a later download may take. Where it would take more it is ended, with what has come by then.
    void setLimits(qint64 bytes, std::chrono::milliseconds time);

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
    qint64 m_maximumSize;
    std::chrono::milliseconds m_maximumTime;
};
