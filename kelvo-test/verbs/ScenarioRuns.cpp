// SPDX-License-Identifier: MIT
#include "ScenarioRuns.h"

#include "Ear.h"
#include "Eye.h"
#include "KelvoRenderer.h"
#include "LookingPost.h"
#include "MediaServer.h"
#include "MediaShelf.h"
#include "ScenarioRun.h"
#include "Session.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>

namespace {
constexpr int progressInterval = 200; // milliseconds
/// For a renderer that a run has made go.
constexpr std::chrono::milliseconds comingBackTime = std::chrono::seconds(5);

TestResult hindrance(const PlannedRun &planned, TestResult::Outcome outcome, const QString &message)
{
    TestResult result;
    result.outcome = outcome;
    result.group = planned.renderers.join(QStringLiteral(", "));
    result.name = planned.scenario->title;
    result.file = planned.scenario->file;
    result.message = message;
    return result;
}

Output::Tone toneOf(TestResult::Outcome outcome)
{
    switch (outcome) {
    case TestResult::Held:
        return Output::Tone::Good;
    case TestResult::Skipped:
        return Output::Tone::Faint;
    case TestResult::Failed:
    case TestResult::CouldNotRun:
        break;
    }
    return Output::Tone::Bad;
}
} // namespace

ScenarioRuns::ScenarioRuns(Session &session, MediaServer &server, quint32 seed)
    : m_session(session)
    , m_server(server)
    , m_seed(seed)
{
}

void ScenarioRuns::run(const QList<PlannedRun> &plan)
{
    for (qsizetype i = 0; i < plan.size() && !m_session.isInterrupted(); ++i) {
        m_place = QStringLiteral("[%1/%2] ").arg(i + 1).arg(plan.size());
        add(runOne(plan.at(i)), plan.at(i).repetition);
    }
}

void ScenarioRuns::summarise()
{
    const auto count = [this](TestResult::Outcome outcome) {
        return std::count_if(m_results.cbegin(), m_results.cend(),
            [outcome](const TestResult &result) { return result.outcome == outcome; });
    };
    m_output.line(QStringLiteral("%1 held, %2 failed, %3 skipped, %4 could not run; seed %5")
                      .arg(count(TestResult::Held))
                      .arg(count(TestResult::Failed))
                      .arg(count(TestResult::Skipped))
                      .arg(count(TestResult::CouldNotRun))
                      .arg(m_seed));
}

TestResult ScenarioRuns::runOne(const PlannedRun &planned)
{
    const Scenario &scenario = *planned.scenario;
    if (planned.renderers.size() < scenario.renderers.size())
        return hindrance(planned, TestResult::Skipped,
            QStringLiteral("needs %1 renderers, given are %2")
                .arg(scenario.renderers.size())
                .arg(planned.renderers.size()));
    const QList<KelvoRenderer *> renderers = waitForRenderers(planned.renderers);
    if (renderers.contains(nullptr))
        return hindrance(planned, TestResult::CouldNotRun, QStringLiteral("the renderer is gone"));
    MediaShelf shelf(&m_server);
    QString error;
    if (!shelf.put(scenario.media, &error))
        return hindrance(planned, TestResult::CouldNotRun, error);
    if (m_eye)
        LookingPost::lendWindow(*m_eye, renderers.constFirst());
    TestResult result = waitFor(scenario, renderers, shelf, planned.repetition);
    // It may have gone.
    if (m_eye)
        LookingPost::takeWindowBack(
            *m_eye, m_session.registry()->findRendererByUuid(planned.renderers.constFirst()));
    return result;
}

/// Null for those that have gone and do not come back.
QList<KelvoRenderer *> ScenarioRuns::waitForRenderers(const QStringList &uuids)
{
    QList<KelvoRenderer *> renderers;
    m_session.waitUntil(
        [&] {
            renderers.clear();
            for (const QString &uuid : uuids)
                renderers.append(m_session.registry()->findRendererByUuid(uuid));
            return !renderers.contains(nullptr);
        },
        comingBackTime);
    return renderers;
}

TestResult ScenarioRuns::waitFor(
    const Scenario &scenario, const QList<KelvoRenderer *> &renderers, MediaShelf &shelf, int repetition)
{
    ScenarioRun run(&scenario, m_session.registry(), renderers, &shelf, m_seed + quint32(repetition) - 1);
    QEventLoop loop;
    QTimer shown;
    QObject::connect(&run, &ScenarioRun::finished, &loop, &QEventLoop::quit);
    QObject::connect(&m_session, &Session::interrupted, &run, &ScenarioRun::interrupt);
    QObject::connect(&m_server, &MediaServer::requested, &run, &ScenarioRun::noteRequest);
    QObject::connect(&shown, &QTimer::timeout, &loop, [this, &run, &scenario] {
        m_output.progress(m_place + scenario.title + QStringLiteral(": ") + run.progress());
    });
    if (m_ear) {
        run.listen(m_ear);
        QObject::connect(
            m_ear, &Ear::heard, &run, [this, uuid = renderers.constFirst()->uuid()](const Hearing &hearing) {
                m_session.noteHeard(uuid, hearing);
            });
    }
    if (m_eye) {
        run.lookBy(m_eye);
        QObject::connect(
            m_eye, &Eye::seen, &run, [this, uuid = renderers.constFirst()->uuid()](const Sighting &sighting) {
                m_session.noteSeen(uuid, sighting);
            });
    }
    if (m_output.isTerminal())
        shown.start(progressInterval);
    run.start();
    loop.exec();
    return run.result();
}

void ScenarioRuns::add(TestResult result, int repetition)
{
    if (repetition > 1)
        result.name += QStringLiteral(" (%1)").arg(repetition);
    const QString word = result.outcomeText();
    m_output.line(QStringLiteral("%1%2: %3 on %4 (%5 s)")
                      .arg(m_place, result.outcome == TestResult::Failed ? word.toUpper() : word, result.name,
                          result.group)
                      .arg(result.seconds, 0, 'f', 1),
        toneOf(result.outcome));
    if (!result.message.isEmpty())
        m_output.line(QStringLiteral("  ") + result.message);
    if (!result.details.isEmpty())
        m_output.line(QStringLiteral("  ") + result.details.trimmed().replace(u'\n', QStringLiteral("\n  ")));
    m_results.append(result);
}
