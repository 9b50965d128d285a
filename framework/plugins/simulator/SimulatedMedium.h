// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoError.h"
#include "KelvoMediaInfo.h"

#include <QList>

/// Something to pretend playing: what a URL and a playlist item tell, see SimulatorProperties.h.
struct SimulatedMedium
{
    KelvoMediaInfo info; ///< title never empty; duration -1 when not known
    KelvoError::Code failure = KelvoError::NoError;
    bool seekable = true;

    /// The media behind an item: one, or the entries of a playlist file. Never empty.
    /// @param defaultDuration  seconds for an item that tells none; 0: it has no known duration
    static QList<SimulatedMedium> entriesOf(const KelvoMediaInfo &item, int defaultDuration);
};
