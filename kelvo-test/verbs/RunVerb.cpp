// SPDX-License-Identifier: MIT
#include "RunVerb.h"

#include "HtmlReport.h"
#include "JUnitReport.h"
#include "ListeningPost.h"
#include "LookingPost.h"
#include "MediaServer.h"
#include "Output.h"
#include "Recorder.h"
#include "ResultFile.h"
#include "RunPlan.h"
#include "ScenarioFile.h"
#include "ScenarioRuns.h"
#include "Session.h"
#include "VerbOptions.h"

#include <QDateTime>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <limits>

namespace {
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
    options.add(QStringLiteral("html"), QStringLiteral("file"),
        QStringLiteral("Writes a page: the results, a time line, and all that was told and reported."));
    options.add(QStringLiteral("record"), QStringLiteral("file"),
        QStringLiteral("Records it all; the file of KELVO_RECORD when not given."));
    options.add(QStringLiteral("repeat"), QStringLiteral("times"),
        QStringLiteral("Runs everything so many times."), QStringLiteral("1"));
    options.add(QStringLiteral("seed"), QStringLiteral("number"),
        QStringLiteral("Of the random numbers in scenarios: the same seed gives the same ones."));
    options.add(QStringLiteral("shard"), QStringLiteral("i/n"),
        QStringLiteral("Runs the i-th of n parts, for machines that share the work."), QStringLiteral("1/1"));
    options.add(QStringLiteral("serve-at"), QStringLiteral("address"),
        QStringLiteral("Address of this machine that the renderers reach; 127.0.0.1 when not given."),
        QStringLiteral("127.0.0.1"));
    options.add(QStringLiteral("ear"), QStringLiteral("device"),
        QStringLiteral(
            "Listens there, for what scenarios expect to be heard: a source of the sound server,\n"
            "such as NAME.monitor for what is played to the sink NAME. \"auto\" makes a sink of its\n"
            "own and moves to it what begins to play."));
    options.add(QStringLiteral("eye"), QStringLiteral("place"),
        QStringLiteral(
            "Looks there, for what scenarios expect to be seen: an X window by its number, a part of the\n"
            "screen as x,y,width,height, or \"auto\", which makes a window and has the renderer draw "
            "there."));
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
    QString ear; ///< device; empty: nobody listens
    QString eye; ///< place; empty: nobody looks
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
    wishes.ear = options.value(QStringLiteral("ear"));
    wishes.eye = options.value(QStringLiteral("eye"));
    return wishes;
}

int complainOf(const QStringList &problems)
{
    for (const QString &problem : problems)
        Output::complain(problem);
    return Verb::CouldNotRun;
}

/// What came of one call.
struct Outcome
{
    QList<TestResult> results;
    bool isInterrupted = false;
    QString problem; ///< why nothing could be run; empty: it could
};

/// The session, and with it the recording, has ended when this returns.
Outcome runAll(const Wishes &wishes, const QStringList &patterns, const QString &recording)
{
    QString problem;
    MediaServer server;
    if (!server.listen(wishes.address, &problem))
        return {{}, false, problem};
    ListeningPost post;
    const bool listens = !wishes.ear.isEmpty();
    if (listens && !post.prepare(wishes.ear, &problem))
        return {{}, false, problem};
    // Ends after the back ends, which draw into its window.
    LookingPost lookout;
    Session session(recording);
    const RendererChoice choice = session.choose(patterns, wishes.wait);
    if (!choice.problem.isEmpty())
        return {{}, false, choice.problem};
    if (listens && !post.listen(session, &problem))
        return {{}, false, problem};
    if (!wishes.eye.isEmpty() && !lookout.look(wishes.eye, session, &problem))
        return {{}, false, problem};
    ScenarioRuns runs(session, server, wishes.seed);
    if (listens)
        runs.listen(&post.ear());
    if (!wishes.eye.isEmpty())
        runs.lookBy(&lookout.eye());
    runs.run(RunPlan::make(wishes.scenarios, choice.renderers, wishes.repetitions, wishes.shard));
    runs.summarise();
    return {runs.results(), session.isInterrupted(), {}};
}

bool canBeWritten(const QString &path)
{
    QFile file(path);
    const bool isOpen = file.open(QIODevice::Append);
    if (!isOpen)
        Output::complain(QStringLiteral("%1 cannot be written: %2").arg(path, file.errorString()));
    return isOpen;
}

bool writeJUnit(const QString &path, const QDateTime &began, const QList<TestResult> &results)
{
    return ResultFile::save(path, [&](QIODevice *device) {
        return JUnitReport::write(*device, QStringLiteral("kelvo-test run"), began, results);
    });
}

bool writePage(const QString &path, const QString &recording, const QList<TestResult> &results)
{
    RecordedRun run;
    QString error;
    if (!run.open(recording, &error)) {
        Output::complain(error);
        return false;
    }
    return ResultFile::save(path, [&](QIODevice *device) { return HtmlReport(run, results).write(device); });
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
    const QString junit = options.value(QStringLiteral("junit"));
    const QString page = options.value(QStringLiteral("html"));
    QString recording = options.value(QStringLiteral("record"));
    if (!recording.isEmpty() && !canBeWritten(recording))
        return CouldNotRun;
    // A page needs a recording, wanted or not.
    const QTemporaryDir passing;
    if (recording.isEmpty())
        recording = Recorder::fileOfEnvironment();
    if (recording.isEmpty() && !page.isEmpty())
        recording = passing.filePath(QStringLiteral("run.jsonl"));
    const QDateTime began = QDateTime::currentDateTimeUtc();
    const Outcome outcome = runAll(*wishes, options.values(QStringLiteral("on")), recording);
    if (!outcome.problem.isEmpty())
        return complainOf({outcome.problem});
    const bool isWritten = (junit.isEmpty() || writeJUnit(junit, began, outcome.results))
        && (page.isEmpty() || writePage(page, recording, outcome.results));
    const int code = RunPlan::exitCodeOf(outcome.results);
    if (!isWritten)
        return CouldNotRun;
    return outcome.isInterrupted && code == Held ? int(CouldNotRun) : code;
}
