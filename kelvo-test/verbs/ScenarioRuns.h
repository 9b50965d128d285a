// SPDX-License-Identifier: MIT
#pragma once

#include "Output.h"
#include "RunPlan.h"
#include "TestResult.h"

class Ear;
class Eye;
class MediaServer;
class MediaShelf;
class Session;

/// Carries out a plan, one run after the other, and says what comes of it. GUI thread.
class ScenarioRuns
{
public:
    /// @param session, server  not owned; outlive this
    /// @param seed  of the random numbers in scenarios; each repetition has the following one
    ScenarioRuns(Session &session, MediaServer &server, quint32 seed);

    /// What that hears counts as what the renderers play, and is recorded. Not owned; outlives this.
    void listen(const Ear *ear) { m_ear = ear; }
    /// What that sees counts as what the renderers show. The first of each run is given the window that was made for it, if
    /// one was. Not owned; outlives this.
    void lookBy(const Eye *eye) { m_eye = eye; }
    /// Returns when all has run, or at once when the tester interrupts.
    void run(const QList<PlannedRun> &plan);
    /// Of the runs that have been begun.
    const QList<TestResult> &results() const { return m_results; }
    /// Says how many had which outcome.
    void summarise();

private:
    TestResult runOne(const PlannedRun &planned);
    QList<KelvoRenderer *> waitForRenderers(const QStringList &uuids);
    TestResult waitFor(
        const Scenario &scenario, const QList<KelvoRenderer *> &renderers, MediaShelf &shelf, int repetition);
    void add(TestResult result, int repetition);

    Session &m_session;
    MediaServer &m_server;
    const quint32 m_seed;
    const Ear *m_ear = nullptr;
    const Eye *m_eye = nullptr;
    Output m_output;
    QString m_place; ///< of the present run among all
    QList<TestResult> m_results;
};
