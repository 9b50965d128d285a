// SPDX-License-Identifier: MIT
#include "SampleClock.h"

#include <algorithm>

namespace {
constexpr double remembered = 5; // seconds; a device's clock is off by less than a millisecond in that time
} // namespace

SampleClock::SampleClock(int rate)
    : m_rate(rate)
{
}

void SampleClock::note(qint64 samples, double time)
{
    m_notes.push_back({time, time - double(samples) / m_rate});
    while (m_notes.front().time < time - remembered)
        m_notes.pop_front();
}

double SampleClock::timeOf(double sample) const
{
    const auto soonest = std::min_element(m_notes.cbegin(), m_notes.cend(),
        [](const Note &one, const Note &other) { return one.begin < other.begin; });
    return soonest->begin + sample / m_rate;
}
