// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoGeneralSourcePlaylist.h"

#include <QList>
#include <QUrl>

#include <memory>

/// Playlists made of URLs.
namespace ItemList {
/// Adds an item at the end.
/// @param playlist  one made here
void append(KelvoGeneralSourcePlaylist &playlist, const QUrl &url);
std::unique_ptr<KelvoGeneralSourcePlaylist> make(const QString &name, const QList<QUrl> &urls);
} // namespace ItemList
