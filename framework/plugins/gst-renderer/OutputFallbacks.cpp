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

OutputFallbacks::Answer OutputFallbacks::videoFailed(bool byAdaptor)
{
    // The picture is the same without it.
    if (byAdaptor && m_pictures == Pictures::Usual) {
        m_pictures = Pictures::WithoutAdaptor;
        return {true, false};
    }
    const bool isNews = std::exchange(m_pictures, Pictures::None) != Pictures::None;
    return {isNews, isNews};
}

bool OutputFallbacks::retryAudio()
{
    if (m_audioLost)
        m_silent = false;
    return m_audioLost;
}

bool OutputFallbacks::retryAll()
{
    const bool standsIn = m_silent || m_pictures != Pictures::Usual;
    m_silent = m_audioLost = false;
    m_pictures = Pictures::Usual;
    return standsIn;
}
