// SPDX-License-Identifier: MIT
#pragma once

#include "PlaybackFacts.h"

#include <QHash>

/// Says why nothing is heard of a renderer: what a tester would find by reading the run from its end.
///
/// Takes events one by one, so it serves recordings of any length as well as what is heard just now.
class SilenceReason
{
public:
    enum class Cause {
        NoRenderer, ///< the run tells of no renderer, or not of that one
        Gone, ///< it vanished
        NoCommand, ///< nobody told it to play
        NothingToPlay,
        NoAnswer, ///< the device is silent itself
        Failed, ///< an error came, and it does not play
        Policy, ///< something outside of the program overrides playback
        PausedByCommand, ///< by pause() or pauseAt()
        Paused, ///< and nobody told it to
        StoppedByCommand,
        Completed, ///< what there was to play has ended
        Stopped, ///< and nobody told it to
        Buffering,
        Transitioning,
        ClockStands,
        Muted, ///< muted, or volume 0
        NotSilent, ///< nothing of all this: it plays, and its clock moves
    };

    struct Verdict
    {
        Cause cause = Cause::NoRenderer;
        /// One sentence for people.
        QString sentence;
        /// What shows it, by time.
        QList<PlaybackFacts::Moment> evidence;
    };

    /// A device that says nothing for so many seconds does not answer; a clock that stands for so long stands.
    static constexpr double Patience = 3;

    void add(qint64 index, const RecordedEvent &event);
    /// Time goes on, also when nothing is heard.
    void setTime(double time);

    /// A renderer that the run tells of.
    struct Name
    {
        QString uuid;
        QString name;
    };
    QList<Name> renderers() const;

    /// Of the renderer with that uuid; of an empty one: of the renderer that was told to play last, or else of the
    /// first.
    Verdict verdict(const QString &uuid = {}) const;

private:
    struct Renderer
    {
        QString uuid;
        PlaybackFacts facts;
    };

    const Renderer *choose(const QString &uuid) const;

    QList<Renderer> m_renderers;
    QHash<QString, qsizetype> m_indexes;
    double m_now = 0;
};
