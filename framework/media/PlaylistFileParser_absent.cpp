// SPDX-License-Identifier: MIT
// Stands in for PlaylistFileParser.cpp in a build without the library that reads playlist files.
#include "PlaylistFileParser.h"

PlaylistFile::Contents PlaylistFileParser::parse(const QByteArray &, PlaylistFile::Format, const QUrl &uri)
{
    return PlaylistFile::Contents::unusable(KelvoError::UnsupportedType,
        QStringLiteral("%1 is a playlist file, which this build does not understand")
            .arg(uri.toDisplayString()));
}
