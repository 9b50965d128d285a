// SPDX-License-Identifier: MIT
#pragma once

/// Which outputs have failed, so that something else takes their place: at last one that only keeps the time.
class OutputFallbacks
{
public:
    /// What shows the pictures.
    enum class Pictures {
        Usual,
        WithoutAdaptor, ///< the display's video adaptor has failed, all of whose ports may be taken by others
        None
    };
    /// What is to be done about a failure.
    struct Answer
    {
        bool replace = false; ///< else nothing is left to fall back to
        bool tell = false; ///< it is news
    };
    Answer audioFailed();
    /// `byAdaptor`: what failed shows by the display's video adaptor, and was not asked for by name.
    Answer videoFailed(bool byAdaptor);

    bool isSilent() const { return m_silent; }
    Pictures pictures() const { return m_pictures; }

    /// Another item tries the sound again, which may be back, as a sound server is that was started again. True when
    /// the pipeline has to be made anew for it.
    bool retryAudio();
    /// The item's sound plays, perhaps only on a clock once more.
    void audioPlays(bool onSilentClock) { m_audioLost = m_audioLost && onSilentClock; }
    /// Nothing plays: the next start tries all again. True when the pipeline has to be made anew for it.
    bool retryAll();

private:
    bool m_silent = false;
    bool m_audioLost = false; ///< was told, and is tried again with each item until it is back
    Pictures m_pictures = Pictures::Usual;
};
