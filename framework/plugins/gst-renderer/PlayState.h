// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoRenderer.h"

#include <optional>

/// What the user wants (playing or paused), what holds the pipeline back at the moment (an empty buffer, a policy of
/// the audio server), and what follows of both. A hold never changes the want.
///
/// Decides only: order() says what the pipeline is to be told and news() what is to be reported, each once.
class PlayState
{
public:
    enum class Phase {
        Idle, ///< no item
        Loading, ///< the pipeline is on its way to Paused for the first time
        Loaded,
        Ended,
    };

    /// Another item, which is to play or to be paused.
    void beginItem(bool paused);
    /// A pipeline was given the item and told to go to Paused. Not always the item's first one.
    void beginLoading();
    /// What comes from a live source cannot be held back by a buffer that fills.
    void setLive(bool live) { m_live = live; }
    void prerolled() { m_phase = Phase::Loaded; }
    void end() { m_phase = Phase::Ended; }
    /// The item is out of play. A policy stays in force.
    void forgetItem() { m_phase = Phase::Idle; }

    Phase phase() const { return m_phase; }
    bool isLoading() const { return m_phase == Phase::Loading; }
    bool isLoaded() const { return m_phase == Phase::Loaded; }

    /// The user's wish. Where there is nothing to pause yet, a pause counts as done at once.
    void pause();
    void resume();
    /// The user's earlier wish to pause at some point, which is reached.
    void pauseHere() { m_wantsPlaying = false; }

    /// How full the buffer is; below 100 it holds. False when that is no news, or means nothing.
    bool setBuffered(int percent);
    int bufferPercent() const { return m_bufferPercent; }
    /// Whether the audio server has taken the output away. False when that is no news.
    bool setOverridden(bool overridden);

    /// The pipeline has come to Playing, or has not.
    void pipelineReached(bool playing) { m_isPlaying = playing; }
    /// The pipeline was told to go to Paused for other reasons than those known here.
    void pipelinePaused() { m_isToldToPlay = false; }

    /// What to tell the pipeline: true to play, false to pause, nothing when it is told already.
    std::optional<bool> order();
    /// The state to report, if it is another than the one reported last.
    std::optional<KelvoRenderer::State> news();

    /// Whether standing still would be wrong at the moment.
    bool wantsToMove(bool isSeeking) const;
    bool isPlaying() const { return m_isPlaying; }
    /// Whether it plays and is to go on with that.
    bool goesOn() const { return m_isPlaying && m_isToldToPlay; }
    /// Whether it is still to come to where it was told to go.
    bool isOnItsWay() const { return isLoading() || (isLoaded() && m_isPlaying != m_isToldToPlay); }
    /// Whether it has come to rest at a picture.
    bool stands() const { return isLoaded() && !m_isPlaying && !m_isToldToPlay; }

private:
    bool isBuffering() const { return m_bufferPercent < 100; }
    std::optional<KelvoRenderer::State> reached() const;

    Phase m_phase = Phase::Idle;
    KelvoRenderer::State m_reported = KelvoRenderer::Stopped;
    bool m_wantsPlaying = false;
    bool m_isPauseAcknowledged = false; ///< paused before there is anything to pause
    bool m_isOverridden = false;
    bool m_live = false;
    int m_bufferPercent = 100;
    bool m_isPlaying = false; ///< the state that the pipeline is in, once it has prerolled
    bool m_isToldToPlay = false; ///< the state that it was last told to go to
};
