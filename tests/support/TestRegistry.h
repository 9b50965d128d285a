// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoRegistry.h"

inline KelvoRegistry *registry()
{
    return KelvoRegistry::instance();
}

/// Null when there is none of that id.
inline KelvoPlaylist *find(const QString &id)
{
    return registry()->findPlaylistByUuid(id);
}
