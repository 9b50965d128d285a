// SPDX-License-Identifier: MIT
#include "ScreenWatch.h"

#include "SenseProgram.h"

#include <chrono>
#include <cstdio>
#include <thread>

namespace {
constexpr auto lookInterval = std::chrono::milliseconds(10);
/// For a second mark while one is seen, and for the first. Seconds.
constexpr double searchInterval = 1;
constexpr double hurriedSearch = 0.1;
constexpr double leavingTime = 1.5; // seconds
constexpr int squares = MediaClock::markGuards + MediaClock::markBits;

QRect placeOf(const FrameMark &mark, const QPoint &origin)
{
    const int margin = int(mark.square);
    const QRect exact(int(mark.left), mark.top, int(mark.square * squares), mark.bottom - mark.top + 1);
    return exact.adjusted(-margin, 0, margin, 0).translated(origin);
}
} // namespace

ScreenWatch::ScreenWatch(std::unique_ptr<LookedAtPlace> place)
    : m_place(std::move(place))
{
}

void ScreenWatch::run(const std::atomic<bool> &isEnded)
{
    look();
    std::printf("looking %u\n", m_place->madeWindow());
    std::fflush(stdout);
    auto next = std::chrono::steady_clock::now();
    while (!isEnded) {
        next = std::max(next + lookInterval, std::chrono::steady_clock::now());
        std::this_thread::sleep_until(next);
        look();
    }
    // What draws into a window that goes may fail for good.
    const double end = SenseProgram::now() + leavingTime;
    while (m_place->isDrawnInto() && SenseProgram::now() < end)
        std::this_thread::sleep_for(lookInterval);
}

void ScreenWatch::look()
{
    const double now = SenseProgram::now();
    const bool isSearch = now - m_searched > (m_mark.isEmpty() ? hurriedSearch : searchInterval);
    if (m_mark.isEmpty() && !isSearch)
        return;
    PictureFollower::Look found = lookAt(isSearch ? QRect() : m_mark);
    // It may be elsewhere by now.
    if (found.marks.empty() && !isSearch)
        m_mark = {};
    if (isSearch)
        m_searched = now;
    if (found.doubt.isEmpty())
        found.doubt = doubt(found);
    for (const Sighting &sighting : m_follower.take(found))
        std::fputs(sighting.line().constData(), stdout);
    std::fflush(stdout);
}

PictureFollower::Look ScreenWatch::lookAt(const QRect &area)
{
    const LookedAtPlace::Grab grab = m_place->grab(area);
    PictureFollower::Look look{grab.at, grab.within, {}, grab.doubt};
    look.marks = FrameMarkReader::find({grab.grey, grab.area.width(), grab.area.height()});
    if (look.marks.size() == 1)
        m_mark = placeOf(look.marks.front(), grab.area.topLeft());
    else if (area.isEmpty())
        m_mark = {};
    return look;
}

/// What is not of the place although it is seen there.
QString ScreenWatch::doubt(const PictureFollower::Look &look)
{
    return m_place->isCovered(look.marks.empty() ? QRect() : m_mark) ? QStringLiteral("the window is covered")
                                                                     : QString();
}
