// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <vector>

class RowCursor;

/// Where a column of a result finds its value in a query that uses what is kept with songs, albums and artists (see
/// KeptRows): in a column of that query, or in its last column, which holds several values.
struct CellSource
{
    enum Kind { Column, Kept };
    Kind kind = Column;
    int index = 0;
};

/// Reads the rows of a cursor as those of the result, whichever way the query gives them. Worker thread.
class RowReader
{
public:
    /// @param sources  for each column of the result; empty: they are the cursor's own
    RowReader(const RowCursor &cursor, std::vector<CellSource> sources);

    /// To be called when the cursor has gone to another row.
    void readRow();
    /// UTF-8, until the next row; null for what has no value.
    const char *text(int column) const;
    qint64 integer(int column) const;
    int type(int column) const;
    int columnCount() const;

private:
    const RowCursor &m_cursor;
    const std::vector<CellSource> m_sources;
    QByteArray m_kept; ///< with an end after each value
    std::vector<const char *> m_values;
};
