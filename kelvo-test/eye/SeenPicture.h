// SPDX-License-Identifier: MIT
#pragma once

#include "Measured.h"
#include "Sighting.h"

#include <QString>

#include <algorithm>
#include <optional>

/// What there is to say of a picture at a moment, from all that was seen until then. All times are of one clock, seconds.
class SeenPicture
{
public:
    SeenPicture();
    /// @param clockError  how far off the times of what is seen may be together, where that was measured (Eye)
    explicit SeenPicture(double clockError)
        : m_clockError(clockError)
    {
    }

    /// Somebody looks from now on.
    void beginLooking() { m_isLooking = true; }
    /// A command was given: what is seen from now on is its effect.
    void beginCommand(double now);
    void take(const Sighting &sighting);
    /// It is that late now: what follows says how it is then.
    void settle(double now) { m_now = std::max(m_now, now); }

    bool isLooking() const { return m_isLooking; }
    bool isThere() const { return m_last && m_last->moment.item > 0; }
    /// Whether it is the same picture for a while.
    bool rests() const { return isThere() && m_last->kind == Sighting::Rests; }
    bool goes() const;
    /// 0: not known.
    int item() const { return m_last ? m_last->moment.item : 0; }
    /// Number of the picture, from the item's beginning, that is shown now.
    std::optional<Measured> frame() const;
    /// Of what is shown. Seconds.
    std::optional<Measured> position() const;
    /// Pictures that were not shown, since the last command.
    int leftOut() const { return m_leftOut; }
    /// Why what is missing could not be measured; empty: it was just not seen.
    QString doubt() const;
    /// For people.
    QString text() const;

private:
    double m_clockError; ///< seconds
    bool m_isLooking = false;
    double m_now = 0;
    double m_command = 0; ///< when the last was given
    std::optional<Sighting> m_last;
    int m_leftOut = 0;
};
