// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <vector>

class RowReader;

/// How the values of a column are kept and shown.
enum class CellType : quint8 {
    Number, ///< int
    Amount, ///< int that is at least 1; 0 in the store means not known and shows as nothing
    Text,
    SharedText, ///< text that repeats from row to row, held once per block
    Date, ///< QDateTime
    Year, ///< int; the year of a date
    Flag, ///< bool
    Any, ///< by the type of each value, for queries whose columns are not known beforehand
};

/// Some rows of a result, packed: four bytes for each cell, texts once in UTF-8. Filled on a worker thread, read
/// on the GUI thread. Values are made when they are asked for.
class RowBlock
{
public:
    explicit RowBlock(std::vector<CellType> columns);

    /// The row that the reader has read.
    void append(const RowReader &reader);
    /// After the last row: gives back what only appending needs.
    void finish();

    int rowCount() const { return m_columns.empty() ? 0 : int(m_cells.size() / m_columns.size()); }
    /// Invalid for a missing value.
    QVariant value(int row, int column) const;
    /// Names of the columns as the query has them; for queries whose columns are not known beforehand.
    QStringList names() const { return m_names; }
    void setNames(const QStringList &names) { m_names = names; }

private:
    qint32 cell(const RowReader &reader, int column);
    qint32 addText(const char *text, char tag = 0);
    qint32 addShared(const char *text);
    QVariant anyValue(const char *tagged) const;

    std::vector<CellType> m_columns;
    QStringList m_names;
    std::vector<qint32> m_cells; // Row by row. Texts: place in m_texts; 0: no value.
    QByteArray m_texts;
    QHash<QByteArray, qint32> m_shared;
};

/// The rows of a result, block by block.
class RowTable
{
public:
    void append(std::shared_ptr<const RowBlock> block);
    void clear();
    int rowCount() const { return m_rows; }
    QVariant value(int row, int column) const;

private:
    std::vector<std::shared_ptr<const RowBlock>> m_blocks;
    std::vector<int> m_firstRows;
    int m_rows = 0;
};
