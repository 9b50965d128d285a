// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Whether somebody else could put code of his own in the place of a library, or has: why it must not be loaded, in words
/// for people, or an empty text. Any thread; asks the disk, and the system's lists of users where a group may write.
///
/// - The file, and the folder that it is in, belong to the user or to root.
/// - Neither may be written by everybody; the folder may when its entries are kept from others (the sticky bit of /tmp).
/// - Nor by a group, unless that is the owner's own: many systems give each user a group of the same name, and write for
///   both (umask 002).
///
/// Links are followed: the place of the link counts, and that of the file. Folders above are not looked at: /usr/local is
/// open to a group on many systems, and build machines keep their checkouts below folders that are open to everybody.
QString placeDefect(const QString &library);
