// SPDX-License-Identifier: MIT
#include "RecordedRun.h"

#include "RecordingReader.h"

bool RecordedRun::open(const QString &path, QString *error, int run)
{
    *this = {};
    m_path = path;
    RecordingReader reader;
    if (!reader.open(path, error))
        return false;
    m_header = reader.header();
    while (const std::optional<RecordedEvent> event = reader.next()) {
        if (run == LastRun && event->run > m_run)
            m_events = 0;
        m_run = run == LastRun ? event->run : run;
        if (event->run != m_run)
            continue;
        m_header = reader.header();
        ++m_events;
    }
    m_runs = reader.runs();
    m_skipped = reader.skippedLines();
    m_trouble = reader.error();
    // A run of which nothing but its header was written is a run, too.
    if (run == LastRun && m_run < m_runs - 1) {
        m_run = m_runs - 1;
        m_header = reader.header();
        m_events = 0;
    }
    if (run < m_runs)
        return true;
    *error = QStringLiteral("%1 has no run %2: it has %3").arg(path).arg(run + 1).arg(m_runs);
    return false;
}

void RecordedRun::forEach(const Visit &visit) const
{
    RecordingReader reader;
    QString error;
    if (!reader.open(m_path, &error))
        return;
    qint64 index = 0;
    while (index < m_events) {
        const std::optional<RecordedEvent> event = reader.next();
        if (!event)
            return;
        if (event->run == m_run)
            visit(index++, *event);
    }
}
