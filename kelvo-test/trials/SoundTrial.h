// SPDX-License-Identifier: MIT
#pragma once

#include "SoundWatch.h"
#include "card/SoundRow.h"

#include <QList>
#include <QUrl>

/// Plays media with a clock on a renderer, and sets what that says beside what is heard. GUI thread.
class SoundTrial
{
public:
    /// Item 1 and item 2 of the clock, each at least that long.
    struct Media
    {
        QUrl first;
        QUrl second;

        static constexpr int Seconds = 30;
    };

    /// Neither is owned; both outlive this.
    SoundTrial(KelvoRenderer *renderer, const Ear *ear, Media media);

    /// Plays for about half a minute; the event loop runs meanwhile. Afterwards the renderer is stopped, and has the volume
    /// that it had.
    QList<SoundRow> run();
    /// Ends it soon: what is left is not known.
    void stop() { m_watch.stop(); }

private:
    void start();
    void comparePositions();
    void compareLevels();
    void setVolume(int volume);
    void pause();
    void pauseAt();
    void seek();
    void next();
    void stopPlaying();
    void add(const QString &id, const QString &what, const QString &unit, std::optional<double> said,
        std::optional<HeardSound::Measured> cameOut, double limit);
    std::optional<HeardSound::Measured> whereItRests();
    bool waitForSilence();
    bool waitForSound();

    KelvoRenderer *const m_renderer;
    const Media m_media;
    SoundWatch m_watch;
    QList<SoundRow> m_rows;
};
