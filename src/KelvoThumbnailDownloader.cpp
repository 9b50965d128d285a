// SPDX-License-Identifier: MIT
#include "KelvoThumbnailDownloader.h"

#include <QDebug>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

namespace {
// What the network may be ahead of us, and so what more than the limit is ever taken.
constexpr qint64 readBufferSize = 256 * 1024;
} // namespace

KelvoThumbnailDownloader::KelvoThumbnailDownloader(QObject *parent, const ThumbnailLimits &limits)
    : QObject(parent)
    , m_manager(new QNetworkAccessManager(this))
    , m_limits(limits)
{
    qDebug() << "KelvoThumbnailDownloader::KelvoThumbnailDownloader";
    connect(m_manager, SIGNAL(finished(QNetworkReply *)), this, SLOT(requestFinished(QNetworkReply *)));
}

KelvoThumbnailDownloader::~KelvoThumbnailDownloader()
{
    qDebug() << "KelvoThumbnailDownloader::~KelvoThumbnailDownloader";
    delete m_reply;
}

void KelvoThumbnailDownloader::download(const QString &file)
{
    qDebug() << "KelvoThumbnailDownloader::download, file" << file;
    // Later: whoever hears of a finished download may start the next one at once.
    if (m_reply)
        m_replaced.append(std::exchange(m_reply, nullptr));
    for (QNetworkReply *reply : std::exchange(m_replaced, {}))
        reply->deleteLater();
    limit(m_manager->get(QNetworkRequest(QUrl(file))));
}

void KelvoThumbnailDownloader::limit(QNetworkReply *reply)
{
    m_transfers.insert(reply, {m_limits.bytes, {}});
    reply->setReadBufferSize(readBufferSize);
    // By what has come rather than by the reports of progress, of which there are ten in a second.
    connect(reply, &QNetworkReply::readyRead, this, [this, reply] { take(reply); });
    QTimer::singleShot(m_limits.time, reply, &QNetworkReply::abort);
}

void KelvoThumbnailDownloader::take(QNetworkReply *reply)
{
    const auto transfer = m_transfers.find(reply);
    if (transfer == m_transfers.end() || !reply->isOpen())
        return;
    const qint64 left = transfer->limit - transfer->data.size();
    const qint64 available = reply->bytesAvailable();
    transfer->data += reply->read(qMin(available, left));
    // Ends the transfer, with what has been taken, before it returns.
    if (available > left)
        reply->abort();
}

void KelvoThumbnailDownloader::requestFinished(QNetworkReply *reply)
{
    qDebug() << "KelvoThumbnailDownloader::requestFinished";
    // When two downloads ran beside each other, the one that finished first goes with the other.
    if (m_reply)
        m_replaced.append(m_reply);
    m_reply = reply;
    Transfer transfer = m_transfers.take(reply);
    // An aborted reply is closed.
    if (reply->isOpen())
        transfer.data += reply->read(qMin(reply->bytesAvailable(), transfer.limit - transfer.data.size()));
    Q_EMIT downloadFinished(transfer.data);
}
