// SPDX-License-Identifier: MIT
#include "RunVerb.h"

#include "JUnitReport.h"
#include "KelvoRenderer.h"
#include "MediaServer.h"
#include "MediaShelf.h"
#include "Output.h"
#include "RunPlan.h"
#include "ScenarioFile.h"
#include "ScenarioRun.h"
#include "Session.h"
#include "VerbOptions.h"

#include <QDateTime>
#include <QEventLoop>
#include <QFile>
#include <QRandomGenerator>
#include <QTimer>

#include <algorithm>
#include <limits>

namespace {
constexpr int progressInterval = 200; // milliseconds
/// For a renderer that a run has made go.
constexpr std::chrono::milliseconds comingBackTime = std::chrono::seconds(5);
constexpr int mostRepetitions = 100'000;

VerbOptions runOptions()
{
    VerbOptions options(QStringLiteral("run"), QStringLiteral("SCENARIO..."),
        QStringLiteral("Runs scenarios (files, or folders with *.yaml) on renderers, and tells which held. "
                       "What they play is\n"
                       "made and served by the program itself. docs/scenarios.md tells how to write one."));
    options.add(QStringLiteral("on"), QStringLiteral("renderer"),
        QStringLiteral("A name, a uuid, a glob, or \"all\"; may be repeated. Each scenario runs on each."));
    options.add(QStringLiteral("wait"), QStringLiteral("time"),
        QStringLiteral("How long to wait for the renderers; 5s when not given."), QStringLiteral("5s"));
    options.add(QStringLiteral("junit"), QStringLiteral("file"),
        QStringLiteral("Writes the results as JUnit XML, which CI systems read."));
    options.add(QStringLiteral("repeat"), QStringLiteral("times"),
        QStringLiteral("Runs everything so many times."), QStringLiteral("1"));
    options.add(QStringLiteral("seed"), QStringLiteral("number"),
        QStringLiteral("Of the random numbers in scenarios: the same seed gives the same ones."));
    options.add(QStringLiteral("shard"), QStringLiteral("i/n"),
        QStringLiteral("Runs the i-th of n parts, for machines that share the work."), QStringLiteral("1/1"));
    options.add(QStringLiteral("serve-at"), QStringLiteral("address"),
        QStringLiteral("Address of this machine that the renderers reach; 127.0.0.1 when not given."),
        QStringLiteral("127.0.0.1"));
    options.addExample(
        QStringLiteral("kelvo-test run pause-at.yaml --on KelvoGstRenderer --junit result.xml"),
        QStringLiteral("does this renderer pause at three seconds?"));
    options.addExample(
        QStringLiteral("KELVO_PLUGINS=upnp kelvo-test run scenarios --on all --serve-at 192.168.1.5"),
        QStringLiteral("all scenarios of a folder on all renderers of the network"));
    return options;
}

/// The words of one call, understood.
struct Wishes
{
    QList<Scenario> scenarios;
    std::chrono::milliseconds wait{0};
    int repetitions = 1;
    quint32 seed = 0;
    Shard shard;
    QHostAddress address;
};

bool readScenarios(const QStringList &paths, QList<Scenario> *scenarios, QStringList *problems)
{
    QStringList files;
    QString error;
    if (!RunPlan::collectFiles(paths, &files, &error)) {
        problems->append(error);
        return false;
    }
    for (const QString &file : files) {
        if (auto scenario = ScenarioFile::read(file, &error))
            scenarios->append(*std::move(scenario));
        else
            problems->append(error);
    }
    return problems->isEmpty();
}

std::optional<Wishes> wishesOf(VerbOptions &options, QStringList *problems)
{
    Wishes wishes;
    const auto wait = options.time(QStringLiteral("wait"));
    const auto repetitions = options.number(QStringLiteral("repeat"), 1, mostRepetitions);
    const auto seed = options.isSet(QStringLiteral("seed"))
        ? options.number(QStringLiteral("seed"), 0, std::numeric_limits<int>::max())
        : std::optional<int>(QRandomGenerator::global()->bounded(std::numeric_limits<int>::max()));
    const auto shard = Shard::read(options.value(QStringLiteral("shard")));
    wishes.address = QHostAddress(options.value(QStringLiteral("serve-at")));
    if (!wait || !repetitions || !seed)
        problems->append(options.problem());
    else if (!shard)
        problems->append(QStringLiteral("--shard takes a part such as 2/8, not \"%1\"")
                             .arg(options.value(QStringLiteral("shard"))));
    else if (wishes.address.isNull())
        problems->append(QStringLiteral("--serve-at takes an IP address, not \"%1\"")
                             .arg(options.value(QStringLiteral("serve-at"))));
    else if (options.positional().isEmpty())
        problems->append(QStringLiteral("run needs a scenario: a file, or a folder with *.yaml"));
    else if (!options.isSet(QStringLiteral("on")))
        problems->append(QStringLiteral("run needs a renderer: --on NAME (\"kelvo-test list\" shows them)"));
    if (!problems->isEmpty() || !readScenarios(options.positional(), &wishes.scenarios, problems))
        return std::nullopt;
    wishes.wait = *wait;
    wishes.repetitions = *repetitions;
    wishes.seed = quint32(*seed);
    wishes.shard = *shard;
    return wishes;
}

/// Carries out a plan, one run after the other, and says what comes of it.
class Runs
{
public:
    Runs(Session &session, MediaServer &server, quint32 seed)
        : m_session(session)
        , m_server(server)
        , m_seed(seed)
    {
    }

    void run(const QList<PlannedRun> &plan)
    {
        for (qsizetype i = 0; i < plan.size() && !m_session.isInterrupted(); ++i) {
            m_place = QStringLiteral("[%1/%2] ").arg(i + 1).arg(plan.size());
            add(runOne(plan.at(i)), plan.at(i).repetition);
        }
    }
    const QList<TestResult> &results() const { return m_results; }

    void summarise()
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

private:
    static TestResult hindrance(
        const PlannedRun &planned, TestResult::Outcome outcome, const QString &message)
    {
        TestResult result;
        result.outcome = outcome;
        result.group = planned.renderers.join(QStringLiteral(", "));
        result.name = planned.scenario->title;
        result.file = planned.scenario->file;
        result.message = message;
        return result;
    }

    TestResult runOne(const PlannedRun &planned)
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
        return waitFor(scenario, renderers, shelf, planned.repetition);
    }

    /// Null for those that have gone and do not come back.
    QList<KelvoRenderer *> waitForRenderers(const QStringList &uuids)
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

    TestResult waitFor(
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
        if (m_output.isTerminal())
            shown.start(progressInterval);
        run.start();
        loop.exec();
        return run.result();
    }

    void add(TestResult result, int repetition)
    {
        if (repetition > 1)
            result.name += QStringLiteral(" (%1)").arg(repetition);
        static constexpr const char *words[] = {"held", "FAILED", "skipped", "could not run"};
        static constexpr Output::Tone tones[]
            = {Output::Tone::Good, Output::Tone::Bad, Output::Tone::Faint, Output::Tone::Bad};
        m_output.line(QStringLiteral("%1%2: %3 on %4 (%5 s)")
                          .arg(m_place, QLatin1String(words[result.outcome]), result.name, result.group)
                          .arg(result.seconds, 0, 'f', 1),
            tones[result.outcome]);
        if (!result.message.isEmpty())
            m_output.line(QStringLiteral("  ") + result.message);
        if (!result.details.isEmpty())
            m_output.line(
                QStringLiteral("  ") + QString(result.details).replace(u'\n', QStringLiteral("\n  ")));
        m_results.append(result);
    }

    Session &m_session;
    MediaServer &m_server;
    const quint32 m_seed;
    Output m_output;
    QString m_place;
    QList<TestResult> m_results;
};

int complainOf(const QStringList &problems)
{
    for (const QString &problem : problems)
        Output::complain(problem);
    return Verb::CouldNotRun;
}

bool writeJUnit(const QString &path, const QDateTime &began, const QList<TestResult> &results)
{
    QFile file(path);
    const bool written = file.open(QIODevice::WriteOnly)
        && JUnitReport::write(file, QStringLiteral("kelvo-test run"), began, results) && file.flush();
    if (!written)
        Output::complain(QStringLiteral("%1 cannot be written: %2").arg(path, file.errorString()));
    return written;
}
} // namespace

QString RunVerb::name() const
{
    return QStringLiteral("run");
}

QString RunVerb::summary() const
{
    return QStringLiteral("runs scenarios on renderers and tells which held");
}

QString RunVerb::help() const
{
    return runOptions().help();
}

int RunVerb::run(const QStringList &arguments)
{
    VerbOptions options = runOptions();
    if (!options.parse(arguments))
        return complainOf({options.problem()});
    QStringList problems;
    const std::optional<Wishes> wishes = wishesOf(options, &problems);
    if (!wishes)
        return complainOf(problems);
    QString error;
    MediaServer server;
    if (!server.listen(wishes->address, &error))
        return complainOf({error});
    Session session;
    const RendererChoice choice = session.choose(options.values(QStringLiteral("on")), wishes->wait);
    if (!choice.problem.isEmpty())
        return complainOf({choice.problem});
    const QDateTime began = QDateTime::currentDateTimeUtc();
    Runs runs(session, server, wishes->seed);
    runs.run(RunPlan::make(wishes->scenarios, choice.renderers, wishes->repetitions, wishes->shard));
    runs.summarise();
    const QString junit = options.value(QStringLiteral("junit"));
    if (!junit.isEmpty() && !writeJUnit(junit, began, runs.results()))
        return CouldNotRun;
    const int code = RunPlan::exitCodeOf(runs.results());
    return session.isInterrupted() && code == Held ? int(CouldNotRun) : code;
}
