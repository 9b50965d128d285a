// SPDX-License-Identifier: MIT
#pragma once

#include "SenseWatch.h"
#include "card/SenseRow.h"

#include <QList>

/// Plays media with a clock on a renderer, and sets what that says beside what a sense tells of it. GUI thread.
class SenseTrial
{
public:
    /// Item 1 and item 2 of the clock, each that long.
    struct Media
    {
        QUrl first;
        QUrl second;

        static constexpr int Seconds = 30;
    };

    /// Seconds by which positions may be off what comes out.
    static constexpr double MostMisplaced = 0.1;

    virtual ~SenseTrial() = default;
    Q_DISABLE_COPY_MOVE(SenseTrial)

    /// Plays for about half a minute; the event loop runs meanwhile. Afterwards the renderer is stopped, and has the volume
    /// that it had.
    QList<SenseRow> run();
    /// Ends it soon: what is left is not known.
    void stop() { watch().stop(); }

protected:
    /// What comes out, in the words of a sense.
    struct Words
    {
        QString sense; ///< what the ids of its rows begin with
        QString first; ///< what comes out first
        QString rest; ///< what is there when it pauses
        QString end; ///< and when it is stopped
    };

    SenseTrial(Media media, Words words);
    virtual SenseWatch &watch() = 0;
    /// What only this sense can tell, while the first item plays.
    virtual void compareMore() = 0;

    /// Gives the renderer a command; nothing where it has gone.
    void tell(const std::function<void(KelvoRenderer &)> &command);
    void add(const QString &id, const QString &what, const QString &unit, std::optional<double> said,
        std::optional<Measured> cameOut, double limit);

    static constexpr double Patience = 10; ///< seconds, for each thing that should come
    static constexpr double Settling = 1; ///< seconds, until what was told is so

private:
    void start();
    void comparePositions();
    void pause();
    void pauseAt();
    void seek();
    void next();
    void stopPlaying();
    void waitUntilItGoes();
    void waitUntilItRests();
    std::optional<Measured> whereItRests();

    const Media m_media;
    const Words m_words;
    QList<SenseRow> m_rows;
};
