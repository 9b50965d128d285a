// SPDX-License-Identifier: MIT
#include "KelvoPlaylistBase.h"

KelvoPlaylistBase::KelvoPlaylistBase(QObject *parent)
    : KelvoPlaylist(parent)
{
}

KelvoPlaylistBase::~KelvoPlaylistBase() = default;
