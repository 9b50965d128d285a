// SPDX-License-Identifier: MIT
#pragma once

#include "StallWatch.h"

/// Finds out that nothing will come any more of what plays, which GStreamer tells neither as an error nor as an end.
class PlaybackWatch
{
public:
    /// What is to be seen of playback.
    struct Sight
    {
        bool isExpectedToMove = false;
        /// Neither prerolled nor streaming, although nothing has to come over a network: GStreamer drops the error of a
        /// demuxer that fails while it is still being connected, and this is what is left.
        bool isLifeless = false;
        qint64 position = 0; ///< nanoseconds
        int bufferPercent = 100;
    };
    enum class Verdict { Fine, Dead, Stalled };

    /// @param stallLimit  milliseconds that it may stand still
    void begin(qint64 now, int stallLimit);
    /// Something has happened that gives it time again. Times in milliseconds of any one clock.
    void restart(qint64 now) { m_stall.restart(now); }
    /// Called at short intervals.
    Verdict look(const Sight &sight, qint64 now);

    int stallLimit() const { return m_stallLimit; }

private:
    StallWatch m_stall;
    int m_stallLimit = 0;
    int m_lifelessLooks = 0; ///< in a row
};
