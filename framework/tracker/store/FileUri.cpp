// SPDX-License-Identifier: MIT
#include "FileUri.h"

#include "GObjectPtr.h"

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
