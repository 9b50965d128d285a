// SPDX-License-Identifier: MIT
#include "LevelMeter.h"

#include <cmath>
#include <complex>
#include <numbers>

LevelMeter::LevelMeter(int rate)
    : m_rate(rate)
{
    m_window.reserve(size_t(std::lround(rate * window)));
}

std::vector<LevelMeter::Reading> LevelMeter::read(std::span<const float> samples)
{
    std::vector<Reading> readings;
    for (const float sample : samples) {
        m_window.push_back(sample);
        if (double(m_window.size()) >= m_rate * window) {
            readings.push_back(measured());
            m_window.clear();
        }
    }
    return readings;
}

/// Whether several samples in a row are as large as samples can be.
bool LevelMeter::clips() const
{
    constexpr float full = 0.999F;
    constexpr int several = 3;
    int row = 0;
    for (const float sample : m_window) {
        row = std::abs(sample) >= full ? row + 1 : 0;
        if (row >= several)
            return true;
    }
    return false;
}

LevelMeter::Reading LevelMeter::measured() const
{
    double squares = 0;
    double sizes = 0;
    for (const float sample : m_window) {
        squares += double(sample) * sample;
        sizes += std::abs(double(sample));
    }
    const double power = squares / double(m_window.size());
    Reading reading;
    reading.clips = clips();
    reading.evenness = power > 0 ? sizes / double(m_window.size()) / std::sqrt(power) : 0;
    reading.level = power > 0 ? 10 * std::log10(2 * power) : silence;
    reading.frequency = frequency();
    reading.purity = power > 0 && reading.frequency > 0 ? powerAt(reading.frequency) / power : 0;
    return reading;
}

/// By the first and the last time at which the wave goes up through zero.
double LevelMeter::frequency() const
{
    double first = 0;
    double last = 0;
    int crossings = 0;
    for (size_t i = 1; i < m_window.size(); ++i) {
        const double before = m_window[i - 1];
        const double now = m_window[i];
        if (before >= 0 || now < 0)
            continue;
        last = double(i) - now / (now - before);
        first = crossings == 0 ? last : first;
        ++crossings;
    }
    return crossings > 1 && last > first ? (crossings - 1) * m_rate / (last - first) : 0;
}

/// Of a sine of that frequency; seen through a bell, which leaves out what the ends of the window would add.
double LevelMeter::powerAt(double frequency) const
{
    std::complex<double> sum = 0;
    double weights = 0;
    for (size_t i = 0; i < m_window.size(); ++i) {
        const double bell = 1 - std::cos(2 * std::numbers::pi * (double(i) + 0.5) / double(m_window.size()));
        const double angle = 2 * std::numbers::pi * frequency * double(i) / m_rate;
        sum += bell * double(m_window[i]) * std::polar(1.0, -angle);
        weights += bell;
    }
    const double amplitude = 2 * std::abs(sum) / weights;
    return amplitude * amplitude / 2;
}
