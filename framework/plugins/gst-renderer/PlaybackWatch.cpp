// SPDX-License-Identifier: MIT
#include "PlaybackWatch.h"

namespace {
// A thread may just have ended and the next not yet have begun.
constexpr int lifelessLooks = 3;
} // namespace

void PlaybackWatch::begin(qint64 now, int stallLimit)
{
    m_stallLimit = stallLimit;
    m_lifelessLooks = 0;
    restart(now);
}

PlaybackWatch::Verdict PlaybackWatch::look(const Sight &sight, qint64 now)
{
    if (!sight.isExpectedToMove) {
        restart(now);
        return Verdict::Fine;
    }
    m_lifelessLooks = sight.isLifeless ? m_lifelessLooks + 1 : 0;
    if (m_lifelessLooks >= lifelessLooks)
        return Verdict::Dead;
    return m_stall.isStalled(now, sight.position, sight.bufferPercent, m_stallLimit) ? Verdict::Stalled
                                                                                     : Verdict::Fine;
}
