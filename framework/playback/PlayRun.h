// SPDX-License-Identifier: MIT
#pragma once

/// Everything since the user last chose an item: what has played and what has not, and what the end or the failure of an
/// item therefore leads to.
class PlayRun
{
public:
    /// Where the item stands that ended or failed.
    struct Place
    {
        bool inPlaylist = false;
        int index = 0;
        int count = 0; ///< items of the playlist
        int next = -1; ///< index that next() leads to; -1: none
        int following = -1; ///< index that follows by itself; -1: none
        bool autoAdvance = true;
    };
    enum class Action {
        Play, ///< the item at `index`
        Stop,
        Complete, ///< stops because there is nothing more to play
    };
    struct Step
    {
        Action action = Action::Stop;
        int index = -1;
        bool nothingPlayable = false; ///< a whole round has brought nothing that plays, which is an error

        bool operator==(const Step &) const = default;
    };

    /// The item, or an entry of it, came to its end. `progressed` is false for one that ended where it began.
    void noteEnd(bool progressed);
    /// The item, or an entry of it, failed. `progressed`: after it had played for a while.
    void noteFailure(bool progressed);

    /// What follows the end of the item.
    Step afterEnd(const Place &place) const;
    /// What follows the failure of the item; `progressed` as in noteFailure().
    Step afterFailure(const Place &place, bool progressed);

private:
    bool m_played = false;
    int m_failedInRow = 0; ///< items
    int m_idleInRow = 0; ///< items that ended where they began
};
