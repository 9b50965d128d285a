// SPDX-License-Identifier: MIT
#include "RemoteCursor.h"

#include "RemoteIds.h"

#include <algorithm>
#include <cmath>

RemoteCursor::RemoteCursor(std::shared_ptr<RemoteAnswers> answers)
    : m_answers(std::move(answers))
{
}

bool RemoteCursor::next(StoreError *error)
{
    if (!m_rows.rows.empty() && ++m_row < m_rows.rows.size())
        return true;
    m_rows = m_answers->take();
    m_row = 0;
    if (!m_rows.rows.empty())
        return true;
    if (m_answers->isCancelled())
        *error = {StoreError::Cancelled, QStringLiteral("Cancelled")};
    return false;
}

int RemoteCursor::columnCount() const
{
    return int(m_answers->columns().size());
}

RowCursor::Type RemoteCursor::type(int column) const
{
    if (value(column).isNull())
        return Unbound;
    return m_answers->columns()[size_t(column)].isResource ? Uri : String;
}

const char *RemoteCursor::text(int column) const
{
    return value(column).isNull() ? nullptr : value(column).constData();
}

qint64 RemoteCursor::integer(int column) const
{
    const QByteArray &text = value(column);
    if (text.isEmpty())
        return 0;
    if (m_answers->columns()[size_t(column)].isResource)
        return RemoteIds::idOf(m_rows.endpoint, text);
    bool isWhole = false;
    const qint64 number = text.toLongLong(&isWhole);
    // Sums may come as decimals.
    const double decimal = isWhole ? 0 : text.toDouble();
    if (!std::isfinite(decimal))
        return 0;
    return isWhole ? number : qint64(std::clamp(decimal, double(INT32_MIN), double(INT32_MAX)));
}

QByteArray RemoteCursor::name(int column) const
{
    return m_answers->columns()[size_t(column)].name;
}

bool RemoteCursor::wouldWait() const
{
    return m_row + 1 >= m_rows.rows.size() && m_answers->wouldWait();
}
