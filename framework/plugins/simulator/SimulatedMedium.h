// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoError.h"
#include "KelvoMediaInfo.h"

/// Something to pretend playing: what a URL and a playlist item tell, see SimulatorProperties.h.
struct SimulatedMedium
{
    KelvoMediaInfo info; ///< title never empty; duration -1 when not known
    KelvoError::Code failure = KelvoError::NoError;
    bool seekable = true;

    /// How many media are behind an address: one, or the entries of a playlist file.
    static int countOf(const QUrl &url);
    /// The medium behind an item, or one of them.
    /// @param entry  its place among them
    /// @param defaultDuration  seconds for an item that tells none; 0: it has no known duration
    static SimulatedMedium of(const KelvoMediaInfo &item, int entry, int defaultDuration);
};
