// SPDX-License-Identifier: MIT
#pragma once

#include "RecordedEvent.h"

#include <QFile>
#include <QJsonDocument>
#include <QStringList>

/// Recordings as a test writes them: one event a line, as time, uuid, kind, name and arguments, divided by one space:
/// "1.5 r report stateChanged ["Playing"]". Empty lines are left out.
namespace HandWritten {
inline QList<RecordedEvent> events(const QString &text)
{
    QList<RecordedEvent> result;
    for (const QString &line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QStringList parts = line.trimmed().split(QLatin1Char(' '));
        if (parts.size() < 4)
            continue;
        RecordedEvent event;
        event.time = parts.at(0).toDouble();
        event.uuid = parts.at(1);
        event.kind = parts.at(2);
        event.name = parts.at(3);
        event.arguments = QJsonDocument::fromJson(parts.mid(4).join(QLatin1Char(' ')).toUtf8()).array();
        event.all = {{"time", event.time}, {"uuid", event.uuid}, {"kind", event.kind}, {"name", event.name},
            {"arguments", event.arguments}};
        result.append(event);
    }
    return result;
}

/// Appends a run to a file. False when it cannot be written.
inline bool append(const QString &path, const QList<RecordedEvent> &events,
    const QJsonObject &header = {{"kelvo-recording", 1}, {"program", "test"}})
{
    QFile file(path);
    if (!file.open(QIODevice::Append))
        return false;
    file.write(QJsonDocument(header).toJson(QJsonDocument::Compact) + '\n');
    for (const RecordedEvent &event : events)
        file.write(QJsonDocument(event.all).toJson(QJsonDocument::Compact) + '\n');
    return file.flush();
}

/// Gives all events to something that takes them one by one.
template <typename Taker> void give(const QList<RecordedEvent> &events, Taker *taker)
{
    for (qsizetype i = 0; i < events.size(); ++i)
        taker->add(i, events.at(i));
}
} // namespace HandWritten
