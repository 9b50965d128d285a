// SPDX-License-Identifier: MIT
#pragma once

#include "RecordedEvent.h"

#include <functional>

/// One run of a recording, read anew for each visit: what is kept of it does not grow with the recording.
class RecordedRun
{
public:
    /// Called with the number of the event within the run, from 0, and the event.
    using Visit = std::function<void(qint64, const RecordedEvent &)>;

    /// Stands for the run that was recorded last.
    static constexpr int LastRun = -1;

    /// Reads through a recording and chooses one of its runs, counted from 0. False with the reason in `*error` when it
    /// cannot be read or has no such run.
    bool open(const QString &path, QString *error, int run = LastRun);

    QString path() const { return m_path; }
    /// What was written at the run's beginning: "program", "version", "revision", "started", ...
    QJsonObject header() const { return m_header; }
    /// The chosen run, from 0, and how many the recording has.
    int run() const { return m_run; }
    int runs() const { return m_runs; }
    qint64 events() const { return m_events; }
    /// Lines of the recording that were no event.
    qint64 skippedLines() const { return m_skipped; }
    /// Why the recording could not be read to its end; empty otherwise.
    QString trouble() const { return m_trouble; }

    /// Calls for each event in the order of the recording. What was appended since open() is left out.
    void forEach(const Visit &visit) const;

private:
    QString m_path;
    QJsonObject m_header;
    QString m_trouble;
    int m_run = 0;
    int m_runs = 0;
    qint64 m_events = 0;
    qint64 m_skipped = 0;
};
