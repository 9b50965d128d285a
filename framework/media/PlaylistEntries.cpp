// SPDX-License-Identifier: MIT
#include "PlaylistEntries.h"

#include <QDir>
#include <QMap>
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
    const QByteArray folder = PlaylistEntries::pathOf(list.adjusted(QUrl::RemoveFilename));
    return cleaned(entry.startsWith('/') ? entry : folder + entry);
}

bool exists(const QByteArray &path)
{
    return ::access(path.constData(), F_OK) == 0;
}

/// XSPF has URIs where parsers expect file names, and some programs write them into other lists too.
QUrl withoutEscapes(const QUrl &file)
{
    const QByteArray path = PlaylistEntries::pathOf(file);
    if (!path.contains('%') || exists(path))
        return file;
    const QByteArray meant = QByteArray::fromPercentEncoding(path);
    return exists(meant) ? urlOf(meant) : file;
}

QList<QByteArray> linesOf(const QByteArray &text)
{
    return text.split(text.contains('\n') ? '\n' : '\r');
}

QByteArray withAbsoluteLines(const QByteArray &text, const QUrl &list)
{
    QByteArray result;
    result.reserve(text.size() * 2);
    for (const QByteArray &raw : linesOf(text)) {
        const QByteArray line = raw.trimmed();
        const bool isEntry = !line.isEmpty() && !line.startsWith('#');
        result += isEntry ? PlaylistEntries::resolved(line, list).toEncoded() : line;
        result += '\n';
    }
    return result;
}

/// FileN and TitleN of a list, by their numbers.
struct Keys
{
    QMap<int, QByteArray> files;
    QMap<int, QByteArray> titles;
    QByteArray others; ///< lines

    void take(const QByteArray &line)
    {
        const qsizetype sign = line.indexOf('=');
        const QByteArray key = line.left(sign).trimmed().toLower();
        const QByteArray value = sign < 0 ? QByteArray() : line.mid(sign + 1).trimmed();
        if (key.startsWith("file"))
            takeNumbered(&files, key.mid(4), value);
        else if (key.startsWith("title"))
            takeNumbered(&titles, key.mid(5), value);
        else if (key.startsWith("x-"))
            others += key + '=' + untilZero(value) + '\n';
    }

private:
    /// Parsers take it for the end of the list.
    static QByteArray untilZero(const QByteArray &value)
    {
        return value.left(qsizetype(qstrnlen(value.constData(), size_t(value.size()))));
    }
    static void takeNumbered(QMap<int, QByteArray> *values, const QByteArray &number, const QByteArray &value)
    {
        bool ok = false;
        const int place = number.toInt(&ok);
        if (ok && !value.isEmpty() && !values->contains(place))
            values->insert(place, untilZero(value));
    }
};

/// In the one spelling that every parser knows: without gaps, blanks, second values, line ends of two kinds and what is no
/// address. Some look for ever for a key that is spelled in another way, or behind a carriage return of its own.
QByteArray withAbsoluteKeys(const QByteArray &text, const QUrl &list)
{
    Keys keys;
    for (const QByteArray &line : QByteArray(text).replace('\r', '\n').split('\n'))
        keys.take(line.trimmed());
    QByteArray result = "[playlist]\n" + keys.others;
    int number = 0;
    for (auto file = keys.files.cbegin(); file != keys.files.cend(); ++file) {
        const QByteArray address = PlaylistEntries::resolved(*file, list).toEncoded();
        if (address.isEmpty())
            continue;
        const QByteArray place = QByteArray::number(++number);
        result += "File" + place + '=' + address + '\n';
        if (keys.titles.contains(file.key()))
            result += "Title" + place + '=' + keys.titles.value(file.key()) + '\n';
    }
    return result + "NumberOfEntries=" + QByteArray::number(number) + "\nVersion=2\n";
}
} // namespace

bool PlaylistEntries::isUtf8(const QByteArray &text)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString ignored = utf8(text);
    return !utf8.hasError();
}

QByteArray PlaylistEntries::pathOf(const QUrl &file)
{
    return QByteArray::fromPercentEncoding(file.path(QUrl::FullyEncoded).toLatin1());
}

QUrl PlaylistEntries::resolved(const QByteArray &entry, const QUrl &list)
{
    const bool isFile = !hasScheme(entry) || entry.startsWith("file:///");
    if (list.isLocalFile() && isFile && !isUtf8(entry)) {
        const QByteArray exact = absolutePath(entry, list);
        if (exists(exact))
            return urlOf(exact);
    }
    if (hasScheme(entry)) {
        const QUrl uri(decoded(entry));
        return list.isLocalFile() && isFile ? withoutEscapes(uri) : uri;
    }
    if (!list.isLocalFile())
        return list.resolved(QUrl(decoded(entry)));
    return withoutEscapes(urlOf(absolutePath(decoded(entry).toUtf8(), list)));
}

bool PlaylistEntries::mayName(const QUrl &list, const QUrl &entry)
{
    // By the servers that these names stand for; whatever else an engine has a name for may be of this computer.
    static const QStringList network{"http", "https", "ftp", "ftps", "rtsp", "rtsps", "rtspt", "rtspu",
        "rtsph", "rtmp", "rtmps", "rtmpt", "rtmpe", "mms", "mmsh", "mmst", "mmsu"};
    return list.isLocalFile() || network.contains(entry.scheme());
}

QByteArray PlaylistEntries::withAbsoluteEntries(const QByteArray &text, Syntax syntax, const QUrl &list)
{
    return syntax == Syntax::Keys ? withAbsoluteKeys(text, list) : withAbsoluteLines(text, list);
}
