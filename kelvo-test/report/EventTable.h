// SPDX-License-Identifier: MIT
#pragma once

#include "RecordedEvent.h"

#include <QHash>

class QIODevice;

/// The events of a run as tables, each of which a reader opens by itself: a browser lays out those only that are open.
class EventTable
{
public:
    /// Events in each of the tables.
    static constexpr qint64 RowsOfTable = 500;
    /// Tables of fewer events altogether are open from the start.
    static constexpr qint64 MostRowsOpen = 1000;

    /// Writes to a device that is not owned. `events` is how many will come.
    EventTable(QIODevice *device, qint64 events);

    /// One row; its id is "e" and the number.
    void add(qint64 index, const RecordedEvent &event);
    /// Ends the last table. False when the device did not take everything.
    bool finish();

private:
    void beginTable(double time);
    void endTable();
    void write(const QByteArray &html);
    QByteArray nameOf(const RecordedEvent &event);

    QIODevice *const m_device;
    const bool m_isOpen;
    qint64 m_rows = 0;
    double m_lastTime = 0;
    bool m_isWritten = true;
    QHash<QString, QByteArray> m_names;
};
