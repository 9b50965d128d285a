// SPDX-License-Identifier: MIT
#pragma once

#include "MediaItem.h"
#include "store/StoreConnection.h"

#include <QHash>

#include <vector>

/// Keeps how often and when songs were played beyond the time that their files are there: a folder on a medium that is
/// taken out and put in again is gone for a while. What is kept goes back to the song that comes with the same URI.
/// Worker thread.
namespace PlayMemory {
/// For songs that are to be removed from the store: the statement that keeps a song's playings, by the song's number.
/// It has to be run together with the removal.
QHash<quint64, QByteArray> of(
    const StoreConnection &connection, const std::vector<KnownFile> &files, StoreError *error);
/// The statements, to be run together, that give songs that are there what was kept for their URIs, and keep it no
/// more.
std::vector<QByteArray> givingBack(const StoreConnection &connection, StoreError *error);
} // namespace PlayMemory
