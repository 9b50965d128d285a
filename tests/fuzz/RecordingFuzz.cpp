// SPDX-License-Identifier: MIT
// A recording, and all that is made of one.
#include "FuzzSupport.h"
#include "HtmlReport.h"
#include "RecordedRun.h"
#include "RecordingReader.h"
#include "ScenarioFile.h"
#include "ScenarioWriter.h"
#include "TraceWriter.h"

#include <QBuffer>
#include <QJsonDocument>

namespace {
void readAll(const QString &path)
{
    RecordingReader reader;
    QString error;
    Fuzz::require(reader.open(path, &error) == error.isEmpty());
    while (const auto event = reader.next())
        Fuzz::require(event->run == reader.runs() - 1 && !event->all.isEmpty());
}

/// What was made of a recording is read again by who wrote it.
void readBack(const ScenarioWriter &writer)
{
    const QString path = Fuzz::file(writer.yaml(QStringLiteral("Title")), QStringLiteral("scenario.yaml"));
    QString error;
    if (!ScenarioFile::read(path, &error)) {
        fprintf(stderr, "%s\n", qPrintable(error));
        abort();
    }
}

void makeOf(const RecordedRun &run)
{
    QBuffer page;
    Fuzz::require(page.open(QIODevice::WriteOnly) && HtmlReport(run).write(&page));
    QBuffer trace;
    Fuzz::require(trace.open(QIODevice::WriteOnly) && TraceWriter(&trace).write(run));
    QJsonParseError error;
    QJsonDocument::fromJson(trace.data(), &error);
    Fuzz::require(error.error == QJsonParseError::NoError);
    ScenarioWriter scenario;
    qint64 events = 0;
    run.forEach([&](qint64 index, const RecordedEvent &event) {
        Fuzz::require(index == events++);
        scenario.add(index, event);
    });
    Fuzz::require(events == run.events());
    if (!scenario.isEmpty())
        readBack(scenario);
}
} // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = Fuzz::file(Fuzz::bytes(data, size), QStringLiteral("run.jsonl"));
    readAll(path);
    RecordedRun run;
    QString error;
    if (run.open(path, &error))
        makeOf(run);
    return 0;
}
