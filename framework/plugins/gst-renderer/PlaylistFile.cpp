// SPDX-License-Identifier: MIT
#include "PlaylistFile.h"

#include <algorithm>

namespace {
struct Mark
{
    const char *text;
    PlaylistFile::Format format;
};

using PlaylistFile::Format;

constexpr Mark contentTypes[] = {
    {"audio/x-scpls", Format::Pls},
    {"audio/scpls", Format::Pls},
    {"application/pls+xml", Format::Pls},
    {"audio/x-mpegurl", Format::M3u},
    {"audio/mpegurl", Format::M3u},
    {"application/x-mpegurl", Format::M3u},
    {"application/xspf+xml", Format::Xspf},
};

constexpr Mark suffixes[] = {
    {".pls", Format::Pls},
    {".m3u", Format::M3u},
    {".m3u8", Format::M3u},
    {".xspf", Format::Xspf},
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
    for (const Mark &mark : contentTypes) {
        if (type == QLatin1String(mark.text))
            formats |= mark.format;
    }
    for (const Mark &mark : suffixes) {
        if (uri.path().endsWith(QLatin1String(mark.text), Qt::CaseInsensitive))
            formats |= mark.format;
    }
    return formats;
}

PlaylistFile::Format PlaylistFile::recognised(const QByteArray &head, Formats announced)
{
    if (isBlank(head))
        return firstOf(announced);
    QByteArray text
        = head.startsWith(PlaylistFile::byteOrderMark) ? head.mid(PlaylistFile::byteOrderMark.size()) : head;
    text = text.trimmed().toLower();
    if (text.startsWith("[playlist]"))
        return Format::Pls;
    // Segments of one stream: that is a medium, and the pipeline plays it.
    if (text.contains("#ext-x-"))
        return Format::None;
    if (text.startsWith("#extm3u"))
        return Format::M3u;
    if (text.startsWith('<'))
        return text.contains("<playlist") && text.contains("xspf.org/ns") ? Format::Xspf : Format::None;
    return announced.testFlag(Format::M3u) && isText(head) ? Format::M3u : Format::None;
}
