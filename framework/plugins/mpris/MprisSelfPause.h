// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>

struct MprisSnapshot;

/// A pause that nobody meant. A player that begins by itself a moment after it took an item, as Celluloid does, may take the
/// Play that comes just then for the opposite. It is told once more, once for each item.
class MprisSelfPause
{
public:
    enum class Step {
        None, ///< what it says is so
        PlayAgain, ///< it is to be told to play
        Wait, ///< it was told so just now
    };

    /// The item has begun, after the player was told to play it.
    void watch();
    /// It was sent somewhere: how far it is says nothing any more of how long it has played.
    void noteSeek() { m_isSent = true; }
    /// A pause would be meant.
    void end() { *this = {}; }
    Step take(const MprisSnapshot &now);

private:
    QElapsedTimer m_sinceBegun;
    bool m_isSent = false;
    QElapsedTimer m_sincePlay; ///< that was sent once more
};
