// SPDX-License-Identifier: MIT
#include "KelvoThumbnailDownloader.h"

#include <QDebug>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>

using namespace std::chrono_literals;

namespace {
// Far more than a thumbnail has. A server that never ends its answer must not fill the memory.
constexpr qint64 maximumSize = 16 * 1024 * 1024;
constexpr auto maximumTime = 60s;
} // namespace

KelvoThumbnailDownloader::KelvoThumbnailDownloader(QObject *parent)
    : QObject(parent)
    , m_manager(new QNetworkAccessManager(this))
    , m_maximumSize(maximumSize)
    , m_maximumTime(maximumTime)
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
        std::exchange(m_reply, nullptr)->deleteLater();
    limit(m_manager->get(QNetworkRequest(QUrl(file))));
}

void KelvoThumbnailDownloader::setLimits(qint64 bytes, std::chrono::milliseconds time)
{
    m_maximumSize = bytes;
    m_maximumTime = time;
}

void KelvoThumbnailDownloader::limit(QNetworkReply *reply) const
{
    connect(reply, &QNetworkReply::downloadProgress, reply, [reply, size = m_maximumSize](qint64 received) {
        if (received > size)
            reply->abort();
    });
    QTimer::singleShot(m_maximumTime, reply, &QNetworkReply::abort);
}

void KelvoThumbnailDownloader::requestFinished(QNetworkReply *reply)
{
    qDebug() << "KelvoThumbnailDownloader::requestFinished";
    // When two downloads ran beside each other, the one that finished first goes with the other.
    if (m_reply)
        m_reply->setParent(reply);
    m_reply = reply;
    Q_EMIT downloadFinished(reply->isOpen() ? reply->readAll() : QByteArray());
}
