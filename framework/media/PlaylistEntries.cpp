// SPDX-License-Identifier: MIT
#include "PlaylistEntries.h"

#include <QDir>
#include <QStringDecoder>

#include <unistd.h>

namespace {
QString decoded(const QByteArray &text)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString result = utf8(text);
    return utf8.hasError() ? QString::fromLatin1(text) : result;
}

bool hasScheme(const QByteArray &entry)
{
    const qsizetype colon = entry.indexOf(":/");
    return colon > 1 && !entry.left(colon).contains('/');
}

QByteArray pathOf(const QUrl &file)
{
    return QByteArray::fromPercentEncoding(file.path(QUrl::FullyEncoded).toLatin1());
}

QUrl urlOf(const QByteArray &path)
{
    return PlaylistEntries::isUtf8(path) ? QUrl::fromLocalFile(QString::fromUtf8(path))
                                         : QUrl::fromEncoded("file://" + path.toPercentEncoding("/"));
}

/// Byte for byte: what only matters here are the signs of ASCII.
QByteArray cleaned(const QByteArray &path)
{
    return QDir::cleanPath(QString::fromLatin1(path)).toLatin1();
}

/// The path of an entry of a local list.
QByteArray absolutePath(const QByteArray &entry, const QUrl &list)
{
    if (entry.startsWith("file:///"))
        return cleaned(QByteArray::fromPercentEncoding(entry.mid(int(qstrlen("file://")))));
    const QByteArray folder = pathOf(list.adjusted(QUrl::RemoveFilename));
    return cleaned(entry.startsWith('/') ? entry : folder + entry);
}

QByteArray withAbsoluteEntry(const QByteArray &line, PlaylistEntries::Syntax syntax, const QUrl &list)
{
    qsizetype start = 0;
    if (syntax == PlaylistEntries::Syntax::Keys) {
        start = line.indexOf('=') + 1;
        if (start <= 0 || !line.trimmed().toLower().startsWith("file"))
            return line;
    } else if (line.startsWith('#')) {
        return line;
    }
    const QByteArray entry = line.mid(start).trimmed();
    return entry.isEmpty() ? line : line.left(start) + PlaylistEntries::resolved(entry, list).toEncoded();
}
} // namespace

bool PlaylistEntries::isUtf8(const QByteArray &text)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString ignored = utf8(text);
    return !utf8.hasError();
}

QUrl PlaylistEntries::resolved(const QByteArray &entry, const QUrl &list)
{
    const bool isFile = !hasScheme(entry) || entry.startsWith("file:///");
    if (list.isLocalFile() && isFile && !isUtf8(entry)) {
        const QByteArray exact = absolutePath(entry, list);
        if (::access(exact.constData(), F_OK) == 0)
            return urlOf(exact);
    }
    if (hasScheme(entry))
        return QUrl(decoded(entry));
    if (!list.isLocalFile())
        return list.resolved(QUrl(decoded(entry)));
    return urlOf(absolutePath(decoded(entry).toUtf8(), list));
}

QByteArray PlaylistEntries::withAbsoluteEntries(const QByteArray &text, Syntax syntax, const QUrl &list)
{
    QByteArray result;
    result.reserve(text.size() * 2);
    for (const QByteArray &line : text.split(text.contains('\n') ? '\n' : '\r')) {
        result += withAbsoluteEntry(line.trimmed(), syntax, list);
        result += '\n';
    }
    return result;
}
