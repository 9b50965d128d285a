// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// Notices that playback stands still: some servers keep a connection open and send nothing, which GStreamer
/// reports neither as an error nor as an end.
class StallWatch
{
public:
    /// Something is expected to move from now on. Times in milliseconds of any one clock.
    void restart(qint64 now);
    /// True when neither the position (nanoseconds) nor the buffer's filling has changed for `limit`.
    bool isStalled(qint64 now, qint64 position, int bufferPercent, int limit);

private:
    qint64 m_lastMove = 0;
    qint64 m_position = -1;
    int m_bufferPercent = -1;
};
