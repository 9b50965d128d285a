// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoError.h"

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QUrl>

/// What is known about playlist files without any library: how to recognise one, and its limits.
namespace PlaylistFile {

enum class Format { None, Pls, M3u, Xspf };

/// The beginning of a file that is looked at to recognise it.
constexpr qint64 headSize = 4096; // bytes
/// Far more than any list for people; a list of 100,000 entries has about 10 MB.
constexpr qint64 maximumSize = 32 * 1024 * 1024; // bytes
constexpr int maximumEntries = 500'000;

/// What reading one has brought.
struct Contents
{
    enum Kind {
        List, ///< at least one entry
        NoList, ///< something else: to be played as media
        Unusable, ///< a list that cannot be played; code and message say why
    };
    Kind kind = NoList;
    QList<QUrl> entries; ///< absolute
    KelvoError::Code code = KelvoError::NoError;
    QString message;

    static Contents unusable(KelvoError::Code code, const QString &message)
    {
        return {Unusable, {}, code, message};
    }
};

/// Whether the content type or else the name says that this is a playlist. A hint: the content decides.
Format announced(const QUrl &uri, const QString &contentType);

/// The format of a file that begins like this. Lists without any mark (plain lines, or nothing at all) are
/// only recognised when they are announced as one.
Format recognised(const QByteArray &head, Format announced);

} // namespace PlaylistFile

Q_DECLARE_METATYPE(PlaylistFile::Contents)
