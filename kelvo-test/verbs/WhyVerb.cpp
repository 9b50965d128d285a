// SPDX-License-Identifier: MIT
#include "WhyVerb.h"

#include "Output.h"
#include "RecordingOptions.h"
#include "SilenceReason.h"
#include "VerbOptions.h"

namespace {
VerbOptions whyOptions()
{
    VerbOptions options(QStringLiteral("why"), QStringLiteral("RECORDING"),
        QStringLiteral("Says in one sentence what keeps a renderer silent at the end of a recording, with "
                       "the events that "
                       "show it."));
    options.add(QStringLiteral("on"), QStringLiteral("renderer"),
        QStringLiteral("Its name or uuid; the one that was told to play last when not given."));
    RecordingOptions::add(&options);
    options.addExample(QStringLiteral("kelvo-test why run.jsonl --on KelvoGstRenderer"),
        QStringLiteral("why nothing is heard of that renderer"));
    return options;
}

/// The uuid of the renderer that a tester means by its uuid or name; what was written where none is meant.
QString uuidOf(const SilenceReason &reason, const QString &written)
{
    for (const SilenceReason::Name &name : reason.renderers()) {
        if (name.uuid == written)
            return name.uuid;
    }
    for (const SilenceReason::Name &name : reason.renderers()) {
        if (name.name.compare(written, Qt::CaseInsensitive) == 0)
            return name.uuid;
    }
    return written;
}
} // namespace

QString WhyVerb::name() const
{
    return QStringLiteral("why");
}

QString WhyVerb::summary() const
{
    return QStringLiteral("says why nothing is heard");
}

QString WhyVerb::help() const
{
    return whyOptions().help();
}

int WhyVerb::run(const QStringList &arguments)
{
    VerbOptions options = whyOptions();
    if (!options.parse(arguments) || options.positional().size() != 1) {
        Output::complain(
            options.problem().isEmpty() ? QStringLiteral("why takes one recording") : options.problem());
        return CouldNotRun;
    }
    const std::optional<RecordedRun> opened
        = RecordingOptions::open(&options, options.positional().constFirst());
    if (!opened)
        return CouldNotRun;
    SilenceReason reason;
    opened->forEach([&reason](qint64 index, const RecordedEvent &event) { reason.add(index, event); });
    const SilenceReason::Verdict verdict
        = reason.verdict(uuidOf(reason, options.value(QStringLiteral("on"))));
    if (verdict.cause == SilenceReason::Cause::NoRenderer) {
        Output::complain(verdict.sentence);
        return CouldNotRun;
    }
    Output output;
    const bool isFine = verdict.cause == SilenceReason::Cause::NotSilent;
    output.line(verdict.sentence, isFine ? Output::Tone::Good : Output::Tone::Bad);
    for (const PlaybackFacts::Moment &moment : verdict.evidence)
        output.line(
            QStringLiteral("%1  %2").arg(moment.time, 10, 'f', 3).arg(moment.text), Output::Tone::Faint);
    return isFine ? Held : Failed;
}
