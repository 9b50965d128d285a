// SPDX-License-Identifier: MIT
#include "MprisEnd.h"

#include "ItemProgress.h"

#include <algorithm>

namespace {
// Milliseconds.
/// So much later comes what a player has to say of a position that is lost: that it was a seek, or the end.
constexpr qint64 lossTime = 300;
// Seconds.
constexpr double nearEnd = 1.5;
constexpr double readAhead = 3;
constexpr double nearStart = 0.5;
/// Past its end for so long and still without a position, it has ended.
constexpr double overdue = 2;

bool isAtEnd(const ItemProgress &progress)
{
    return progress.duration() > 0 && MprisEnd::stop(progress).isEnd();
}
} // namespace

RemoteTransport::Stop MprisEnd::stop(const ItemProgress &progress)
{
    return {progress.passed(), progress.duration(), nearEnd};
}

bool MprisEnd::isHandOver(const ItemProgress &progress)
{
    return progress.duration() > 0 && progress.passed() >= progress.duration() - readAhead;
}

bool MprisEnd::isLoss(double seconds, const ItemProgress &progress) const
{
    const bool isBack = seconds < std::min(progress.told(), nearStart);
    return progress.isRunning() && progress.duration() > 0 && !progress.isSeeking() && isBack
        && progress.passed() >= progress.duration() / 2;
}

bool MprisEnd::isBackAfterEnd(double seconds, const ItemProgress &progress) const
{
    return m_sinceLoss.isValid() && isAtEnd(progress) && seconds < nearStart;
}

void MprisEnd::noteLoss(double seconds, bool isSeek)
{
    if (!m_sinceLoss.isValid()) {
        m_sinceLoss.start();
        m_lostAt = seconds;
        m_isLostBySeek = false;
    }
    m_isLostBySeek = m_isLostBySeek || isSeek;
}

MprisEnd::Loss MprisEnd::judgeLoss(double seconds, const ItemProgress &progress) const
{
    const bool playsOn = seconds > m_lostAt && m_sinceLoss.elapsed() >= lossTime;
    if ((playsOn && isAtEnd(progress) && !m_isLostBySeek)
        || progress.passed() > progress.duration() + overdue)
        return Loss::End;
    return playsOn ? Loss::Back : Loss::Lasts;
}
