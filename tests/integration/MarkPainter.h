// SPDX-License-Identifier: MIT
#pragma once

#include "MediaClock.h"
#include "XServer.h"

/// Draws the mark of a picture of test media into a window, with squares of so many pixels.
inline void paintMark(XServer *server, uint window, const MediaClock::Moment &moment, int square)
{
    const quint64 mark = quint64(0b0101) << MediaClock::markBits | MediaClock::markOf(moment);
    constexpr int squares = MediaClock::markGuards + MediaClock::markBits;
    for (int number = 0; number < squares; ++number)
        server->fill(window, {10 + number * square, 20, square, square},
            (mark >> (squares - 1 - number) & 1U) != 0 ? Qt::white : Qt::black);
}
