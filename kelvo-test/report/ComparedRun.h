// SPDX-License-Identifier: MIT
#pragma once

#include "RecordedEvent.h"

#include <QHash>

#include <optional>

class RecordedRun;

/// A run made ready for a comparison: its commands and reports by object, without what differs from run to run although
/// nothing else happened (random ids, ports, ids of windows, how often a buffer's level was told).
class ComparedRun
{
public:
    /// Events beyond this are left out.
    static constexpr qsizetype MostEvents = 500000;

    struct Event
    {
        double time = 0;
        /// The number of the event within the run.
        qint64 event = 0;
        bool isCommand = false;
        /// What it is: two events with the same key stand for each other: "metadataChanged(title)".
        QString key;
        /// What it tells beyond that: "[One]".
        QString value;
    };

    struct Object
    {
        QString uuid;
        QString name;
        bool isCommanded = false;
        QList<Event> events;
        /// What was told of each level since the last command.
        QHash<QString, QString> levels;
    };

    ComparedRun() = default;
    explicit ComparedRun(const RecordedRun &run);

    void add(qint64 index, const RecordedEvent &event);

    /// In the order of their first commands, then of their first reports.
    QList<Object> objects() const;
    /// Seconds: when the first event of the run came, 0 without any. What a program needs before that is its own start,
    /// which is the machine's business and not the scenario's.
    double begin() const { return m_begin.value_or(0); }
    bool isCut() const { return m_isCut; }

private:
    Object &objectOf(const QString &uuid);
    void addReport(Object *object, Event event, const RecordedEvent &recorded);
    QString plain(const QJsonValue &value);
    QString plainText(const QString &text);
    QString plainRest(const QJsonArray &arguments, qsizetype from);

    QList<Object> m_objects;
    QHash<QString, qsizetype> m_indexes;
    QHash<QString, QString> m_ids;
    std::optional<double> m_begin;
    qsizetype m_events = 0;
    bool m_isCut = false;
};
