// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <deque>

/// When a sample was heard, by a clock that only goes forward. A device delivers samples in pieces, and each piece late by
/// what the machine has to do besides: the one that came soonest, of the last seconds, tells what all of them are worth.
class SampleClock
{
public:
    /// @param rate  samples a second
    explicit SampleClock(int rate);

    /// So many samples are there at that time, counted from the first. Seconds.
    void note(qint64 samples, double time);
    /// When that sample was heard. After the first note.
    double timeOf(double sample) const;

private:
    struct Note
    {
        double time = 0;
        double begin = 0; ///< when the first sample was heard, if this piece came at once
    };

    const int m_rate;
    std::deque<Note> m_notes; ///< of the last seconds
};
