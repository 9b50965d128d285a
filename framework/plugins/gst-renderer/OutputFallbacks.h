// SPDX-License-Identifier: MIT
#pragma once

/// Which outputs have failed, so that something that only keeps the time takes their place.
class OutputFallbacks
{
public:
    /// What is to be done about a failure.
    struct Answer
    {
        bool replace = false; ///< else nothing is left to fall back to
        bool tell = false; ///< it is news
    };
    Answer audioFailed();
    Answer videoFailed();

    bool isSilent() const { return m_silent; }
    bool isBlind() const { return m_blind; }

    /// Another item tries the sound again, which may be back, as a sound server is that was started again. True when
    /// the pipeline has to be made anew for it.
    bool retryAudio();
    /// The item's sound plays, perhaps only on a clock once more.
    void audioPlays(bool onSilentClock) { m_audioLost = m_audioLost && onSilentClock; }
    /// Nothing plays: the next start tries both again. True when the pipeline has to be made anew for it.
    bool retryAll();

private:
    bool m_silent = false;
    bool m_audioLost = false; ///< was told, and is tried again with each item until it is back
    bool m_blind = false;
};
