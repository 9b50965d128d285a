// SPDX-License-Identifier: MIT
#include "MprisSelfPause.h"

#include "MprisSnapshot.h"

namespace {
// Milliseconds.
constexpr qint64 beginning = 1000;
constexpr qint64 playTime = 300;
// Seconds.
constexpr double farthestFromStart = 0.5;
} // namespace

void MprisSelfPause::watch()
{
    end();
    m_sinceBegun.start();
}

MprisSelfPause::Step MprisSelfPause::take(const MprisSnapshot &now)
{
    if (!m_sinceBegun.isValid() || now.playbackStatus != KelvoRenderer::Paused)
        return Step::None;
    if (m_sincePlay.isValid())
        return m_sincePlay.hasExpired(playTime) ? Step::None : Step::Wait;
    const bool isNearStart = m_isSent || now.position.value_or(0) < farthestFromStart;
    if (m_sinceBegun.hasExpired(beginning) || !isNearStart)
        return Step::None;
    m_sincePlay.start();
    return Step::PlayAgain;
}
