// SPDX-License-Identifier: MIT
#pragma once

#include "CommandEffects.h"
#include "RecordedEvent.h"

#include <QHash>
#include <QJsonObject>

class QIODevice;
class RecordedRun;

/// Writes a run in the trace event format (JSON), which the common trace viewers read: a process for each object, in it
/// threads for its commands, states and reports, counters for position and buffer, and the time from each command to
/// its effect.
class TraceWriter
{
public:
    /// The device is not owned.
    explicit TraceWriter(QIODevice *device);

    /// Writes the whole of it. False when the device takes it no more.
    bool write(const RecordedRun &run);

private:
    struct State
    {
        QString name;
        double since = 0;
    };

    void add(const RecordedEvent &event);
    void addState(const RecordedEvent &event);
    void endState(const QString &uuid, double time);
    void addEffect(const CommandEffects::Effect &effect);
    int processOf(const QString &uuid);
    void nameProcess(int process, const QString &name);
    void put(
        const char *phase, const QString &name, double time, int process, int thread, QJsonObject more = {});

    QIODevice *const m_device;
    bool m_isWritten = true;
    bool m_isFirst = true;
    CommandEffects m_effects;
    QHash<QString, int> m_processes;
    QHash<QString, State> m_states;
};
