// SPDX-License-Identifier: MIT
#pragma once

#include "RemoteLimits.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

/// One solution: a value for each column, UTF-8; null: unbound.
using RemoteRow = std::vector<QByteArray>;

/// Reads the answer to a SELECT while it comes. It keeps what is not yet a complete row, within the limits, and nothing
/// else. One thread at a time.
class ResultReader
{
public:
    virtual ~ResultReader() = default;

    /// The reader for a media type as HTTP names it; null for what is no such answer.
    static std::unique_ptr<ResultReader> forType(const QByteArray &mediaType, const RemoteLimits &limits);

    /// Takes the next bytes. Why they are no such answer, fit to be shown; empty when they are. Not to be called again
    /// after an error.
    virtual QString take(const QByteArray &bytes) = 0;
    /// The answer has ended. Why it cannot have ended here; empty when it can.
    virtual QString finish() = 0;

    /// Names of the columns; empty until they are known.
    const std::vector<QByteArray> &names() const { return m_names; }
    /// The rows that are complete and were not taken before.
    std::vector<RemoteRow> takeRows() { return std::exchange(m_rows, {}); }

protected:
    explicit ResultReader(const RemoteLimits &limits)
        : m_limits(limits)
    {
    }
    ResultReader(const ResultReader &) = delete;
    ResultReader &operator=(const ResultReader &) = delete;

    QString tooManyColumns() const;
    QString tooLongRow() const;

    const RemoteLimits m_limits;
    std::vector<QByteArray> m_names;
    std::vector<RemoteRow> m_rows;
};
