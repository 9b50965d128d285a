// SPDX-License-Identifier: MIT
#pragma once

#include "RecordedEvent.h"

#include <QStringList>

#include <optional>

/// What a run tells of one renderer up to now, as far as it decides whether something is heard.
class PlaybackFacts
{
public:
    /// Something that happened, and the event that shows it.
    struct Moment
    {
        double time = 0;
        qint64 event = 0;
        /// The event as a call: "playUri(http://host/song)".
        QString text;
    };
    using Found = std::optional<Moment>;

    /// The last command of each kind.
    struct Commands
    {
        Found play; ///< any that makes something play
        Found stop;
        Found pause;
        Found pauseAt; ///< as long as it is kept
        Found pausedBy; ///< while Paused: the command that led to it, if one did
        Found question; ///< the first that was not answered
    };

    struct State
    {
        /// "Playing" and so on; empty before the first report.
        QString name;
        Found since;
        Found error; ///< the last one about what was to be played last
        int errorCode = 0;
        Found completed;
    };

    /// Values at which nothing is heard; nothing where the value is another.
    struct Levels
    {
        Found volume0;
        Found muted;
        Found policy;
        Found buffering; ///< when the present fraction was reported
        double fraction = 1;
    };

    /// The position, as answered while Playing.
    struct Clock
    {
        double position = 0;
        Found since; ///< the first answer with that position
        Found last;
        int answers = 0; ///< with that position
    };

    QString name;
    Commands commands;
    State state;
    Levels levels;
    Clock clock;
    Found appeared;
    Found vanished;
    /// The first thing heard of it after the last command to play.
    Found heard;

    /// Takes an event of this renderer.
    void add(qint64 index, const RecordedEvent &event);

private:
    void takeCommand(const Moment &moment, const RecordedEvent &event);
    void takeReport(const Moment &moment, const RecordedEvent &event);
    void takeProperty(const Moment &moment, const RecordedEvent &event);
    void takePosition(const Moment &moment, double position);
};
