// SPDX-License-Identifier: MIT
#include "TraceWriter.h"

#include "KelvoWords.h"
#include "RecordedRun.h"

#include <QIODevice>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>

namespace {
enum Thread { Commands = 1, States = 2, Reports = 3 };

/// Objects beyond this share one process.
constexpr int mostProcesses = 1000;

qint64 microseconds(double seconds)
{
    constexpr double most = 9e15; // what a number in JSON holds to the last digit
    return std::llround(std::clamp(seconds * 1e6, -most, most));
}
} // namespace

TraceWriter::TraceWriter(QIODevice *device)
    : m_device(device)
{
    m_effects.setListener([this](const CommandEffects::Effect &effect) { addEffect(effect); });
}

bool TraceWriter::write(const RecordedRun &run)
{
    const QByteArray begin = "{\"displayTimeUnit\":\"ms\",\"otherData\":"
        + QJsonDocument(run.header()).toJson(QJsonDocument::Compact) + ",\"traceEvents\":[";
    m_isWritten = m_device->write(begin) == begin.size();
    double end = 0;
    run.forEach([this, &end](qint64 index, const RecordedEvent &event) {
        end = std::max(end, event.time);
        add(event);
        m_effects.add(index, event);
    });
    const QList<QString> objects = m_states.keys();
    for (const QString &uuid : objects)
        endState(uuid, end);
    m_effects.finish();
    return m_device->write("\n]}\n") > 0 && m_isWritten;
}

void TraceWriter::add(const RecordedEvent &event)
{
    const int process = processOf(event.uuid);
    const QJsonValue first = event.arguments.at(0);
    if (event.kind == KelvoWords::appears)
        nameProcess(process, first.toString());
    if (const std::optional<double> position = KelvoWords::answeredPosition(event)) {
        put("C", QStringLiteral("position"), event.time, process, Reports,
            {{"args", QJsonObject{{"seconds", *position}}}});
    } else if (KelvoWords::isReport(event, QLatin1String("bufferingInfo"))) {
        put("C", QStringLiteral("buffer"), event.time, process, Reports,
            {{"args", QJsonObject{{"percent", first.toDouble() * 100}}}});
    } else if (KelvoWords::isReport(event, QLatin1String("stateChanged"))) {
        addState(event);
    } else {
        const bool isCommand = event.kind == KelvoWords::command;
        put("i", event.name, event.time, process, isCommand ? Commands : Reports,
            {{"s", "t"}, {"cat", event.kind}, {"args", QJsonObject{{"arguments", event.arguments}}}});
    }
    if (event.kind == KelvoWords::vanishes)
        endState(event.uuid, event.time);
}

void TraceWriter::addState(const RecordedEvent &event)
{
    endState(event.uuid, event.time);
    if (m_states.size() < mostProcesses)
        m_states.insert(event.uuid, {event.arguments.at(0).toString(), event.time});
}

/// What lasts is written when it ends.
void TraceWriter::endState(const QString &uuid, double time)
{
    if (!m_states.contains(uuid))
        return;
    const State state = m_states.take(uuid);
    put("X", state.name, state.since, processOf(uuid), States,
        {{"dur", std::max(microseconds(time) - microseconds(state.since), qint64(0))}});
}

/// Such times overlap where a command comes before the last one had its effect, so they are asynchronous events.
void TraceWriter::addEffect(const CommandEffects::Effect &effect)
{
    if (!effect.effectTime)
        return;
    const int process = processOf(effect.uuid);
    const QJsonObject both{
        {"cat", "effect"}, {"id", effect.commandEvent}, {"args", QJsonObject{{"effect", effect.effect}}}};
    put("b", effect.command, effect.commandTime, process, Commands, both);
    put("e", effect.command, *effect.effectTime, process, Commands, both);
}

int TraceWriter::processOf(const QString &uuid)
{
    const auto found = m_processes.constFind(uuid);
    if (found != m_processes.constEnd())
        return *found;
    if (m_processes.size() == mostProcesses)
        return mostProcesses + 1;
    const int process = int(m_processes.size()) + 1;
    m_processes.insert(uuid, process);
    nameProcess(process, uuid.isEmpty() ? QStringLiteral("process") : uuid);
    const std::pair<int, const char *> threads[]
        = {{Commands, "commands"}, {States, "states"}, {Reports, "reports"}};
    for (const auto &[thread, name] : threads)
        put("M", QStringLiteral("thread_name"), 0, process, thread, {{"args", QJsonObject{{"name", name}}}});
    return process;
}

void TraceWriter::nameProcess(int process, const QString &name)
{
    put("M", QStringLiteral("process_name"), 0, process, 0, {{"args", QJsonObject{{"name", name}}}});
}

void TraceWriter::put(
    const char *phase, const QString &name, double time, int process, int thread, QJsonObject more)
{
    more.insert(QLatin1String("ph"), QLatin1String(phase));
    more.insert(QLatin1String("name"), name);
    more.insert(QLatin1String("ts"), microseconds(time));
    more.insert(QLatin1String("pid"), process);
    more.insert(QLatin1String("tid"), thread);
    const QByteArray line = (m_isFirst ? "\n" : ",\n") + QJsonDocument(more).toJson(QJsonDocument::Compact);
    m_isFirst = false;
    m_isWritten = m_isWritten && m_device->write(line) == line.size();
}
