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
    const int items = count();
    for (int index = 0; index < items; ++index) {
        if (mediaInfoAt(uint(index)).uuid() == mediaUuid)
            return index;
    }
    return -1;
}
