// SPDX-License-Identifier: MIT
#include "FileUri.h"

#include "GlibHandles.h"

#include <glib.h>

QByteArray FileUri::fromPath(const QByteArray &path)
{
    const GlibHandles::Text uri(g_filename_to_uri(path.constData(), nullptr, nullptr));
    return uri.get();
}

QByteArray FileUri::toPath(const QByteArray &uri)
{
    const GlibHandles::Text path(g_filename_from_uri(uri.constData(), nullptr, nullptr));
    return path.get();
}

QByteArray FileUri::canonical(const QByteArray &uri)
{
    const QByteArray path = toPath(uri);
    if (path.isEmpty())
        return uri;
    const GlibHandles::Text absolute(g_canonicalize_filename(path.constData(), "/"));
    return fromPath(absolute.get());
}
