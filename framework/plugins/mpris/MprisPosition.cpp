// SPDX-License-Identifier: MIT
#include "MprisPosition.h"

#include <algorithm>
#include <cmath>

namespace {
// Milliseconds. For so long a player may still tell where it was before a seek.
constexpr qint64 SeekingTime = 3000;
/// So much later comes what a player has to say of a position that is lost: that it was a seek, or the end.
constexpr qint64 LossTime = 300;
// Seconds.
constexpr double NearEnd = 1.5;
constexpr double ReadAhead = 3;
constexpr double NearStart = 0.5;
/// Past its end for so long and still without a position, it has ended.
constexpr double Overdue = 2;
/// Some tell of the position once a second only, and begin a little later than they say.
constexpr double Lag = 1.5;
constexpr double SeekTolerance = 1.5;
} // namespace

void MprisPosition::reset()
{
    m_sinceSeek.invalidate();
    m_sinceLoss.invalidate();
    m_duration = -1;
    m_clock.setRunning(false);
    m_clock.moveTo(0);
}

void MprisPosition::begin(double seconds)
{
    m_told = 0;
    m_clock.moveTo(seconds);
}

void MprisPosition::setState(KelvoRenderer::State state)
{
    m_isPlaying = state == KelvoRenderer::Playing;
    m_clock.setRunning(m_isPlaying);
}

void MprisPosition::seekTo(double seconds)
{
    m_clock.moveTo(seconds);
    m_told = seconds;
    m_sinceSeek.start();
    m_sinceLoss.invalidate();
}

void MprisPosition::takeSeek(double seconds)
{
    m_sinceSeek.invalidate();
    m_sinceLoss.invalidate();
    m_told = seconds;
    m_clock.moveTo(seconds);
}

void MprisPosition::take(double seconds)
{
    const bool hasArrived = std::abs(seconds - m_clock.now()) <= SeekTolerance;
    if (hasArrived || !isSeeking())
        m_sinceSeek.invalidate();
    const bool seeks = m_sinceSeek.isValid();
    if (!seeks && isNews(seconds))
        m_clock.moveTo(seconds);
    if (!seeks && seconds > 0)
        m_told = seconds;
}

/// For the judgement of ends, the time that has passed counts for more than what may be said late.
bool MprisPosition::isNews(double seconds) const
{
    const double lag = m_clock.now() - seconds;
    return !m_isPlaying || (seconds > 0 && (lag < 0 || lag > Lag));
}

bool MprisPosition::isSeeking() const
{
    return m_sinceSeek.isValid() && m_sinceSeek.elapsed() < SeekingTime;
}

RemoteTransport::Stop MprisPosition::stop() const
{
    return {m_clock.now(), m_duration, NearEnd};
}

bool MprisPosition::isHandOver() const
{
    return m_duration > 0 && m_clock.now() >= m_duration - ReadAhead;
}

bool MprisPosition::isLoss(double seconds) const
{
    const bool isBack = seconds < std::min(m_told, NearStart);
    return m_isPlaying && m_duration > 0 && !isSeeking() && isBack && m_clock.now() >= m_duration / 2;
}

bool MprisPosition::isBackAfterEnd(double seconds) const
{
    return m_sinceLoss.isValid() && isAtEnd() && seconds < NearStart;
}

void MprisPosition::noteLoss(double seconds, bool isSeek)
{
    if (!m_sinceLoss.isValid()) {
        m_sinceLoss.start();
        m_lostAt = seconds;
        m_isLostBySeek = false;
    }
    m_isLostBySeek = m_isLostBySeek || isSeek;
}

MprisPosition::Loss MprisPosition::judgeLoss(double seconds) const
{
    const bool playsOn = seconds > m_lostAt && m_sinceLoss.elapsed() >= LossTime;
    if ((playsOn && isAtEnd() && !m_isLostBySeek) || m_clock.now() > m_duration + Overdue)
        return Loss::End;
    return playsOn ? Loss::Back : Loss::Lasts;
}
