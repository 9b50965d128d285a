// SPDX-License-Identifier: MIT
#pragma once

#include "Scenario.h"

#include <optional>

class EventLog;
struct Event;
struct Observation;

/// Whether what a step expects has come. Times are seconds of the run.
class ExpectCheck
{
public:
    enum Outcome { Open, Held, Failed };

    /// @param step  not owned; outlives this
    ExpectCheck(const ExpectStep *step, double now);

    /// Counts what came between the last command and now.
    void takeEarlier(const EventLog &log);
    void take(const Event &event);
    /// @param observed  of the renderer that the step is about
    Outcome look(const Observation &observed, double now);

    /// When it will be over, whatever comes.
    double deadline() const;
    bool needsPosition() const;
    /// By ear or eye.
    bool isMeasured() const;
    /// Why it could not be measured, and so has not failed; empty: it could.
    QString unmeasured(const Observation &observed) const;
    /// What was measured of what is heard and seen, for people; empty: nothing was to be.
    QString measured(const Observation &observed) const;
    QStringList properties() const;
    /// For people.
    QString wanted() const;
    /// What came of it; empty: nothing to say but what was observed.
    QString came() const;

private:
    Outcome lookOnce(const Observation &observed, double now);
    Outcome lookCount(double now) const;

    const ExpectStep *const m_step;
    const double m_begin;
    std::optional<double> m_holdsSince;
    std::optional<double> m_brokeAt;
    qsizetype m_reached = 0; ///< reports of the order
    int m_count = 0;
};
