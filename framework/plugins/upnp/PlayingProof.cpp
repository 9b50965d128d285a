// SPDX-License-Identifier: MIT
#include "PlayingProof.h"

#include <algorithm>

namespace {
// Milliseconds; doubled each time.
constexpr int first = 100;
constexpr int longest = 1000;
} // namespace

PlayingProof::PlayingProof(int progress)
{
    m_proof.setSingleShot(true);
    connect(&m_proof, &QTimer::timeout, this, &PlayingProof::due);
    m_progress.setSingleShot(true);
    m_progress.setInterval(progress);
    connect(&m_progress, &QTimer::timeout, this, &PlayingProof::progressDue);
}

void PlayingProof::begin()
{
    m_progress.start();
    m_delay = first;
    m_proof.start(m_delay);
}

void PlayingProof::end()
{
    m_progress.stop();
    m_proof.stop();
}

void PlayingProof::askLater()
{
    m_proof.start(m_delay);
    m_delay = std::min(2 * m_delay, longest);
}
