// SPDX-License-Identifier: MIT
#include "WhyVerb.h"

#include "Output.h"
#include "RecordingOptions.h"
#include "RendererInquiry.h"
#include "ResultFile.h"
#include "Session.h"
#include "SilenceReason.h"
#include "VerbOptions.h"

#include <QTemporaryDir>

namespace {
VerbOptions whyOptions()
{
    VerbOptions options(QStringLiteral("why"), QStringLiteral("[RECORDING]"),
        QStringLiteral(
            "Says in one sentence what keeps a renderer silent, with the events that show it: at the end "
            "of a\nrecording or, without one, now."));
    options.add(QStringLiteral("on"), QStringLiteral("renderer"),
        QStringLiteral(
            "Its name or uuid; of a recording, the one that was told to play last when not given."));
    options.add(QStringLiteral("wait"), QStringLiteral("time"),
        QStringLiteral("How long to wait for a renderer that is to be looked at now; 5s when not given."),
        QStringLiteral("5s"));
    options.add(QStringLiteral("for"), QStringLiteral("time"),
        QStringLiteral("How long to look at it; 4s when not given."), QStringLiteral("4s"));
    RecordingOptions::add(&options);
    options.addExample(QStringLiteral("kelvo-test why run.jsonl --on KelvoGstRenderer"),
        QStringLiteral("why nothing was heard of that renderer"));
    options.addExample(QStringLiteral("kelvo-test why --on \"mpris:*\""),
        QStringLiteral("why nothing is heard of the player of the desktop"));
    return options;
}

/// The uuid of the renderer that a tester means by its uuid or name; what was written where none is meant.
QString uuidOf(const SilenceReason &reason, const QString &written)
{
    // Some renderers have no name: nobody means them by writing none.
    if (written.isEmpty())
        return written;
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
/// What is to be said of a recorded run, whose renderer is named so.
int tell(const RecordedRun &run, const QString &renderer)
{
    SilenceReason reason;
    run.forEach([&reason](qint64 index, const RecordedEvent &event) { reason.add(index, event); });
    const SilenceReason::Verdict verdict = reason.verdict(uuidOf(reason, renderer));
    if (verdict.cause == SilenceReason::Cause::NoRenderer) {
        Output::complain(verdict.sentence);
        return Verb::CouldNotRun;
    }
    Output output;
    const bool isFine = verdict.cause == SilenceReason::Cause::NotSilent;
    output.line(verdict.sentence, isFine ? Output::Tone::Good : Output::Tone::Bad);
    for (const PlaybackFacts::Moment &moment : verdict.evidence)
        output.line(
            QStringLiteral("%1  %2").arg(moment.time, 10, 'f', 3).arg(moment.text), Output::Tone::Faint);
    return isFine ? Verb::Held : Verb::Failed;
}

int cannotTell(const QString &problem)
{
    Output::complain(problem);
    return Verb::CouldNotRun;
}

/// Looks at a renderer for a while, and reads what was recorded meanwhile.
int tellOfNow(VerbOptions &options)
{
    const auto wait = options.time(QStringLiteral("wait"));
    const auto time = wait ? options.time(QStringLiteral("for")) : std::nullopt;
    if (!time)
        return cannotTell(options.problem());
    Session session;
    const RendererChoice choice = session.chooseOne(options.value(QStringLiteral("on")), *wait);
    if (!choice.problem.isEmpty())
        return cannotTell(choice.problem);
    const QString uuid = choice.renderers.constFirst()->uuid();
    {
        const RendererInquiry inquiry(choice.renderers.constFirst());
        session.waitFor(*time);
    }
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("now.jsonl"));
    const auto write = [recording = session.recording()](QIODevice *device) {
        return device->write(recording) == recording.size();
    };
    RecordedRun run;
    QString error;
    if (!ResultFile::save(path, write))
        return Verb::CouldNotRun;
    return run.open(path, &error) ? tell(run, uuid) : cannotTell(error);
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
    if (!options.parse(arguments))
        return cannotTell(options.problem());
    if (options.positional().isEmpty() && options.isSet(QStringLiteral("on")))
        return tellOfNow(options);
    if (options.positional().size() != 1)
        return cannotTell(QStringLiteral("why takes one recording, or a renderer that is there: --on NAME"));
    const std::optional<RecordedRun> opened
        = RecordingOptions::open(&options, options.positional().constFirst());
    return opened ? tell(*opened, options.value(QStringLiteral("on"))) : int(CouldNotRun);
}
