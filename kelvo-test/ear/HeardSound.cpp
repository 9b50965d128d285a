// SPDX-License-Identifier: MIT
#include "HeardSound.h"

#include "Ear.h"

#include <cmath>

namespace {
/// What was told of a sound that goes on is worth something for so long. Seconds.
constexpr double freshness = Ear::Lateness;
/// Both ends of a piece of sound are known to that.
constexpr double speedError = 0.001;

/// Another item, or the same again: not the same that went on after a while.
bool isAnother(const Hearing &sound, const Hearing &before)
{
    if (sound.item == 0 || before.item == 0)
        return false;
    return sound.item != before.item
        || (sound.position && before.position && *sound.position < *before.position);
}

QString timeText(double seconds)
{
    return QStringLiteral("%1 s").arg(seconds, 0, 'f', 3);
}
} // namespace

HeardSound::HeardSound()
    : HeardSound(Ear::ClockError)
{
}

void HeardSound::beginCommand(double now)
{
    settle(now);
    m_command = now;
    m_gap.reset();
}

void HeardSound::take(const Hearing &hearing)
{
    m_isListening = true;
    settle(hearing.at);
    takeGap(hearing);
    m_last = hearing;
    if (hearing.kind == Hearing::Fails)
        m_lastEnd.reset();
    else if (hearing.kind == Hearing::Ends)
        m_lastEnd = hearing;
    const bool isOfVolume = m_volume >= 0 && hearing.at > m_volumeSince + LongestChange;
    if (hearing.kind == Hearing::Goes && hearing.level && isOfVolume)
        m_levels.insert(m_volume, *hearing.level);
}

void HeardSound::takeGap(const Hearing &hearing)
{
    if (hearing.at < m_command)
        return;
    if (hearing.kind == Hearing::Begins && m_lastEnd && isAnother(hearing, *m_lastEnd))
        m_gap = {hearing.at - m_lastEnd->at, hearing.within + m_lastEnd->within};
    else if (hearing.kind == Hearing::Jumps && m_last && m_last->item > 0 && hearing.item != m_last->item)
        m_gap = {0, Hearing::PositionError + SilenceHeard};
}

void HeardSound::takeVolume(int volume, double now)
{
    if (volume != m_volume)
        m_volumeSince = now;
    m_volume = volume;
}

bool HeardSound::isAtRest() const
{
    return m_last && m_last->kind == Hearing::Ends && m_now - std::max(m_last->at, m_command) > Ear::Lateness;
}

std::optional<HeardSound::Measured> HeardSound::position() const
{
    if (!m_last || !m_last->position || !m_last->doubt.isEmpty())
        return std::nullopt;
    if (m_last->kind == Hearing::Ends)
        return Measured{*m_last->position, Hearing::PositionError + m_last->within};
    const double age = m_now - m_last->at;
    if (age > freshness)
        return std::nullopt;
    return Measured{*m_last->position + age * m_last->speed, Hearing::PositionError + m_clockError};
}

std::optional<HeardSound::Measured> HeardSound::silence() const
{
    if (!isAtRest())
        return std::nullopt;
    return Measured{m_last->at - m_command, m_last->within + m_clockError};
}

std::optional<HeardSound::Measured> HeardSound::speed() const
{
    const bool isHeard
        = m_last && m_last->kind == Hearing::Goes && m_last->position && m_last->at > m_command;
    return isHeard && m_last->doubt.isEmpty() ? std::optional(Measured{m_last->speed, speedError})
                                              : std::nullopt;
}

std::optional<HeardSound::Measured> HeardSound::level() const
{
    const bool isHeard = m_last && m_last->kind == Hearing::Goes && m_last->at > m_command;
    return isHeard && m_last->level ? std::optional(Measured{*m_last->level, Hearing::LevelError})
                                    : std::nullopt;
}

std::optional<HeardSound::Measured> HeardSound::levelAgainst(int volume) const
{
    const std::optional<Measured> now = level();
    if (!now || !m_levels.contains(volume))
        return std::nullopt;
    return Measured{now->value - m_levels.value(volume), 2 * now->error};
}

QString HeardSound::doubt() const
{
    if (!m_isListening)
        return QStringLiteral("nobody listens");
    return m_last ? m_last->doubt : QStringLiteral("nothing has been heard at all");
}

QString HeardSound::text() const
{
    if (!m_last)
        return QStringLiteral("nothing was heard");
    QString text = sounds() ? QStringLiteral("heard is") : QStringLiteral("heard was");
    text += m_last->item > 0 ? QStringLiteral(" item %1").arg(m_last->item) : QStringLiteral(" a sound");
    if (const std::optional<Measured> place = position())
        text += QStringLiteral(" at ") + timeText(place->value);
    if (const std::optional<Measured> loudness = level())
        text += QStringLiteral(", %1 dB").arg(loudness->value, 0, 'f', 1);
    if (!m_last->doubt.isEmpty())
        text += QStringLiteral(" (") + m_last->doubt + u')';
    if (!sounds())
        text += QStringLiteral(", silent since %1 after the last command")
                    .arg(timeText(m_last->at - m_command));
    return text;
}
