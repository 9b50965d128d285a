// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

/// The entries of playlist files as they stand there. A name in a list is bytes: lists written by older programs
/// hold Latin-1, and so may the names of the files beside them.
namespace PlaylistEntries {

enum class Syntax {
    Lines, ///< M3U: each line is an entry, but for those that begin with '#'
    Keys, ///< PLS: FileN=entry
};

bool isUtf8(const QByteArray &text);

/// The bytes of a local file's path.
QByteArray pathOf(const QUrl &file);

/// An entry is a URI, or the path of a file as seen from the list that was found at `list`. Bytes that are no UTF-8
/// name the file of exactly that name; where there is none, they are read as Latin-1. A path that is escaped as in a URI
/// names the file of exactly that name too; where there is none, that of the name without the escapes, if there is one.
QUrl resolved(const QByteArray &entry, const QUrl &list);

/// A list may name what its own place is one of: one that came from the network names nothing of this computer, neither
/// files nor what else has an address here, as a camera or a socket. Who wrote it knows nothing of them that is good.
bool mayName(const QUrl &list, const QUrl &entry);

/// The same list with all its entries made absolute: plain ASCII, wherever the list is read from. Of a list of keys,
/// entries and their titles are kept, in the order of their numbers.
QByteArray withAbsoluteEntries(const QByteArray &text, Syntax syntax, const QUrl &list);

} // namespace PlaylistEntries
