// SPDX-License-Identifier: MIT
#pragma once

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

    /// What a later download may take, before it is ended with nothing.
    void setLimits(qint64 bytes, std::chrono::milliseconds time);

Q_SIGNALS:
    void downloadFinished(const QByteArray &data);

public Q_SLOTS:
    void requestFinished(QNetworkReply *reply);

private:
    void limit(QNetworkReply *reply) const;

    QNetworkAccessManager *m_manager;
    QNetworkReply *m_reply = nullptr; // of the last download that has finished; owned
    qint64 m_maximumSize;
    std::chrono::milliseconds m_maximumTime;
};
