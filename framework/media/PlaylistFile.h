// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoError.h"

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QUrl>

/// What is known about playlist files without any library: their names, how to recognise one, and their limits. All
/// functions may be called from any thread.
namespace PlaylistFile {

enum class Format { None = 0, Pls = 1, M3u = 2, Xspf = 4 };
Q_DECLARE_FLAGS(Formats, Format)
Q_DECLARE_OPERATORS_FOR_FLAGS(Formats)

/// The beginning of a file that is looked at to recognise it.
constexpr qint64 headSize = 4096; // bytes
/// Far more than any list for people; a list of 100,000 entries has about 10 MB.
constexpr qint64 maximumSize = 32 * 1024 * 1024; // bytes
constexpr int maximumEntries = 500'000;

inline const QByteArray byteOrderMark = QByteArrayLiteral("\xEF\xBB\xBF");

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
    QByteArray title = {}; ///< of the list, also of one without entries; empty where it has none
    /// Of the entries, at the same places; empty where an entry has none. Texts in the encoding of the file.
    QList<QByteArray> titles = {};

    static Contents unusable(KelvoError::Code code, const QString &message)
    {
        return {Unusable, {}, code, message};
    }
    /// A list of more than maximumSize.
    static Contents tooLarge(const QUrl &uri);
};

/// The formats that the content type and the name announce; they need not agree. A hint: the content decides.
Formats announced(const QUrl &uri, const QString &contentType);

/// The content type of lists whose names end with this suffix (small letters, without the dot); empty when it is none
/// of lists.
QByteArray contentTypeOfSuffix(const QByteArray &suffix);
/// All content types of lists.
QStringList contentTypes();

/// The format of a file that begins like this. Lists without any mark (plain lines, or nothing at all) are only
/// recognised when they are announced as one.
Format recognised(const QByteArray &head, Formats announced);

} // namespace PlaylistFile

Q_DECLARE_METATYPE(PlaylistFile::Contents)
