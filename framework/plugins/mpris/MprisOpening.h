// SPDX-License-Identifier: MIT
#pragma once

#include "MprisSnapshot.h"
#include "RemoteTransport.h"

#include <QElapsedTimer>

#include <optional>
#include <utility>

/// An item that a player was given with OpenUri, until it plays, or does not.
///
/// What players say meanwhile is late, partial and sometimes wrong: this judges by whole snapshots and by time. README.md tells
/// which players need which of it.
class MprisOpening
{
public:
    enum class Step {
        Wait, ///< nothing can be said yet
        Nudge, ///< the player rests with the item, and is to be told once more
        Plays,
        PlaysUnnoticed, ///< the position advances although the player says "Stopped"
        Pauses,
        HasPlayed, ///< it is so short that it is over
        GivenUp, ///< by the player
        TimedOut, ///< nothing was heard of the player
    };

    /// @param before  what the player had until now
    void begin(const RemoteTransport::Item &item, const QUrl &before);
    const RemoteTransport::Item &item() const { return m_item; }

    /// The player has answered OpenUri.
    void accept();
    bool isAccepted() const { return m_isAccepted; }
    /// Any snapshot, also while no item is on its way.
    void note(const MprisSnapshot &now) { m_tellsOfEmptiness = m_tellsOfEmptiness || now.isEmptied; }
    /// @param hasAdvanced  the position has moved on since the snapshot before
    Step take(const MprisSnapshot &now, bool hasAdvanced);
    /// A question was not answered.
    Step takeSilence();

    /// Whether the player was nudged to play it.
    bool isToldToPlay() const { return m_nudges > 0 && !m_item.paused; }
    void nudgeAccepted() { m_refusals = 0; }
    /// Whether it was refused often enough: once, the player may not be ready for it; again and again, it cannot do it.
    bool nudgeRefused();

    /// Milliseconds until it is worth looking again.
    int nextLook() const;
    /// For how many seconds the player has said that it plays the item.
    double playedFor() const;

private:
    Step takeOurs(const MprisSnapshot &now, bool hasAdvanced);
    Step takeRest(const MprisSnapshot &now);
    Step takeAbsence(const MprisSnapshot &now);
    void noteRest(const MprisSnapshot &now);
    bool isOurs(const MprisTrack &track) const;
    bool isFresh(const MprisSnapshot &now) const;
    bool hasGivenUp() const;
    bool isEmptyForGood(const MprisSnapshot &now) const;
    bool hasPlayedAtOnce(const MprisSnapshot &now) const;
    bool isNudgeDue(const MprisSnapshot &now) const;
    bool isOverdue() const;

    RemoteTransport::Item m_item;
    QUrl m_before; ///< what the player had when the item was given to it
    bool m_isAccepted = false;
    bool m_isSeen = false;
    bool m_isTried = false; ///< the player said that it plays it
    size_t m_nudges = 0;
    int m_refusals = 0; ///< of nudges, in a row
    QElapsedTimer m_sinceNudge;
    std::pair<KelvoRenderer::State, bool> m_rest; ///< the state, and whether there is a track
    QElapsedTimer m_sinceRest; ///< of that
    QElapsedTimer m_sinceLook;
    QElapsedTimer m_sinceLoad;
    QElapsedTimer m_sinceAbsence;
    bool m_tellsOfEmptiness = false; ///< the player says when nothing is left of what it was given
};
