// SPDX-License-Identifier: MIT
// In a build without the library that reads playlist files.
#include "PlaylistParser.h"

PlaylistFile::Contents PlaylistParser::parse(const QByteArray &, PlaylistFile::Format, const QUrl &uri)
{
    return PlaylistFile::Contents::unusable(KelvoError::UnsupportedType,
        QStringLiteral("%1 is a playlist file, which this build does not understand")
            .arg(uri.toDisplayString()));
}
