// SPDX-License-Identifier: MIT
#include "PlayState.h"

void PlayState::beginItem(bool paused)
{
    m_wantsPlaying = !paused;
    m_reported = KelvoRenderer::Transitioning;
}

void PlayState::beginLoading()
{
    m_phase = Phase::Loading;
    m_isPauseAcknowledged = false;
    m_live = false;
    m_bufferPercent = 100;
    m_isPlaying = m_isToldToPlay = false;
}

void PlayState::pause()
{
    m_wantsPlaying = false;
    m_isPauseAcknowledged = isLoading() || isBuffering();
}

void PlayState::resume()
{
    m_wantsPlaying = true;
    m_isPauseAcknowledged = false;
}

bool PlayState::setBuffered(int percent)
{
    if (m_live || percent == m_bufferPercent)
        return false;
    m_bufferPercent = percent;
    return true;
}

bool PlayState::setOverridden(bool overridden)
{
    if (overridden == m_isOverridden)
        return false;
    m_isOverridden = overridden;
    return true;
}

std::optional<bool> PlayState::order()
{
    const bool playing = m_wantsPlaying && !isBuffering() && !m_isOverridden;
    if (!isLoaded() || playing == m_isToldToPlay)
        return std::nullopt;
    m_isToldToPlay = playing;
    return playing;
}

std::optional<KelvoRenderer::State> PlayState::news()
{
    const std::optional<KelvoRenderer::State> state = reached();
    if (!state || *state == m_reported)
        return std::nullopt;
    m_reported = *state;
    return state;
}

/// Nothing while the pipeline is on its way.
std::optional<KelvoRenderer::State> PlayState::reached() const
{
    if (!isLoading() && !isLoaded())
        return std::nullopt;
    if (!m_wantsPlaying || (m_isOverridden && isLoaded())) {
        if (m_isPauseAcknowledged || (isLoaded() && !m_isPlaying))
            return KelvoRenderer::Paused;
    } else if (isLoading() || isBuffering()) {
        return KelvoRenderer::Transitioning;
    } else if (m_isPlaying) {
        return KelvoRenderer::Playing;
    }
    return std::nullopt;
}

bool PlayState::wantsToMove(bool isSeeking) const
{
    return isLoading() || (isLoaded() && (isSeeking || (m_wantsPlaying && !m_isOverridden)));
}
