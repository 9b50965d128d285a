// SPDX-License-Identifier: MIT
#include "KelvoPlaylist.h"

#include <QUuid>

KelvoPlaylist::KelvoPlaylist(QObject *parent)
    : QObject(parent)
{
}

KelvoPlaylist::~KelvoPlaylist() = default;

QString KelvoPlaylist::getNewPlaylistId()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

int KelvoPlaylist::indexOf(const QString &mediaUuid) const
{
    if (mediaUuid.isEmpty())
        return -1; // A null record, which a list may give for an item it cannot describe, is no match.
    const int items = count();
    for (int index = 0; index < items; ++index) {
        if (mediaInfoAt(uint(index)).uuid() == mediaUuid)
            return index;
    }
    return -1;
}
