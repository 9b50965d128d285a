// SPDX-License-Identifier: MIT
#include "SoundWatch.h"

#include "Ear.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr qsizetype mostHeard = 1000;
} // namespace

SoundWatch::SoundWatch(KelvoRenderer *renderer, const Ear *ear, QObject *parent)
    : SenseWatch(renderer, parent)
    , m_clockError(ear->clockError())
    , m_sound(m_clockError)
{
    m_sound.beginCommand(commandTime());
    m_sound.beginListening();
    connect(ear, &Ear::heard, this, &SoundWatch::take);
}

void SoundWatch::begin()
{
    SenseWatch::begin();
    m_heard.clear();
    m_sound.beginCommand(commandTime());
}

void SoundWatch::take(const Hearing &hearing)
{
    m_sound.take(hearing);
    // What was heard before is told now.
    if (hearing.at < commandTime() - Ear::ClockError || m_heard.size() == mostHeard)
        return;
    m_heard.append(hearing);
    m_heard.last().at -= commandTime();
}

std::optional<Hearing> SoundWatch::find(const std::function<bool(const Hearing &)> &is) const
{
    const auto found = std::find_if(m_heard.cbegin(), m_heard.cend(), is);
    return found == m_heard.cend() ? std::nullopt : std::optional(*found);
}

std::optional<SenseWatch::First> SoundWatch::first() const
{
    const auto first = find([](const Hearing &hearing) { return hearing.kind == Hearing::Begins; });
    return first ? std::optional(First{{first->at, first->within + m_clockError}, first->item})
                 : std::nullopt;
}

bool SoundWatch::hasGoneOn() const
{
    return find([](const Hearing &hearing) { return hearing.kind == Hearing::Goes; }).has_value();
}

std::optional<Measured> SoundWatch::wentOnAwayFrom(double place) const
{
    const auto found = find([place](const Hearing &hearing) {
        const bool isNew = hearing.kind == Hearing::Begins || hearing.kind == Hearing::Jumps;
        return isNew && hearing.position && std::abs(*hearing.position - place) > LongestDropOut;
    });
    return found ? std::optional(Measured{*found->position, Hearing::PositionError + found->within})
                 : std::nullopt;
}

std::optional<SenseWatch::Change> SoundWatch::changeTo(int item)
{
    const std::optional<Measured> gap = sound().gap();
    const auto other = find([item](const Hearing &hearing) { return hearing.item == item; });
    return gap && other ? std::optional(Change{other->at - gap->value, *gap}) : std::nullopt;
}

const HeardSound &SoundWatch::sound()
{
    m_sound.settle(Ear::now());
    return m_sound;
}
