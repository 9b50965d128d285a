// SPDX-License-Identifier: MIT
#include "CompareVerb.h"

#include "Output.h"
#include "RecordingOptions.h"
#include "RunComparison.h"
#include "VerbOptions.h"

namespace {
VerbOptions compareOptions()
{
    VerbOptions options(QStringLiteral("compare"), QStringLiteral("RECORDING RECORDING"),
        QStringLiteral("Names what is different between two recordings of one scenario: what came in another "
                       "order, later, "
                       "earlier,\nwith another value, or in one of them only."));
    options.add(QStringLiteral("tolerance"), QStringLiteral("time"),
        QStringLiteral("How much later or earlier is no difference; 250ms when not given."),
        QStringLiteral("250ms"));
    RecordingOptions::add(&options);
    options.addExample(QStringLiteral("kelvo-test compare yesterday.jsonl today.jsonl"),
        QStringLiteral("what has changed since yesterday"));
    return options;
}
} // namespace

QString CompareVerb::name() const
{
    return QStringLiteral("compare");
}

QString CompareVerb::summary() const
{
    return QStringLiteral("names what is different between two recordings");
}

QString CompareVerb::help() const
{
    return compareOptions().help();
}

int CompareVerb::run(const QStringList &arguments)
{
    VerbOptions options = compareOptions();
    const auto tolerated
        = options.parse(arguments) ? options.time(QStringLiteral("tolerance")) : std::nullopt;
    if (!tolerated || options.positional().size() != 2) {
        Output::complain(
            options.problem().isEmpty() ? QStringLiteral("compare takes two recordings") : options.problem());
        return CouldNotRun;
    }
    const std::optional<RecordedRun> first = RecordingOptions::open(&options, options.positional().at(0));
    const std::optional<RecordedRun> second
        = first ? RecordingOptions::open(&options, options.positional().at(1)) : std::nullopt;
    if (!second)
        return CouldNotRun;
    const ComparedRun firstRun(*first);
    const ComparedRun secondRun(*second);
    RunComparison::Tolerance tolerance;
    tolerance.time = double(tolerated->count()) / 1000;
    const RunComparison comparison(firstRun, secondRun, tolerance);
    Output output;
    for (const RunComparison::Difference &difference : comparison.differences())
        output.line(difference.sentence);
    if (comparison.count() > comparison.differences().size())
        output.line(QStringLiteral("and %1 more").arg(comparison.count() - comparison.differences().size()));
    if (firstRun.isCut() || secondRun.isCut())
        output.line(
            QStringLiteral("What comes after %1 events was not compared.").arg(ComparedRun::MostEvents));
    if (comparison.count() == 0)
        output.line(QStringLiteral("No difference."), Output::Tone::Good);
    return comparison.count() == 0 ? Held : Failed;
}
