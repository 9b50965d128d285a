// SPDX-License-Identifier: MIT
#pragma once

#include "RemoteTransport.h"

#include <QElapsedTimer>

class ItemProgress;

/// Whether the item in play is at its end, by what the player says of the position and by the item's progress. Seconds.
///
/// Some players lose the position when they have read all of the item, some when it ends, before they tell of the end;
/// and some call that a seek. Until the player tells of the end or plays on, time goes on. Where the item is, the progress
/// knows; here is only what a loss is judged by.
class MprisEnd
{
public:
    /// A stop here and now.
    static RemoteTransport::Stop stop(const ItemProgress &progress);
    /// Whether another track follows the item. Some players tell of it as soon as they have read all of the item.
    static bool isHandOver(const ItemProgress &progress);
    /// Whether that second may say nothing of where the item is: back at the start without a seek of ours.
    bool isLoss(double seconds, const ItemProgress &progress) const;
    /// Whether who is paused at that second came to rest at the start after the end.
    bool isBackAfterEnd(double seconds, const ItemProgress &progress) const;
    /// @param isSeek  the player calls it a seek
    void noteLoss(double seconds, bool isSeek);
    /// The position is known again: the player goes on from where it is, or was sent.
    void endLoss() { m_sinceLoss.invalidate(); }
    enum class Loss { Lasts, End, Back };
    /// What a lost position turns out to be: playing on from the start, the player repeats the item, or somebody has
    /// sent it there.
    Loss judgeLoss(double seconds, const ItemProgress &progress) const;

private:
    QElapsedTimer m_sinceLoss;
    double m_lostAt = 0; ///< what it fell back to
    bool m_isLostBySeek = false;
};
