// SPDX-License-Identifier: MIT
#include "PlaylistFile.h"

#include <algorithm>

namespace {
using PlaylistFile::Format;

struct Type
{
    const char *name;
    Format format;
};
constexpr Type types[] = {
    {"audio/x-scpls", Format::Pls},
    {"audio/scpls", Format::Pls},
    {"application/pls+xml", Format::Pls},
    {"audio/x-mpegurl", Format::M3u},
    {"audio/mpegurl", Format::M3u},
    {"application/x-mpegurl", Format::M3u},
    {"application/xspf+xml", Format::Xspf},
};

struct Suffix
{
    const char *text;
    Format format;
    const char *type; ///< that such files are said to be of
};
constexpr Suffix suffixes[] = {
    {".pls", Format::Pls, "audio/x-scpls"},
    {".m3u", Format::M3u, "audio/x-mpegurl"},
    {".m3u8", Format::M3u, "audio/x-mpegurl"},
    {".xspf", Format::Xspf, "application/xspf+xml"},
};

/// A blank file has no format of its own.
Format firstOf(PlaylistFile::Formats formats)
{
    for (const Format format : {Format::Pls, Format::M3u, Format::Xspf}) {
        if (formats.testFlag(format))
            return format;
    }
    return Format::None;
}

/// Text of some kind: no control characters but blanks and line ends.
bool isText(const QByteArray &head)
{
    return std::none_of(
        head.cbegin(), head.cend(), [](char c) { return uchar(c) < 0x20 && !isspace(uchar(c)); });
}

/// What follows the remarks at the beginning of a file of keys.
QByteArray withoutRemarks(QByteArray text)
{
    while (text.startsWith(';')) {
        const qsizetype end = text.indexOf('\n');
        text = end < 0 ? QByteArray() : text.mid(end + 1).trimmed();
    }
    return text;
}

/// Nothing but blanks and zeros, as a list that is yet to be written.
bool isBlank(const QByteArray &head)
{
    return std::all_of(head.cbegin(), head.cend(), [](char c) { return c == 0 || isspace(uchar(c)); });
}
} // namespace

PlaylistFile::Formats PlaylistFile::announced(const QUrl &uri, const QString &contentType)
{
    Formats formats = Format::None;
    const QString type = contentType.section(QLatin1Char(';'), 0, 0).trimmed().toLower();
    for (const Type &known : types) {
        if (type == QLatin1String(known.name))
            formats |= known.format;
    }
    for (const Suffix &known : suffixes) {
        if (uri.path().endsWith(QLatin1String(known.text), Qt::CaseInsensitive))
            formats |= known.format;
    }
    return formats;
}

QByteArray PlaylistFile::contentTypeOfSuffix(const QByteArray &suffix)
{
    for (const Suffix &known : suffixes) {
        if (suffix == known.text + 1)
            return known.type;
    }
    return {};
}

QStringList PlaylistFile::contentTypes()
{
    QStringList names;
    for (const Type &known : types)
        names.append(QLatin1String(known.name));
    return names;
}

PlaylistFile::Contents PlaylistFile::Contents::tooLarge(const QUrl &uri)
{
    return unusable(KelvoError::PlaylistTooLarge,
        QStringLiteral("%1 has more than %2 MB").arg(uri.toDisplayString()).arg(maximumSize >> 20));
}

PlaylistFile::Format PlaylistFile::recognised(const QByteArray &head, Formats announced)
{
    if (isBlank(head))
        return firstOf(announced);
    QByteArray text
        = head.startsWith(PlaylistFile::byteOrderMark) ? head.mid(PlaylistFile::byteOrderMark.size()) : head;
    text = text.trimmed().toLower();
    if (withoutRemarks(text).startsWith("[playlist]"))
        return Format::Pls;
    // Segments of one stream: that is a medium, and the pipeline plays it.
    if (text.contains("#ext-x-"))
        return Format::None;
    if (text.startsWith("#extm3u"))
        return Format::M3u;
    if (text.startsWith('<')) {
        // Not every program that writes such lists names the namespace.
        const bool isXspf = text.contains("xspf.org/ns") || announced.testFlag(Format::Xspf);
        return isXspf && text.contains("<playlist") ? Format::Xspf : Format::None;
    }
    return announced.testFlag(Format::M3u) && isText(head) ? Format::M3u : Format::None;
}
