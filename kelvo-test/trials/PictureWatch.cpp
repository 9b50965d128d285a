// SPDX-License-Identifier: MIT
#include "PictureWatch.h"

#include "Eye.h"
#include "MediaClock.h"
#include "SenseTrial.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr qsizetype mostSeen = 1000;
constexpr double pictureTime = 1.0 / MediaClock::framesPerSecond;

bool isPicture(const Sighting &sighting)
{
    return sighting.moment.item > 0;
}
} // namespace

PictureWatch::PictureWatch(KelvoRenderer *renderer, const Eye *eye, QObject *parent)
    : SenseWatch(renderer, parent)
    , m_clockError(eye->clockError())
    , m_picture(m_clockError)
{
    m_picture.beginCommand(commandTime());
    m_picture.beginLooking();
    if (eye->last())
        m_picture.take(*eye->last());
    connect(eye, &Eye::seen, this, &PictureWatch::take);
}

void PictureWatch::begin()
{
    SenseWatch::begin();
    m_seen.clear();
    m_picture.beginCommand(commandTime());
}

void PictureWatch::take(const Sighting &sighting)
{
    m_picture.take(sighting);
    // A picture that rests came before the command that made it rest.
    const double earliest = sighting.kind == Sighting::Rests ? pictureTime : 0;
    if (sighting.at < commandTime() - Eye::ClockError - earliest || m_seen.size() == mostSeen)
        return;
    m_seen.append(sighting);
    m_seen.last().at -= commandTime();
}

std::optional<Sighting> PictureWatch::find(const std::function<bool(const Sighting &)> &is) const
{
    const auto found = std::find_if(m_seen.cbegin(), m_seen.cend(), is);
    return found == m_seen.cend() ? std::nullopt : std::optional(*found);
}

std::optional<SenseWatch::First> PictureWatch::first() const
{
    const auto first = find(isPicture);
    return first ? std::optional(First{{first->at, first->within + m_clockError}, first->moment.item})
                 : std::nullopt;
}

bool PictureWatch::hasGoneOn() const
{
    return find([](const Sighting &sighting) { return sighting.kind == Sighting::Goes; }).has_value();
}

std::optional<Measured> PictureWatch::restedAt()
{
    const auto last = find([](const Sighting &sighting) {
        return sighting.kind == Sighting::Rests || sighting.kind == Sighting::Ends;
    });
    if (!last)
        return std::nullopt;
    // The next picture did not come: it rests since some time between the two.
    const double half = last->kind == Sighting::Rests ? pictureTime / 2 : 0;
    return Measured{last->at + half, last->within + half + m_clockError};
}

std::optional<Measured> PictureWatch::wentOnAwayFrom(double place) const
{
    const auto found = find([place](const Sighting &sighting) {
        return isPicture(sighting) && std::abs(sighting.moment.seconds() - place) > LongestDropOut;
    });
    return found ? std::optional(Measured{found->moment.seconds(), pictureTime / 2}) : std::nullopt;
}

std::optional<SenseWatch::Change> PictureWatch::changeTo(int item)
{
    const auto isOther = [item](const Sighting &sighting) {
        return sighting.moment.item == item;
    };
    const auto other = std::find_if(m_seen.cbegin(), m_seen.cend(), isOther);
    const auto last = std::find_if(std::make_reverse_iterator(other), m_seen.crend(), isPicture);
    if (other == m_seen.cend() || last == m_seen.crend())
        return std::nullopt;
    // The last that was told of an item is not the last of its pictures.
    const double ended = last->at + SenseTrial::Media::Seconds - last->moment.seconds();
    return Change{ended, {other->at - ended, last->within + other->within + m_clockError}};
}

const SeenPicture &PictureWatch::picture()
{
    m_picture.settle(Eye::now());
    return m_picture;
}
