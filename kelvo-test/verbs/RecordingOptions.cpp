// SPDX-License-Identifier: MIT
#include "RecordingOptions.h"

#include "Output.h"
#include "VerbOptions.h"

#include <QFileInfo>

#include <limits>

namespace {
const auto runOption = QStringLiteral("run");
} // namespace

void RecordingOptions::add(VerbOptions *options)
{
    options->add(runOption, QStringLiteral("number"),
        QStringLiteral("Which of several runs in the recording, from 1; the last one when not given."));
}

std::optional<RecordedRun> RecordingOptions::open(VerbOptions *options, const QString &path)
{
    int wanted = RecordedRun::LastRun;
    if (options->isSet(runOption)) {
        const std::optional<int> number = options->number(runOption, 1, std::numeric_limits<int>::max());
        if (!number) {
            Output::complain(options->problem());
            return {};
        }
        wanted = *number - 1;
    }
    RecordedRun run;
    QString error;
    if (!run.open(path, &error, wanted)) {
        Output::complain(error);
        return {};
    }
    const QString name = QFileInfo(path).fileName();
    if (run.runs() > 1 && wanted == RecordedRun::LastRun)
        Output::complain(
            QStringLiteral("%1 has %2 runs; this is about the last one").arg(name).arg(run.runs()));
    if (run.skippedLines() > 0)
        Output::complain(
            QStringLiteral("%1: %2 lines could not be understood").arg(name).arg(run.skippedLines()));
    if (!run.trouble().isEmpty())
        Output::complain(run.trouble());
    return run;
}
