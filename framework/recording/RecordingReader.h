// SPDX-License-Identifier: MIT
#pragma once

#include "RecordedEvent.h"

#include <QFile>

#include <optional>

/// Reads a recording line by line: JSON Lines in UTF-8, the first line a header, then one event a line.
///
/// Takes what a crash, a full disk or another program leaves behind: a last line without its end counts when it is
/// whole, lines that are no event are skipped and counted, unknown fields and kinds are kept. A further header begins
/// another run. Only one line is in memory at a time. To be used by one thread.
class RecordingReader
{
public:
    /// The number in the header of recordings that this class reads.
    static constexpr int Version = 1;
    /// Bytes of the longest line that is read; a longer one is skipped and counted.
    static constexpr qint64 LongestLine = 1024 * 1024;

    /// Opens a file and reads its header. False when the file cannot be read, is no recording or is of another version:
    /// `*error` says which, naming the file.
    bool open(const QString &path, QString *error);

    /// The following event; nothing at the end of the file, after a failure to read, and from a header of another
    /// version on: error() says so.
    std::optional<RecordedEvent> next();

    /// The header of the run that the last event belongs to: "program", "version", "revision", "started", ...
    QJsonObject header() const { return m_header; }
    /// Headers that were read so far: more than one where several runs were written to one file.
    int runs() const { return m_runs; }
    /// Lines that were no event, so far.
    qint64 skippedLines() const { return m_skipped; }
    /// Why next() ended before the end of the file; empty otherwise.
    QString error() const { return m_error; }

private:
    std::optional<QByteArray> nextLine();
    QByteArray nextPart();
    bool takeHeader(const QJsonObject &header);
    void fail(const QString &reason);

    QFile m_file;
    QByteArray m_part;
    QJsonObject m_header;
    QString m_error;
    int m_runs = 0;
    qint64 m_skipped = 0;
};
