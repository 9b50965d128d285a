// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <deque>
#include <span>
#include <vector>

/// Finds where sound begins and ends, to the sample: where it comes up to a tenth of what it soon is, or was until then.
/// Silence of a few milliseconds belongs to the sound: a wave has such.
class SoundEdges
{
public:
    struct Edge
    {
        bool begins = false;
        qint64 sample
            = 0; ///< counted from the first that was read: the first, or the first after the last, with sound
    };

    static constexpr double shortestSilence = 0.005; ///< seconds
    /// What is quieter is silence, as a share of full scale (-80 dBFS).
    static constexpr float floor = 0.0001F;

    /// @param rate  samples a second
    explicit SoundEdges(int rate);

    /// Takes the next samples, from -1 to 1, and gives out what is known with them: a beginning is known 20 ms later.
    std::vector<Edge> read(std::span<const float> samples);

private:
    void take(float loudness, std::vector<Edge> *edges);
    void findBeginning(std::vector<Edge> *edges);
    void findEnd(std::vector<Edge> *edges);
    float loudest() const;

    const size_t m_lookAhead;
    const qint64 m_shortest;
    std::deque<float> m_recent; ///< loudness of the last samples, at most m_lookAhead
    qint64 m_samples = 0;
    qint64 m_waiting = 0; ///< samples since one was loud in a silence; 0: none was
    qint64 m_quiet = 0; ///< samples without sound
    bool m_sounds = false;
};
