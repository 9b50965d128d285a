// SPDX-License-Identifier: MIT
#pragma once

#include "Medium.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QUrl>

class MediaServer;
struct ServedMedium;

/// The media of one scenario: made where they have to be, and served.
class MediaShelf
{
public:
    /// @param server  not owned; outlives this
    explicit MediaShelf(MediaServer *server);
    ~MediaShelf();
    MediaShelf(const MediaShelf &) = delete;
    MediaShelf &operator=(const MediaShelf &) = delete;

    /// Makes and serves them. What another program must make takes its time once; it is kept in a cache. False,
    /// with the reason, where one cannot be had.
    bool put(const QList<Medium> &media, QString *error);
    void setFault(const QString &name, const MediaFault &fault);

    /// Of a medium by its name; other texts are addresses themselves.
    QUrl url(const QString &name) const;
    /// The medium behind an address, or the address.
    QString nameOf(const QUrl &url) const;
    /// The medium behind a path of the server, or the path.
    QString nameOfPath(const QString &path) const;

private:
    bool putFile(const Medium &medium, const QString &path, QString *error);
    void serve(const Medium &medium, const QString &suffix, const ServedMedium &served);

    MediaServer *const m_server;
    QHash<QString, QUrl> m_urls;
    QHash<QString, QString> m_paths; ///< at the server, by the media's names
};
