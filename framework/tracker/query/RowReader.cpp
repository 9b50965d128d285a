// SPDX-License-Identifier: MIT
#include "RowReader.h"

#include "../store/KeptRows.h"
#include "../store/RowCursor.h"

#include <cstdlib>
#include <cstring>

RowReader::RowReader(const RowCursor &cursor, std::vector<CellSource> sources)
    : m_cursor(cursor)
    , m_sources(std::move(sources))
{
}

void RowReader::readRow()
{
    if (m_sources.empty())
        return;
    m_values.clear();
    const char *kept = m_cursor.text(m_cursor.columnCount() - 1);
    if (!kept)
        return;
    const auto length = qsizetype(std::strlen(kept));
    m_kept.resize(length); // keeps its memory from row to row
    char *value = m_kept.data();
    std::memcpy(value, kept, size_t(length));
    for (char *const end = value + length;;) {
        m_values.push_back(value);
        value = static_cast<char *>(std::memchr(value, KeptRows::separator, size_t(end - value)));
        if (!value)
            return;
        *value++ = '\0';
    }
}

const char *RowReader::text(int column) const
{
    if (m_sources.empty())
        return m_cursor.text(column);
    const CellSource source = m_sources[size_t(column)];
    if (source.kind == CellSource::Column)
        return m_cursor.text(source.index);
    return size_t(source.index) < m_values.size() ? m_values[size_t(source.index)] : nullptr;
}

qint64 RowReader::integer(int column) const
{
    if (m_sources.empty())
        return m_cursor.integer(column);
    const CellSource source = m_sources[size_t(column)];
    if (source.kind == CellSource::Column)
        return m_cursor.integer(source.index);
    const char *value = text(column);
    return value ? std::strtoll(value, nullptr, 10) : 0;
}

int RowReader::type(int column) const
{
    return m_cursor.type(column);
}

int RowReader::columnCount() const
{
    return m_sources.empty() ? m_cursor.columnCount() : int(m_sources.size());
}
