// SPDX-License-Identifier: MIT
#pragma once

#include "Lane.h"
#include "RecordedEvent.h"

#include <QJsonArray>
#include <QMap>

/// What each renderer was told and what it told, as rows over one time axis. Bounded: see Lane.
class Timeline
{
public:
    /// More renderers than this have no lanes of their own.
    static constexpr qsizetype MostRenderers = 32;
    /// More errors than this are counted, but not kept.
    static constexpr qsizetype MostErrors = 1000;

    struct ErrorReport
    {
        double time = 0;
        qint64 event = 0;
        int code = 0;
        QString message;
    };

    struct Renderer
    {
        QString uuid;
        QString name;
        Lane commands;
        /// From each state to the next; the text is the state.
        Lane states;
        /// While a buffer is filling: how full it was, 0 to 1.
        Lane buffering;
        /// Seconds, as answered.
        Lane position;
        /// From each beginning of sound to its end, by what is heard: which item, and how far the position that was
        /// answered last is from the one that is heard.
        Lane heard;
        /// The same of pictures that are seen.
        Lane seen;
        Lane errors;
        /// What later programs record: events of a kind that is not known here.
        Lane others;
        bool isBuffering = false;
        bool isHeard = false; ///< there is a sound
        bool isSeen = false; ///< there is a picture
        /// The position that was answered last, and when.
        std::optional<QPair<double, double>> answered;
        /// The state that goes on, and since when; empty before the first.
        QString state;
        double stateSince = 0;
        /// The first of them.
        QList<ErrorReport> errorReports;
        qint64 errorCount = 0;
        /// Seconds in each state, and how often it was entered.
        QMap<QString, QPair<double, qint64>> stateTimes;
    };

    void add(qint64 index, const RecordedEvent &event);
    /// Ends what still goes on.
    void finish();

    /// In the order in which they were first heard of.
    const QList<Renderer> &renderers() const { return m_renderers; }
    /// Events of renderers that have no lanes.
    qint64 eventsLeftOut() const { return m_leftOut; }
    /// The times of the first and the last event.
    double begin() const { return m_begin; }
    double end() const { return m_end; }
    /// What the recorder itself had to say: "lost", "ended", "crashed".
    const QList<RecordedEvent> &notes() const { return m_notes; }

private:
    Renderer *rendererOf(const RecordedEvent &event);
    void takeReport(Renderer *renderer, qint64 index, const RecordedEvent &event);
    void takeState(Renderer *renderer, qint64 index, const RecordedEvent &event);
    void takeBuffering(Renderer *renderer, qint64 index, const RecordedEvent &event);
    void takeError(Renderer *renderer, qint64 index, const RecordedEvent &event);
    static void takePosition(Renderer *renderer, qint64 index, const RecordedEvent &event, double position);
    static void takeSensed(Renderer *renderer, qint64 index, const RecordedEvent &event);
    static void endState(Renderer *renderer, double time);

    QList<Renderer> m_renderers;
    QList<RecordedEvent> m_notes;
    qint64 m_leftOut = 0;
    double m_begin = 0;
    double m_end = 0;
    bool m_hasBegun = false;
};
