// SPDX-License-Identifier: MIT
#pragma once

#include "Event.h"
#include "ExpectCheck.h"
#include "Scenario.h"
#include "TestResult.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

class Ear;
class Eye;
class KelvoRegistry;
class MediaServer;
class MediaShelf;
class PropertyKeeper;
class RendererWatch;
class ScenarioStage;

/// One run of a scenario, on as many renderers as it names. It is bounded by what its steps wait for, whatever the
/// renderers do; afterwards they are stopped and have the properties that they had before. GUI thread.
class ScenarioRun : public QObject
{
    Q_OBJECT
public:
    /// @param scenario  not owned; outlives this
    /// @param renderers  as many as the scenario names, at least; they may vanish
    /// @param shelf  with the scenario's media; not owned, outlives this
    ScenarioRun(const Scenario *scenario, KelvoRegistry *registry, const QList<KelvoRenderer *> &renderers,
        MediaShelf *shelf, quint32 seed, QObject *parent = nullptr);
    ~ScenarioRun() override;

    /// What that hears counts as what the renderers play. Before the start; not owned, outlives this.
    void listen(const Ear *ear);
    /// What that sees counts as what the renderers show. Not owned; outlives this.
    void lookBy(const Eye *eye);
    void start();
    /// Ends it at once: finished() comes with what there is.
    void interrupt();
    /// Somebody has asked the server for a medium.
    void noteRequest(const QString &path, int status, qint64 from);

    const TestResult &result() const { return m_result; }
    /// What it does now, for people.
    QString progress() const;

Q_SIGNALS:
    /// Once, from the event loop; the renderers are at rest.
    void finished();

private:
    enum Phase { Asking, Stepping, Ending, Cleaning, Done };

    // Before and after the steps
    void begin();
    QString whyNot() const;
    void finish(TestResult::Outcome outcome, const QString &message, const QString &details = {});
    void clean();
    void lookForRest();

    // The steps
    void goOn(bool mayAct);
    bool beginStep(const Step &step);
    void give(const Step &step, const CommandStep &command);
    bool beginExpectation(const Step &step, const ExpectStep &expected);
    bool beginNever(const Step &step, const NeverStep &never);
    void waitForCheck();
    void endStep();
    void look();
    void handleTime();
    void handle(Event event);
    bool isForbidden(const Event &event);
    bool isRefused(const Event &event);
    void ask();
    void fail(const Step &step, const QString &wanted, const QString &came);
    void failCheck(const Observation &observed);
    void giveUpMeasuring(const QString &reason);
    void noteMeasured(const Observation &observed);

    double now() const { return double(m_time.nsecsElapsed()) / 1e9; }
    const Step &step() const { return m_scenario->steps.at(m_step); }

    const Scenario *const m_scenario;
    MediaShelf *const m_shelf;
    std::vector<std::unique_ptr<RendererWatch>> m_watches;
    std::vector<std::unique_ptr<PropertyKeeper>> m_keepers;
    std::unique_ptr<ScenarioStage> m_stage;
    QElapsedTimer m_time;
    EventLog m_log;
    Phase m_phase = Asking;
    qsizetype m_step = 0;
    std::vector<const Step *> m_nevers; ///< the reports that must not come
    std::optional<ExpectCheck> m_check; ///< of the step that is being waited for
    std::optional<ExpectStep> m_until; ///< what a "never" waits for
    QTimer m_deadline;
    QTimer m_asking; ///< for the position, and for what is heard and seen by now
    TestResult m_result;
};
