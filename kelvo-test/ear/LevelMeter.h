// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <span>
#include <vector>

/// Measures one channel of test media: how loud it is, how high its tone is, and whether that is alone.
class LevelMeter
{
public:
    /// What one window, 40 ms long, holds.
    struct Reading
    {
        double level = 0; ///< dBFS: a sine of full scale has 0; very low for silence
        double frequency = 0; ///< Hz; 0: no tone could be found
        double purity = 0; ///< the tone's share of all power, 0 to 1
        double evenness = 0; ///< mean loudness by its square mean: 0.9 of a sine, 1 of a code that is alone
        bool clips = false;
    };

    static constexpr double window = 0.04; ///< seconds
    static constexpr double silence = -200; ///< dBFS, of a window without any sound

    /// @param rate  samples a second
    explicit LevelMeter(int rate);

    /// Takes the next samples, from -1 to 1, and gives out the windows that they complete.
    std::vector<Reading> read(std::span<const float> samples);

private:
    Reading measured() const;
    bool clips() const;
    double frequency() const;
    double powerAt(double frequency) const;

    int m_rate;
    std::vector<float> m_window;
};
