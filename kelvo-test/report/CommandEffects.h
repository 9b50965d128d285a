// SPDX-License-Identifier: MIT
#pragma once

#include "RecordedEvent.h"
#include "TimeStatistics.h"

#include <QMap>

#include <functional>
#include <optional>

/// How long it took until renderers did what they were told: the time from a command to the report of its effect.
///
/// - playUri(), playUriWithType(), play(), resume(): the state Playing; pause(): Paused; stop(): Stopped.
/// - next(), previous(), gotoIndex(): another item is told.
/// - setKelvoProperty(): the property is reported.
/// - setPosition() to a position: a position within a second of it is answered. The answer comes when it is asked for,
///   so this says how long it took at most.
///
/// Waiting ends without an effect when an error is reported, when another command takes its place, and at the end of
/// the run. A command that has nothing to do, like pause() while Paused, is not waited for.
class CommandEffects
{
public:
    struct Effect
    {
        QString uuid;
        QString command;
        /// What was waited for: "stateChanged(Playing)".
        QString effect;
        double commandTime = 0;
        qint64 commandEvent = 0;
        /// Nothing where the effect did not come.
        std::optional<double> effectTime;
    };

    /// All commands of one name to one renderer.
    struct Row
    {
        QString uuid;
        QString command;
        QString effect;
        /// Seconds.
        TimeStatistics times;
        /// How many had no effect.
        qint64 without = 0;
        /// The event of the command that took longest; -1 when none had an effect.
        qint64 slowest = -1;
    };

    using Listener = std::function<void(const Effect &)>;

    /// Hears of each command once what came of it is known.
    void setListener(Listener listener) { m_listener = std::move(listener); }

    void add(qint64 index, const RecordedEvent &event);
    /// Ends all waiting.
    void finish();

    /// By renderer, in the order of their first commands, and by command.
    QList<Row> rows() const;

private:
    enum class Awaited { State, Item, Property, Position };
    struct Waiting
    {
        Awaited awaited = Awaited::State;
        Effect effect;
        QString name;
        double position = 0;
    };
    struct Renderer
    {
        QString uuid;
        QString state;
        QList<Waiting> waiting;
    };
    struct Found
    {
        QString effect;
        QList<double> times;
        double longest = 0;
        qint64 without = 0;
        qint64 slowest = -1;
    };

    Renderer *rendererOf(const QString &uuid);
    void takeCommand(Renderer *renderer, qint64 index, const RecordedEvent &event);
    void takeReport(Renderer *renderer, const RecordedEvent &event);
    void endAll(Renderer *renderer, Awaited awaited, std::optional<double> time);
    void end(const Waiting &waiting, std::optional<double> time);

    Listener m_listener;
    QList<Renderer> m_renderers;
    QMap<QPair<qsizetype, QString>, Found> m_found;
};
