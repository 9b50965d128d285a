// SPDX-License-Identifier: MIT
#include "ScenarioVerb.h"

#include "Output.h"
#include "RecordingOptions.h"
#include "ScenarioWriter.h"
#include "VerbOptions.h"

#include <QFileInfo>

#include <cstdio>

namespace {
VerbOptions scenarioOptions()
{
    VerbOptions options(QStringLiteral("scenario"), QStringLiteral("RECORDING"),
        QStringLiteral("Makes a scenario of a recording: its commands as steps, its reports as expectations. "
                       "It goes to the "
                       "standard output."));
    options.add(QStringLiteral("title"), QStringLiteral("text"),
        QStringLiteral("Title of the scenario; the name of the recording when not given."));
    RecordingOptions::add(&options);
    options.addExample(QStringLiteral("kelvo-test scenario run.jsonl > again.yaml"),
        QStringLiteral("what was done once, to be done again"));
    return options;
}
} // namespace

QString ScenarioVerb::name() const
{
    return QStringLiteral("scenario");
}

QString ScenarioVerb::summary() const
{
    return QStringLiteral("makes a scenario of a recording");
}

QString ScenarioVerb::help() const
{
    return scenarioOptions().help();
}

int ScenarioVerb::run(const QStringList &arguments)
{
    VerbOptions options = scenarioOptions();
    if (!options.parse(arguments) || options.positional().size() != 1) {
        Output::complain(
            options.problem().isEmpty() ? QStringLiteral("scenario takes one recording") : options.problem());
        return CouldNotRun;
    }
    const QString path = options.positional().constFirst();
    const std::optional<RecordedRun> opened = RecordingOptions::open(&options, path);
    if (!opened)
        return CouldNotRun;
    ScenarioWriter writer;
    opened->forEach([&writer](qint64 index, const RecordedEvent &event) { writer.add(index, event); });
    if (writer.isEmpty()) {
        Output::complain(
            QStringLiteral("%1 has no command: there is nothing to make a scenario of").arg(path));
        return NothingToRun;
    }
    if (writer.isCut())
        Output::complain(
            QStringLiteral("%1 is longer than a scenario may be: its end was left out").arg(path));
    const QString title = options.isSet(QStringLiteral("title")) ? options.value(QStringLiteral("title"))
                                                                 : QFileInfo(path).completeBaseName();
    const QByteArray yaml = writer.yaml(title);
    const bool isWritten
        = std::fwrite(yaml.constData(), 1, size_t(yaml.size()), stdout) == size_t(yaml.size())
        && std::fflush(stdout) == 0;
    return isWritten ? Held : CouldNotRun;
}
