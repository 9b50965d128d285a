// SPDX-License-Identifier: MIT
#pragma once

#include "HeardSound.h"
#include "KelvoError.h"
#include "KelvoRenderer.h"
#include "SeenPicture.h"

#include <QHash>
#include <QString>
#include <QVariantList>

#include <deque>
#include <optional>

/// Something that happened during a run.
struct Event
{
    enum Kind { Command, Report, Request, Appears, Vanishes, Heard, Seen };

    double seconds = 0; ///< since the run began
    Kind kind = Report;
    int renderer = 0; ///< which of the scenario's; of Request: none
    QString name; ///< of the operation or signal; of Request: of the medium
    QVariantList arguments;

    QString text() const;
};

/// What a renderer has told of itself so far.
struct Observation
{
    bool there = true;
    KelvoRenderer::State state = KelvoRenderer::Stopped;
    QString item; ///< name of the medium, or address
    int index = -1;
    std::optional<double> position; ///< seconds, answered last
    double resolution = 0; ///< of the position: it is that, or up to so much more
    QHash<QString, QVariant> properties;
    QHash<QString, QVariantList> metadata; ///< of the item
    QList<int> errors; ///< codes that came since the last command, at most so many
    int completed = 0; ///< since the last command
    HeardSound heard; ///< not told by the renderer
    SeenPicture seen; ///< the same

    static constexpr int MostErrors = 100;

    /// A command was given: what comes from now on is its effect.
    void beginCommand();
    void take(const Event &event);
    /// For people: what there is to say of what a condition is about.
    QString text() const;
};

/// The events of a run: the latest ones, so that a renderer which floods fills no memory.
class EventLog
{
public:
    static constexpr size_t Capacity = 20'000;

    void add(const Event &event);
    /// Those from here on are what begin() and end() are about.
    void mark() { m_marked = 0; }
    /// As many as are still known.
    std::deque<Event>::const_iterator begin() const { return m_events.cend() - std::ptrdiff_t(m_marked); }
    std::deque<Event>::const_iterator end() const { return m_events.cend(); }
    /// The last ones in words, one a line.
    QStringList last(int count) const;

private:
    std::deque<Event> m_events;
    size_t m_marked = 0; ///< events since the mark
};
