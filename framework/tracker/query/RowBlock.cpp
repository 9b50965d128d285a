// SPDX-License-Identifier: MIT
#include "RowBlock.h"

#include "../store/StoreConnection.h"
#include "RowReader.h"

#include <QDateTime>

#include <algorithm>
#include <cstring>

RowBlock::RowBlock(std::vector<CellType> columns)
    : m_columns(std::move(columns))
    , m_texts(1, '\0') // place 0 is "no value"
{
}

void RowBlock::append(const RowReader &reader)
{
    const int available = reader.columnCount();
    for (int column = 0; column < int(m_columns.size()); ++column)
        m_cells.push_back(column < available ? cell(reader, column) : 0);
}

void RowBlock::finish()
{
    m_shared.clear();
    m_shared.squeeze();
    m_cells.shrink_to_fit();
    m_texts.squeeze();
}

qint32 RowBlock::cell(const RowReader &reader, int column)
{
    switch (m_columns[size_t(column)]) {
    case CellType::Number:
    case CellType::Amount:
        return qint32(std::clamp<qint64>(reader.integer(column), INT32_MIN, INT32_MAX));
    case CellType::Text:
    case CellType::Date: // no two songs were added at the same time
        return addText(reader.text(column));
    case CellType::SharedText:
        return addShared(reader.text(column));
    case CellType::Year: {
        const char *text = reader.text(column);
        return text ? qint32(std::strtol(text, nullptr, 10)) : 0;
    }
    case CellType::Flag: {
        const char *text = reader.text(column);
        return text && (std::strcmp(text, "true") == 0 || std::strcmp(text, "1") == 0);
    }
    case CellType::Any:
        return addText(reader.text(column), char('0' + reader.type(column)));
    }
    return 0;
}

qint32 RowBlock::addText(const char *text, char tag)
{
    if (!text)
        return 0;
    const auto place = qint32(m_texts.size());
    if (tag)
        m_texts.append(tag);
    m_texts.append(text, qsizetype(std::strlen(text)) + 1);
    return place;
}

qint32 RowBlock::addShared(const char *text)
{
    if (!text)
        return 0;
    const auto known = m_shared.constFind(QByteArray::fromRawData(text, qsizetype(std::strlen(text))));
    if (known != m_shared.constEnd())
        return *known;
    const qint32 place = addText(text);
    m_shared.insert(text, place);
    return place;
}

QVariant RowBlock::value(int row, int column) const
{
    const CellType type = m_columns[size_t(column)];
    const qint32 cell = m_cells[size_t(row) * m_columns.size() + size_t(column)];
    const char *text = m_texts.constData() + cell;
    switch (type) {
    case CellType::Number:
        return cell;
    case CellType::Flag:
        return cell != 0;
    case CellType::Amount:
    case CellType::Year:
        return cell > 0 ? QVariant(cell) : QVariant();
    case CellType::Text:
    case CellType::SharedText:
        return cell ? QVariant(QString::fromUtf8(text)) : QVariant();
    case CellType::Date:
        return cell ? QVariant(QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate)) : QVariant();
    case CellType::Any:
        return cell ? anyValue(text) : QVariant();
    }
    return {};
}

QVariant RowBlock::anyValue(const char *tagged) const
{
    const QByteArray text(tagged + 1);
    switch (*tagged - '0') {
    case StoreCursor::Unbound:
        return {};
    case StoreCursor::Integer: {
        const qint64 number = text.toLongLong();
        return number == qint32(number) ? QVariant(qint32(number)) : QVariant(number);
    }
    case StoreCursor::Double:
        return text.toDouble();
    case StoreCursor::Boolean:
        return text == "true" || text == "1";
    default:
        return QString::fromUtf8(text);
    }
}

void RowTable::append(std::shared_ptr<const RowBlock> block)
{
    m_firstRows.push_back(m_rows);
    m_rows += block->rowCount();
    m_blocks.push_back(std::move(block));
}

void RowTable::clear()
{
    m_blocks.clear();
    m_firstRows.clear();
    m_rows = 0;
}

QVariant RowTable::value(int row, int column) const
{
    const auto next = std::upper_bound(m_firstRows.begin(), m_firstRows.end(), row);
    const auto index = size_t(next - m_firstRows.begin()) - 1;
    return m_blocks[index]->value(row - m_firstRows[index], column);
}
