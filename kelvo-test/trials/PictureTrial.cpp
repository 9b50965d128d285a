// SPDX-License-Identifier: MIT
#include "PictureTrial.h"

namespace {
constexpr int lookingTime = 4; // seconds
constexpr double mostLeftOut = 2; // pictures, of those
constexpr double mostApart = 0.1; // seconds, picture and sound
} // namespace

PictureTrial::PictureTrial(KelvoRenderer *renderer, const Eye *eye, const Ear *ear, Media media)
    : SenseTrial(std::move(media),
        {QStringLiteral("eye"), QStringLiteral("a picture"), QStringLiteral("one that stays"),
            QStringLiteral("none that is new")})
    , m_watch(renderer, eye)
    , m_sound(ear ? std::make_unique<SoundWatch>(renderer, ear) : nullptr)
{
}

void PictureTrial::compareMore()
{
    m_watch.begin();
    m_watch.wait(lookingTime);
    const SeenPicture &picture = m_watch.picture();
    add(QStringLiteral("left-out"),
        QStringLiteral("pictures left out of %1 s, of which none should be").arg(lookingTime), {}, 0,
        picture.goes() ? std::optional(Measured{double(picture.leftOut()), 0}) : std::nullopt, mostLeftOut);
    if (m_sound)
        compareWithSound();
}

void PictureTrial::compareWithSound()
{
    m_watch.waitUntil([this] { return pictureAheadOfSound().has_value(); }, Settling);
    add(QStringLiteral("sync"), QStringLiteral("by how much the picture is ahead of the sound"),
        QStringLiteral("s"), 0, pictureAheadOfSound(), mostApart);
}

std::optional<Measured> PictureTrial::pictureAheadOfSound()
{
    const std::optional<Measured> picture = m_watch.position();
    const std::optional<Measured> sound = m_sound->position();
    if (!picture || !sound || m_watch.picture().item() != m_sound->sound().item())
        return std::nullopt;
    return Measured{picture->value - sound->value, picture->error + sound->error};
}
