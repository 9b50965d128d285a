// SPDX-License-Identifier: MIT
#pragma once

#include "MediaItem.h"
#include "store/StoreConnection.h"

/// Keeps how often and when songs were played beyond the time that their files are there: a folder on a medium that is
/// taken out and put in again is gone for a while. What is kept goes back to the song that comes with the same URI.
/// Worker thread.
namespace PlayMemory {
/// Before these are removed from the store.
bool keep(StoreConnection &connection, const std::vector<KnownFile> &files, StoreError *error);
/// After songs were added.
bool giveBack(StoreConnection &connection, StoreError *error);
} // namespace PlayMemory
