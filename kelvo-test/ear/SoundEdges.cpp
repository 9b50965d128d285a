// SPDX-License-Identifier: MIT
#include "SoundEdges.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double lookAhead = 0.02; // seconds
/// Codecs that lose something put faint noise before and behind a sound, which is none of it.
constexpr float share = 0.1F;
} // namespace

SoundEdges::SoundEdges(int rate)
    : m_lookAhead(size_t(std::lround(rate * lookAhead)))
    , m_shortest(std::lround(rate * shortestSilence))
{
}

std::vector<SoundEdges::Edge> SoundEdges::read(std::span<const float> samples)
{
    std::vector<Edge> edges;
    for (const float sample : samples)
        take(std::abs(sample), &edges);
    return edges;
}

void SoundEdges::take(float loudness, std::vector<Edge> *edges)
{
    m_recent.push_back(loudness);
    if (m_recent.size() > m_lookAhead)
        m_recent.pop_front();
    ++m_samples;
    const bool isLoud = loudness >= floor;
    if (m_sounds) {
        m_quiet = isLoud ? 0 : m_quiet + 1;
        if (m_quiet >= m_shortest)
            findEnd(edges);
        return;
    }
    if (m_waiting > 0 || isLoud)
        ++m_waiting;
    if (m_waiting >= qint64(m_lookAhead))
        findBeginning(edges);
}

float SoundEdges::loudest() const
{
    return *std::max_element(m_recent.cbegin(), m_recent.cend());
}

void SoundEdges::findBeginning(std::vector<Edge> *edges)
{
    const float enough = loudest() * share;
    const auto first = std::find_if(
        m_recent.cbegin(), m_recent.cend(), [enough](float loudness) { return loudness >= enough; });
    edges->push_back({true, m_samples - (m_recent.cend() - first)});
    m_sounds = true;
    m_waiting = 0;
    const auto lastLoud = std::find_if(
        m_recent.crbegin(), m_recent.crend(), [](float loudness) { return loudness >= floor; });
    m_quiet = lastLoud - m_recent.crbegin();
    if (m_quiet >= m_shortest)
        findEnd(edges);
}

void SoundEdges::findEnd(std::vector<Edge> *edges)
{
    const float enough = loudest() * share;
    const auto last = std::find_if(
        m_recent.crbegin(), m_recent.crend(), [enough](float loudness) { return loudness >= enough; });
    edges->push_back({false, m_samples - (last - m_recent.crbegin())});
    m_sounds = false;
    m_quiet = 0;
}
