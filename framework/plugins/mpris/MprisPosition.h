// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoRenderer.h"
#include "RemotePosition.h"
#include "RemoteTransport.h"

#include <QElapsedTimer>

/// Where the item in play is, by what the player says and the time that has passed. Seconds.
///
/// Some players lose the position when they have read all of the item, some when it ends, before they tell of the end; and
/// some call that a seek. Until the player tells of the end or plays on, time goes on.
class MprisPosition
{
public:
    /// Another item is on its way.
    void reset();
    /// It has begun there.
    void begin(double seconds);
    void setState(KelvoRenderer::State state);
    void setRate(double rate) { m_clock.setRate(rate); }
    void setDuration(double seconds) { m_duration = seconds; }
    void moveToEnd() { m_clock.moveTo(m_duration); }

    double now() const { return m_clock.now(); }

    /// A seek of ours is under way.
    void seekTo(double seconds);
    /// The player says that it was sent there.
    void takeSeek(double seconds);
    /// The player is there.
    void take(double seconds);

    /// A stop here and now.
    RemoteTransport::Stop stop() const;
    /// Whether another track follows the item. Some players tell of it as soon as they have read all of the item.
    bool isHandOver() const;
    /// Whether that second may say nothing of where the item is: back at the start without a seek of ours.
    bool isLoss(double seconds) const;
    /// Whether who is paused at that second came to rest at the start after the end.
    bool isBackAfterEnd(double seconds) const;
    /// @param isSeek  the player calls it a seek
    void noteLoss(double seconds, bool isSeek);
    void endLoss() { m_sinceLoss.invalidate(); }
    enum class Loss { Lasts, End, Back };
    /// What a lost position turns out to be: playing on from the start, the player repeats the item, or somebody has sent it
    /// there.
    Loss judgeLoss(double seconds) const;

private:
    bool isSeeking() const;
    bool isNews(double seconds) const;
    bool isAtEnd() const { return m_duration > 0 && stop().isEnd(); }

    RemotePosition m_clock;
    bool m_isPlaying = false;
    double m_told = 0; ///< by the player, last
    double m_duration = -1;
    QElapsedTimer m_sinceSeek; ///< of ours, as long as the player has not arrived
    QElapsedTimer m_sinceLoss;
    double m_lostAt = 0; ///< what it fell back to
    bool m_isLostBySeek = false;
};
