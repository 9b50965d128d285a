// SPDX-License-Identifier: MIT
#pragma once

#include "Hearing.h"
#include "Measured.h"

#include <QMap>
#include <QString>

#include <algorithm>
#include <optional>

/// What there is to say of a sound at a moment, from all that was heard until then. All times are of one clock, seconds.
class HeardSound
{
public:
    using Measured = ::Measured;

    /// A volume may take so long until it is heard. Seconds.
    static constexpr double LongestChange = 0.5;
    /// What is silent for less is not heard as silence. Seconds.
    static constexpr double SilenceHeard = 0.005;

    HeardSound();
    /// @param clockError  how far off the times of what is heard may be together, where that was measured (Ear)
    explicit HeardSound(double clockError)
        : m_clockError(clockError)
    {
    }

    /// Somebody listens from now on.
    void beginListening() { m_isListening = true; }
    /// A command was given: what is heard from now on is its effect.
    void beginCommand(double now);
    void take(const Hearing &hearing);
    /// The volume that the renderer tells.
    void takeVolume(int volume, double now);
    /// It is that late now: what follows says how it is then.
    void settle(double now) { m_now = std::max(m_now, now); }

    bool isListening() const { return m_isListening; }
    /// Whether it has been silent for so long that no sound can be on its way to be told.
    bool isAtRest() const;
    bool sounds() const { return m_last && m_last->kind != Hearing::Ends && m_last->kind != Hearing::Fails; }
    /// Of what sounds, or did so last; 0: not known.
    int item() const { return m_last ? m_last->item : 0; }
    /// Of what sounds, now, or where it ended. Seconds.
    std::optional<Measured> position() const;
    /// Seconds from the last command until silence; less than 0 where it was silent before.
    std::optional<Measured> silence() const;
    /// The last silence between two items, the second of which began since the last command; 0 where one followed the
    /// other without any. The same item from further back counts as another. Seconds.
    std::optional<Measured> gap() const { return m_gap; }
    std::optional<Measured> speed() const;
    /// dBFS.
    std::optional<Measured> level() const;
    /// Decibels, against what was heard when the renderer had told that volume.
    std::optional<Measured> levelAgainst(int volume) const;
    /// Why what is missing could not be measured; empty: it was just not heard.
    QString doubt() const;
    /// For people.
    QString text() const;

private:
    void takeGap(const Hearing &hearing);

    double m_clockError; ///< seconds
    bool m_isListening = false;
    double m_now = 0;
    double m_command = 0; ///< when the last was given
    std::optional<Hearing> m_last;
    std::optional<Hearing> m_lastEnd; ///< none where something was missed since
    std::optional<Measured> m_gap;
    int m_volume = -1;
    double m_volumeSince = 0;
    QMap<int, double> m_levels; ///< dBFS, by the volumes at which they were heard
};
