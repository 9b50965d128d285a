// SPDX-License-Identifier: MIT
#include "MediaShelf.h"

#include "KelvoError.h"
#include "MediaMaker.h"
#include "MediaServer.h"
#include "ToneWave.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QUrlQuery>

#include <cmath>
#include <memory>

namespace {
/// The renderer's error for what a server answers; 0: none.
int errorOfStatus(int status)
{
    if (status == 200)
        return 0;
    if (status == 401 || status == 403)
        return KelvoError::AccessDenied;
    return status < 500 ? KelvoError::NotFound : KelvoError::ServerError;
}

bool isMadeOnTheSpot(const Medium &medium)
{
    return medium.kind == Medium::Sound && medium.clock == 0 && medium.format == QLatin1String("wav");
}

/// For simulated renderers, which fetch nothing: what they would find. Others do not look at it, nor does the server.
QUrlQuery tellingOf(const Medium &medium)
{
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("duration"), QString::number(std::lround(medium.seconds)));
    query.addQueryItem(QStringLiteral("title"), QString::fromLatin1(QUrl::toPercentEncoding(medium.title)));
    if (const int error = errorOfStatus(medium.fault.status))
        query.addQueryItem(QStringLiteral("fail"), QString::number(error));
    return query;
}
} // namespace

MediaShelf::MediaShelf(MediaServer *server)
    : m_server(server)
{
}

MediaShelf::~MediaShelf()
{
    m_server->clear();
}

bool MediaShelf::put(const QList<Medium> &media, QString *error)
{
    for (const Medium &medium : media) {
        if (medium.kind == Medium::Address) {
            m_urls.insert(medium.name, medium.address);
        } else if (isMadeOnTheSpot(medium)) {
            const auto wave = std::make_shared<ToneWave>(medium.frequency, medium.seconds, medium.title);
            serve(medium, medium.format,
                {wave->size(), [wave](qint64 from, qint64 most) { return wave->read(from, most); },
                    "audio/x-wav", wave->headSize(), double(ToneWave::BytesPerSecond), medium.fault});
        } else {
            const QString path = medium.kind == Medium::File ? medium.path : MediaMaker::make(medium, error);
            if (path.isEmpty() || !putFile(medium, path, error))
                return false;
        }
    }
    return true;
}

bool MediaShelf::putFile(const Medium &medium, const QString &path, QString *error)
{
    const auto file = std::make_shared<QFile>(path);
    if (!file->open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1 cannot be read: %2").arg(path, file->errorString());
        return false;
    }
    const auto read = [file](qint64 from, qint64 most) {
        return file->seek(from) ? file->read(most) : QByteArray();
    };
    serve(medium, QFileInfo(path).suffix(),
        {file->size(), read, QMimeDatabase().mimeTypeForFile(path).name().toLatin1(), 0,
            double(file->size()) / medium.seconds, medium.fault});
    return true;
}

void MediaShelf::serve(const Medium &medium, const QString &suffix, const ServedMedium &served)
{
    const QString path = medium.name + u'.' + suffix;
    m_server->serve(path, served);
    QUrl url = m_server->url(path);
    if (medium.kind != Medium::File)
        url.setQuery(tellingOf(medium));
    m_urls.insert(medium.name, url);
    m_paths.insert(medium.name, path);
}

void MediaShelf::setFault(const QString &name, const MediaFault &fault)
{
    m_server->setFault(m_paths.value(name), fault);
}

QUrl MediaShelf::url(const QString &name) const
{
    return m_urls.value(name, QUrl(name));
}

QString MediaShelf::nameOf(const QUrl &url) const
{
    return m_urls.key(url, url.toString());
}

QString MediaShelf::nameOfPath(const QString &path) const
{
    return m_paths.key(path, path);
}
