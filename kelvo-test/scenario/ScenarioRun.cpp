// SPDX-License-Identifier: MIT
#include "ScenarioRun.h"

#include "KelvoRegistry.h"
#include "KelvoRenderer.h"
#include "MediaShelf.h"
#include "PropertyKeeper.h"
#include "RendererWatch.h"
#include "ScenarioStage.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr int askingInterval = 50; // milliseconds
constexpr int measuringInterval = 10; // milliseconds
constexpr int restingTime = 2000; // milliseconds
constexpr int eventsShown = 10;
const auto realMedia = QStringLiteral("media");
/// A renderer that has this property plays nothing.
const auto markOfSimulators = QStringLiteral("sim-latency");

/// What is asked for before: the properties that the steps change, and those that are needed.
QSet<QString> propertiesOf(const Scenario &scenario, int renderer)
{
    QSet<QString> names{markOfSimulators};
    for (const QString &need : scenario.needs) {
        if (need != realMedia && !Command::find(need))
            names.insert(need);
    }
    for (const Step &step : scenario.steps) {
        const auto *command = std::get_if<CommandStep>(&step.what);
        if (command && step.renderer == renderer
            && command->command->name == QLatin1String("setKelvoProperty")) {
            const QStringList set = command->arguments.keys();
            names.unite(QSet<QString>(set.cbegin(), set.cend()));
        }
    }
    return names;
}

/// Whether what a step expects is so.
bool expects(const Step &step, bool (Condition::*is)() const)
{
    const auto *expect = std::get_if<ExpectStep>(&step.what);
    const auto *never = std::get_if<NeverStep>(&step.what);
    const auto isSo = [is](const Condition &condition) {
        return (condition.*is)();
    };
    return (expect && std::any_of(expect->conditions.cbegin(), expect->conditions.cend(), isSo))
        || (never && never->until && isSo(*never->until));
}
} // namespace

ScenarioRun::ScenarioRun(const Scenario *scenario, KelvoRegistry *registry,
    const QList<KelvoRenderer *> &renderers, MediaShelf *shelf, quint32 seed, QObject *parent)
    : QObject(parent)
    , m_scenario(scenario)
    , m_shelf(shelf)
    , m_stage(std::make_unique<ScenarioStage>(*scenario, registry, shelf, seed))
{
    m_result.group = renderers.constFirst()->name().isEmpty() ? renderers.constFirst()->uuid()
                                                              : renderers.constFirst()->name();
    m_result.name = scenario->title;
    m_result.file = scenario->file;
    for (int i = 0; i < scenario->renderers.size(); ++i) {
        auto watch = std::make_unique<RendererWatch>(registry, renderers.at(i), i, shelf);
        connect(watch.get(), &RendererWatch::happened, this, &ScenarioRun::handle);
        connect(watch.get(), &RendererWatch::answered, this, &ScenarioRun::look);
        auto keeper = std::make_unique<PropertyKeeper>(watch.get(), propertiesOf(*scenario, i));
        connect(keeper.get(), &PropertyKeeper::known, this, &ScenarioRun::begin);
        m_watches.push_back(std::move(watch));
        m_keepers.push_back(std::move(keeper));
    }
    for (const Step &one : scenario->steps) {
        if (std::holds_alternative<NeverStep>(one.what))
            m_nevers.push_back(&one);
    }
    m_deadline.setSingleShot(true);
    m_deadline.setTimerType(Qt::PreciseTimer);
    connect(&m_deadline, &QTimer::timeout, this, &ScenarioRun::handleTime);
    connect(&m_asking, &QTimer::timeout, this, &ScenarioRun::ask);
}

ScenarioRun::~ScenarioRun() = default;

void ScenarioRun::listen(const Ear *ear)
{
    for (const auto &watch : m_watches)
        watch->listen(ear);
}

void ScenarioRun::lookBy(const Eye *eye)
{
    for (const auto &watch : m_watches)
        watch->lookBy(eye);
}

void ScenarioRun::start()
{
    m_time.start();
    for (const auto &keeper : m_keepers)
        keeper->ask();
}

void ScenarioRun::begin()
{
    const bool isKnown = std::all_of(
        m_keepers.cbegin(), m_keepers.cend(), [](const auto &keeper) { return keeper->isKnown(); });
    if (m_phase != Asking || !isKnown)
        return;
    m_phase = Stepping;
    const QString missing = whyNot();
    if (missing.isEmpty())
        goOn(true);
    else
        finish(TestResult::Skipped, missing);
}

/// Why the renderers are not for this scenario; empty: they are.
QString ScenarioRun::whyNot() const
{
    const auto anyExpects = [this](bool (Condition::*is)() const) {
        return std::any_of(m_scenario->steps.cbegin(), m_scenario->steps.cend(),
            [is](const Step &step) { return expects(step, is); });
    };
    if (!m_watches.front()->isHeard() && anyExpects(&Condition::needsEar))
        return QStringLiteral("needs an ear: --ear tells where to listen");
    if (!m_watches.front()->isSeen() && anyExpects(&Condition::needsEye))
        return QStringLiteral("needs an eye: --eye tells where to look");
    for (const auto &keeper : m_keepers) {
        for (const QString &need : m_scenario->needs) {
            if (need == realMedia && keeper->has(markOfSimulators))
                return QStringLiteral("needs a renderer that plays media, this one only pretends to");
            if (need != realMedia && !Command::find(need) && !keeper->has(need))
                return QStringLiteral("needs the property \"%1\", which the renderer does not have")
                    .arg(need);
        }
    }
    return {};
}

void ScenarioRun::interrupt()
{
    if (m_phase < Ending)
        finish(TestResult::CouldNotRun, QStringLiteral("interrupted"));
}

QString ScenarioRun::progress() const
{
    return m_phase == Stepping && m_step < m_scenario->steps.size()
        ? QStringLiteral("step %1 of %2: %3").arg(m_step + 1).arg(m_scenario->steps.size()).arg(step().text)
        : QString();
}

void ScenarioRun::finish(TestResult::Outcome outcome, const QString &message, const QString &details)
{
    m_phase = Ending;
    m_asking.stop();
    m_deadline.stop();
    m_result.outcome = outcome;
    m_result.message = message;
    m_result.details += details;
    m_result.seconds = now();
    // Not now: this may be a report of a renderer.
    QMetaObject::invokeMethod(this, &ScenarioRun::clean, Qt::QueuedConnection);
}

void ScenarioRun::clean()
{
    m_phase = Cleaning;
    for (size_t i = 0; i < m_watches.size(); ++i) {
        if (KelvoRenderer *renderer = m_watches.at(i)->renderer()) {
            renderer->stop();
            renderer->assignPlaylist(nullptr);
        }
        m_keepers.at(i)->restore();
    }
    m_deadline.start(restingTime);
    lookForRest();
}

void ScenarioRun::lookForRest()
{
    const bool isAtRest = std::all_of(m_watches.cbegin(), m_watches.cend(), [](const auto &watch) {
        return !watch->renderer() || watch->observed().state == KelvoRenderer::Stopped;
    });
    if (m_phase != Cleaning || (!isAtRest && m_deadline.isActive()))
        return;
    m_phase = Done;
    m_deadline.stop();
    Q_EMIT finished();
}

/// Goes through the steps up to one that has to be waited for.
/// @param mayAct  false within a report: a command could take its renderer away
void ScenarioRun::goOn(bool mayAct)
{
    while (m_phase == Stepping) {
        if (m_step == m_scenario->steps.size()) {
            finish(TestResult::Held, {});
            return;
        }
        const bool acts = std::holds_alternative<CommandStep>(step().what);
        if (acts && !mayAct) {
            QMetaObject::invokeMethod(
                this, [this] { goOn(true); }, Qt::QueuedConnection);
            return;
        }
        if (!beginStep(step()))
            return;
        ++m_step;
    }
}

/// @return whether it is done already
bool ScenarioRun::beginStep(const Step &step)
{
    m_result.line = step.place.line;
    if (const auto *command = std::get_if<CommandStep>(&step.what)) {
        give(step, *command);
        return m_phase == Stepping;
    }
    if (const auto *fault = std::get_if<FaultStep>(&step.what)) {
        m_shelf->setFault(fault->medium, fault->fault);
        return true;
    }
    if (const auto *wait = std::get_if<WaitStep>(&step.what)) {
        m_deadline.start(wait->time);
        return false;
    }
    if (const auto *never = std::get_if<NeverStep>(&step.what))
        return beginNever(step, *never);
    return beginExpectation(step, std::get<ExpectStep>(step.what));
}

void ScenarioRun::give(const Step &step, const CommandStep &command)
{
    RendererWatch &watch = *m_watches.at(size_t(step.renderer));
    if (command.command->isOfRenderer && !watch.renderer()) {
        fail(step, step.text, QStringLiteral("the renderer is gone"));
        return;
    }
    for (const auto &each : m_watches)
        each->beginCommand();
    m_log.mark();
    Event event;
    event.kind = Event::Command;
    event.renderer = step.renderer;
    event.name = command.command->name;
    event.seconds = now();
    event.arguments = m_stage->run(command, watch.renderer());
    m_log.add(event);
}

bool ScenarioRun::beginExpectation(const Step &step, const ExpectStep &expected)
{
    RendererWatch &watch = *m_watches.at(size_t(step.renderer));
    m_check.emplace(&expected, now());
    m_check->takeEarlier(m_log);
    for (const QString &name : m_check->properties())
        watch.askProperty(name);
    if (m_check->needsPosition() || m_check->isMeasured())
        m_asking.start(m_check->isMeasured() ? measuringInterval : askingInterval);
    if (m_check->needsPosition())
        watch.askPosition();
    // What was so already: otherwise look() goes on when something comes.
    const ExpectCheck::Outcome outcome = m_check->look(watch.observed(), now());
    if (outcome == ExpectCheck::Held) {
        noteMeasured(watch.observed());
        m_check.reset();
        m_asking.stop();
        return true;
    }
    if (outcome == ExpectCheck::Failed)
        look();
    else
        waitForCheck();
    return false;
}

void ScenarioRun::waitForCheck()
{
    m_deadline.start(std::max(0, int(std::ceil((m_check->deadline() - now()) * 1000))));
}

bool ScenarioRun::beginNever(const Step &step, const NeverStep &never)
{
    // Those of the whole run are looked at with each event.
    if (never.isOfWholeRun())
        return true;
    if (never.until) {
        m_until = ExpectStep{ExpectStep::Once, {*never.until}, never.within};
        return beginExpectation(step, *m_until);
    }
    m_deadline.start(never.lasting);
    return false;
}

void ScenarioRun::endStep()
{
    m_deadline.stop();
    m_asking.stop();
    m_check.reset();
    ++m_step;
}

/// Something may have changed.
void ScenarioRun::look()
{
    if (m_phase != Stepping || !m_check)
        return;
    const Observation &observed = m_watches.at(size_t(step().renderer))->observed();
    switch (m_check->look(observed, now())) {
    case ExpectCheck::Open:
        waitForCheck();
        break;
    case ExpectCheck::Held:
        noteMeasured(observed);
        endStep();
        goOn(false);
        break;
    case ExpectCheck::Failed:
        failCheck(observed);
        break;
    }
}

/// For what is told only to who asks.
void ScenarioRun::ask()
{
    RendererWatch &watch = *m_watches.at(size_t(step().renderer));
    if (m_check && m_check->needsPosition())
        watch.askPosition();
    if (m_check && m_check->isMeasured())
        watch.settleMeasured();
}

void ScenarioRun::noteMeasured(const Observation &observed)
{
    const QString measured = m_check->measured(observed);
    if (measured.isEmpty())
        return;
    m_result.details += QStringLiteral("line %1: %2\n").arg(step().place.line).arg(measured);
}

void ScenarioRun::failCheck(const Observation &observed)
{
    const QString unmeasured = m_check->unmeasured(observed);
    const QString came = m_check->came();
    if (unmeasured.isEmpty())
        fail(step(), m_check->wanted(),
            came.isEmpty() ? observed.text() : came + QStringLiteral("; ") + observed.text());
    else
        giveUpMeasuring(unmeasured);
}

/// What cannot be measured has not failed, and has not held.
void ScenarioRun::giveUpMeasuring(const QString &reason)
{
    m_result.line = step().place.line;
    finish(TestResult::CouldNotRun,
        QStringLiteral("%1:%2: %3 could not be measured: %4")
            .arg(step().place.file)
            .arg(step().place.line)
            .arg(m_check->wanted(), reason),
        QStringLiteral("The last events:\n") + m_log.last(eventsShown).join(u'\n'));
}

void ScenarioRun::handleTime()
{
    if (m_phase == Cleaning) {
        lookForRest();
    } else if (m_check) {
        look();
    } else if (m_phase == Stepping) {
        endStep();
        goOn(true);
    }
}

void ScenarioRun::noteRequest(const QString &path, int status, qint64 from)
{
    Event event;
    event.kind = Event::Request;
    event.name = m_shelf->nameOfPath(path);
    event.arguments = {status, from};
    handle(event);
}

void ScenarioRun::handle(Event event)
{
    event.seconds = now();
    m_log.add(event);
    if (m_phase == Cleaning)
        lookForRest();
    if (m_phase != Stepping || isRefused(event) || isForbidden(event))
        return;
    if (m_check)
        m_check->take(event);
    look();
}

/// A renderer that says that it cannot do what the scenario needs has not failed.
bool ScenarioRun::isRefused(const Event &event)
{
    const bool isRefusal = event.kind == Event::Report && event.name == QLatin1String("error")
        && event.arguments.value(0).toInt() == KelvoError::NotSupported;
    if (!isRefusal || !m_scenario->needs.contains(m_stage->lastCommand()))
        return false;
    finish(TestResult::Skipped,
        QStringLiteral("needs %1, which the renderer refuses: %2")
            .arg(m_stage->lastCommand(), event.arguments.value(1).toString()));
    return true;
}

bool ScenarioRun::isForbidden(const Event &event)
{
    for (const Step *one : m_nevers) {
        const auto &never = std::get<NeverStep>(one->what);
        if ((never.isOfWholeRun() || one == &step()) && never.condition.isToldBy(event)) {
            fail(*one, QStringLiteral("never ") + never.condition.text(),
                QStringLiteral("it came: ") + event.text().trimmed());
            return true;
        }
    }
    return false;
}

void ScenarioRun::fail(const Step &step, const QString &wanted, const QString &came)
{
    m_result.line = step.place.line;
    const QString message = QStringLiteral("%1:%2: expected %3; at %4 s: %5")
                                .arg(step.place.file)
                                .arg(step.place.line)
                                .arg(wanted)
                                .arg(now(), 0, 'f', 3)
                                .arg(came);
    finish(TestResult::Failed, message,
        QStringLiteral("The last events:\n") + m_log.last(eventsShown).join(u'\n'));
}
