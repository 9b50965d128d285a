// SPDX-License-Identifier: MIT
#include "ReportVerb.h"

#include "HtmlReport.h"
#include "Output.h"
#include "RecordingOptions.h"
#include "ResultFile.h"
#include "TraceWriter.h"
#include "VerbOptions.h"

#include <QFileInfo>

namespace {
VerbOptions reportOptions()
{
    VerbOptions options(QStringLiteral("report"), QStringLiteral("RECORDING"),
        QStringLiteral(
            "Makes one page of a recording, which opens in any browser without a network: a time line, how "
            "long each\ncommand took to have its effect, errors, and all events."));
    options.add(QStringLiteral("o"), QStringLiteral("file"),
        QStringLiteral("Where to write the page; beside the recording, ending in .html, when not given."));
    options.add(QStringLiteral("trace"), QStringLiteral("file"),
        QStringLiteral("Writes this file for a trace viewer (trace event format); the page only with -o."));
    RecordingOptions::add(&options);
    options.addExample(
        QStringLiteral("kelvo-test report run.jsonl -o report.html"), QStringLiteral("one page to hand on"));
    return options;
}

QString pageOf(const VerbOptions &options, const QString &recording)
{
    if (options.isSet(QStringLiteral("o")))
        return options.value(QStringLiteral("o"));
    const QFileInfo file(recording);
    return options.isSet(QStringLiteral("trace"))
        ? QString()
        : file.path() + QLatin1Char('/') + file.completeBaseName() + QStringLiteral(".html");
}
} // namespace

QString ReportVerb::name() const
{
    return QStringLiteral("report");
}

QString ReportVerb::summary() const
{
    return QStringLiteral("makes a page of a recording");
}

QString ReportVerb::help() const
{
    return reportOptions().help();
}

int ReportVerb::run(const QStringList &arguments)
{
    VerbOptions options = reportOptions();
    if (!options.parse(arguments) || options.positional().size() != 1) {
        Output::complain(
            options.problem().isEmpty() ? QStringLiteral("report takes one recording") : options.problem());
        return CouldNotRun;
    }
    const QString recording = options.positional().constFirst();
    const std::optional<RecordedRun> opened = RecordingOptions::open(&options, recording);
    if (!opened)
        return CouldNotRun;
    const QString trace = options.value(QStringLiteral("trace"));
    const QString page = pageOf(options, recording);
    const auto writePage = [&opened](QIODevice *device) {
        return HtmlReport(*opened).write(device);
    };
    const auto writeTrace = [&opened](QIODevice *device) {
        return TraceWriter(device).write(*opened);
    };
    if (!page.isEmpty() && !ResultFile::save(page, writePage))
        return CouldNotRun;
    if (!trace.isEmpty() && !ResultFile::save(trace, writeTrace))
        return CouldNotRun;
    return Held;
}
