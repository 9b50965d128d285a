// SPDX-License-Identifier: MIT
#include "OutputFallbacks.h"

#include <utility>

OutputFallbacks::Answer OutputFallbacks::audioFailed()
{
    if (std::exchange(m_silent, true))
        return {};
    const bool wasLost = std::exchange(m_audioLost, true);
    return {true, !wasLost};
}

OutputFallbacks::Answer OutputFallbacks::videoFailed()
{
    const bool wasBlind = std::exchange(m_blind, true);
    return {!wasBlind, !wasBlind};
}

bool OutputFallbacks::retryAudio()
{
    if (m_audioLost)
        m_silent = false;
    return m_audioLost;
}

bool OutputFallbacks::retryAll()
{
    const bool standsIn = m_silent || m_blind;
    m_silent = m_audioLost = m_blind = false;
    return standsIn;
}
