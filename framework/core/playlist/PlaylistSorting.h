// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistItems.h"

#include <vector>

/// The same slots ordered by title: by the rules of the locale, without case. Equal titles keep their order.
std::vector<PlaylistOrder::Slot> sortedByTitle(
    const std::vector<PlaylistOrder::Slot> &slots, const PlaylistItems &items, bool descending);
/// The same slots ordered by duration; unknown durations last in both directions. Equal ones keep their
/// order.
std::vector<PlaylistOrder::Slot> sortedByDuration(
    const std::vector<PlaylistOrder::Slot> &slots, const PlaylistItems &items, bool descending);
/// The same slots in a random order, another one than before if there are at least two.
std::vector<PlaylistOrder::Slot> inRandomOrder(const std::vector<PlaylistOrder::Slot> &slots);
