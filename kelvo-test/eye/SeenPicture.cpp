// SPDX-License-Identifier: MIT
#include "SeenPicture.h"

#include "Eye.h"

namespace {
constexpr double pictureLength = 1.0 / MediaClock::framesPerSecond;
} // namespace

SeenPicture::SeenPicture()
    : SeenPicture(Eye::ClockError)
{
}

void SeenPicture::beginCommand(double now)
{
    settle(now);
    m_command = now;
    m_leftOut = 0;
}

void SeenPicture::take(const Sighting &sighting)
{
    m_isLooking = true;
    settle(sighting.at);
    m_last = sighting;
    if (sighting.at >= m_command)
        m_leftOut += sighting.leftOut;
}

bool SeenPicture::goes() const
{
    return isThere() && !rests() && m_now - m_last->at <= Eye::Lateness;
}

std::optional<Measured> SeenPicture::position() const
{
    if (!isThere())
        return std::nullopt;
    // A picture stands for the time until the next one.
    if (rests())
        return Measured{m_last->moment.seconds() + pictureLength / 2, pictureLength / 2};
    if (!goes())
        return std::nullopt;
    return Measured{
        m_last->moment.seconds() + (m_now - m_last->at) * m_last->speed, m_last->within + m_clockError};
}

std::optional<Measured> SeenPicture::frame() const
{
    const std::optional<Measured> place = position();
    if (!place)
        return std::nullopt;
    if (rests())
        return Measured{double(m_last->moment.frame), 0};
    return Measured{place->value * MediaClock::framesPerSecond, place->error * MediaClock::framesPerSecond};
}

QString SeenPicture::doubt() const
{
    if (!m_isLooking)
        return QStringLiteral("nobody looks");
    return m_last ? m_last->doubt : QStringLiteral("nothing has been seen at all");
}

QString SeenPicture::text() const
{
    if (!isThere())
        return doubt().isEmpty() ? QStringLiteral("nothing was seen")
                                 : QStringLiteral("nothing is seen (%1)").arg(doubt());
    QString text = QStringLiteral("seen is item %1").arg(item());
    if (const std::optional<Measured> place = position())
        text += QStringLiteral(" at %1 s").arg(place->value, 0, 'f', 3);
    if (rests())
        text += QStringLiteral(", picture %1, which rests").arg(m_last->moment.frame);
    return text;
}
