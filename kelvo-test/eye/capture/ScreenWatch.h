// SPDX-License-Identifier: MIT
#pragma once

#include "LookedAtPlace.h"
#include "PictureFollower.h"

#include <atomic>
#include <memory>

/// Looks at a place a hundred times a second, and writes what it sees to the standard output, a line each.
class ScreenWatch
{
public:
    explicit ScreenWatch(std::unique_ptr<LookedAtPlace> place);

    /// Returns when it has been ended, and nobody draws into the window that was made any more.
    void run(const std::atomic<bool> &isEnded);

private:
    void look();
    PictureFollower::Look lookAt(const QRect &area);
    QString doubt(const PictureFollower::Look &look);

    std::unique_ptr<LookedAtPlace> m_place;
    PictureFollower m_follower;
    QRect m_mark; ///< where it was found last; empty: it was not
    double m_searched = 0; ///< when the whole place was looked at last
};
