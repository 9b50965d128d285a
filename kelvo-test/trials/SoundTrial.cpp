// SPDX-License-Identifier: MIT
#include "SoundTrial.h"

#include <cmath>

using R = KelvoRenderer;

namespace {
constexpr int loudest = 99;
constexpr double mostOffCurve = 1.5; // decibels

/// Of the curve that mixers have: the amplitude goes with the third power.
double decibelsOf(int volume)
{
    return 60 * std::log10(double(volume) / loudest);
}
} // namespace

SoundTrial::SoundTrial(KelvoRenderer *renderer, const Ear *ear, Media media)
    : SenseTrial(std::move(media),
        {QStringLiteral("ear"), QStringLiteral("sound"), QStringLiteral("silence"),
            QStringLiteral("silence")})
    , m_watch(renderer, ear)
{
}

void SoundTrial::setVolume(int volume)
{
    m_watch.begin();
    tell([volume](R &renderer) { renderer.setKelvoProperty(R::PropertyVolume, volume); });
    m_watch.wait(Settling);
    m_watch.waitUntil([this] { return m_watch.sound().level().has_value(); }, Settling);
}

/// Levels.
void SoundTrial::compareMore()
{
    setVolume(loudest);
    const std::optional<Measured> full = m_watch.sound().level();
    for (const int volume : {50, 25}) {
        setVolume(volume);
        std::optional<Measured> level = m_watch.sound().level();
        if (level && full)
            level = {level->value - full->value, level->error + full->error};
        const bool isTold = m_watch.volume() == volume;
        add(QStringLiteral("level-%1").arg(volume),
            QStringLiteral("level at volume %1 against %2, by the cubic curve").arg(volume).arg(loudest),
            QStringLiteral("dB"), isTold ? std::optional(decibelsOf(volume)) : std::nullopt,
            full ? level : std::nullopt, mostOffCurve);
    }
    setVolume(loudest);
}
