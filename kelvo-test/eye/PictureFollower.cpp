// SPDX-License-Identifier: MIT
#include "PictureFollower.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
constexpr double tellInterval = 0.2; // seconds
constexpr double pictureTime = 1.0 / MediaClock::framesPerSecond;
/// Faster than that is none that goes on.
constexpr double highestSpeed = 2.5;
/// So many pictures may be shown late together, after a wait. Of more it has jumped.
constexpr double burst = 3;
/// A speed is worth telling after so long. Seconds.
constexpr double leastRun = 0.5;

QString doubtOf(const PictureFollower::Look &look)
{
    if (!look.doubt.isEmpty())
        return look.doubt;
    if (look.marks.empty())
        return QStringLiteral("no picture with a mark is there");
    if (look.marks.size() > 1)
        return QStringLiteral("%1 pictures with a mark are there").arg(look.marks.size());
    return look.marks.front().moment.item > 0 ? QString()
                                              : QStringLiteral("the mark of the picture cannot be read");
}
} // namespace

std::vector<Sighting> PictureFollower::take(const Look &look)
{
    const QString doubt = doubtOf(look);
    if (doubt.isEmpty())
        see(look, look.marks.front().moment);
    else
        missing(look, doubt);
    return std::exchange(m_seen, {});
}

void PictureFollower::see(const Look &look, const MediaClock::Moment &moment)
{
    m_missingSince.reset();
    m_doubt.clear();
    if (m_moment.item == 0) {
        m_leftOut = 0;
        come(look, moment);
        startRun(Sighting::Begins);
    } else if (moment == m_moment) {
        if (!std::exchange(m_rests, m_rests || look.at - m_came > RestTime) && m_rests)
            tell(Sighting::Rests);
    } else {
        follow(look, moment);
    }
    m_look = look;
}

void PictureFollower::follow(const Look &look, const MediaClock::Moment &moment)
{
    const bool wentOn = goesOn(look.at, moment);
    if (wentOn && !m_rests)
        noteLeftOut(look, moment);
    come(look, moment);
    if (!wentOn) {
        startRun(Sighting::Jumps);
    } else if (std::exchange(m_rests, false)) {
        startRun(Sighting::Goes);
    } else {
        m_arrivals.push_back({m_came, m_cameWithin, m_moment});
        if (m_came - m_toldAt >= tellInterval)
            tellOn();
    }
}

bool PictureFollower::goesOn(double at, const MediaClock::Moment &moment) const
{
    const double most = (at - m_came) * MediaClock::framesPerSecond * highestSpeed + burst;
    const qint64 on = moment.frame - m_moment.frame;
    return moment.item == m_moment.item && on > 0 && double(on) <= (m_rests ? burst : most);
}

/// Only where each picture must have been seen, had it been there for half of its time.
void PictureFollower::noteLeftOut(const Look &look, const MediaClock::Moment &moment)
{
    if (m_look && look.at + look.within - (m_look->at - m_look->within) < pictureTime / 2)
        m_leftOut += int(moment.frame - m_moment.frame - 1);
}

/// That picture has come between the last look and this one.
void PictureFollower::come(const Look &look, const MediaClock::Moment &moment)
{
    const bool isKnown = m_look && m_look->at > look.at - Patience;
    const double before = isKnown ? m_look->at - m_look->within : look.at - look.within;
    m_came = (before + look.at + look.within) / 2;
    m_cameWithin = (look.at + look.within - before) / 2;
    m_moment = moment;
}

void PictureFollower::startRun(Sighting::Kind kind)
{
    m_rests = false;
    m_runBegan = m_moment;
    m_runBeganAt = m_came;
    tell(kind);
}

/// By a picture that was neither late nor early among its neighbours: one that a busy machine has shown late says nothing
/// of where the others are.
void PictureFollower::tellOn()
{
    const auto middle = m_arrivals.begin() + std::ptrdiff_t(m_arrivals.size() / 2);
    std::nth_element(m_arrivals.begin(), middle, m_arrivals.end(),
        [](const Arrival &one, const Arrival &other) { return one.lateness() < other.lateness(); });
    const Arrival last{m_came, m_cameWithin, m_moment};
    const Arrival told = *middle;
    m_came = told.at;
    m_cameWithin = told.within;
    m_moment = told.moment;
    tell(Sighting::Goes);
    m_came = m_toldAt = last.at;
    m_cameWithin = last.within;
    m_moment = last.moment;
}

void PictureFollower::missing(const Look &look, const QString &doubt)
{
    if (!m_missingSince)
        m_missingSince = look.at;
    if (look.at - *m_missingSince < Patience || doubt == m_doubt)
        return;
    m_doubt = doubt;
    m_moment = {};
    m_look.reset();
    m_rests = false;
    m_came = *m_missingSince;
    m_cameWithin = look.within;
    tell(Sighting::Ends);
}

void PictureFollower::tell(Sighting::Kind kind)
{
    Sighting sighting;
    sighting.kind = kind;
    sighting.at = m_came;
    sighting.within = m_cameWithin;
    sighting.moment = m_moment;
    sighting.leftOut = std::exchange(m_leftOut, 0);
    sighting.doubt = m_doubt;
    const double run = m_came - m_runBeganAt;
    if (kind == Sighting::Goes && run >= leastRun)
        sighting.speed = double(m_moment.frame - m_runBegan.frame) * pictureTime / run;
    m_toldAt = m_came;
    m_arrivals.clear();
    m_seen.push_back(sighting);
}
