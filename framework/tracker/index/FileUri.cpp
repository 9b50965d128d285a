// SPDX-License-Identifier: MIT
#include "FileUri.h"

#include "../store/GObjectPtr.h"
#include "TextRepair.h"

#include <QUrl>

#include <glib.h>

QByteArray FileUri::fromPath(const QByteArray &path)
{
    const GCharPtr uri(g_filename_to_uri(path.constData(), nullptr, nullptr));
    return uri.get();
}

QByteArray FileUri::toPath(const QByteArray &uri)
{
    const GCharPtr path(g_filename_from_uri(uri.constData(), nullptr, nullptr));
    return path.get();
}

QByteArray FileUri::canonical(const QByteArray &uri)
{
    const QByteArray path = toPath(uri);
    if (path.isEmpty())
        return uri;
    const GCharPtr absolute(g_canonicalize_filename(path.constData(), "/"));
    return fromPath(absolute.get());
}

QString FileUri::fileName(const QByteArray &uri)
{
    QByteArray path = toPath(uri);
    if (path.isEmpty())
        path = QByteArray::fromPercentEncoding(QUrl::fromEncoded(uri).path(QUrl::FullyEncoded).toLatin1());
    const QString name = TextRepair::decode(path.mid(path.lastIndexOf('/') + 1));
    return name.isEmpty() ? TextRepair::decode(uri) : name;
}
