// SPDX-License-Identifier: MIT
#include "CsvResultReader.h"

namespace {
QString brokenQuotes()
{
    return QStringLiteral("it gives a line with misplaced quotes");
}
} // namespace

CsvResultReader::CsvResultReader(const RemoteLimits &limits)
    : ResultReader(limits)
{
}

QString CsvResultReader::take(const QByteArray &bytes)
{
    for (const char byte : bytes) {
        QString error = takeByte(byte);
        if (!error.isEmpty())
            return error;
    }
    return {};
}

QString CsvResultReader::finish()
{
    if (m_place == Place::Quoted)
        return QStringLiteral("its answer ends within a row");
    // The last line may lack its end (RFC 4180, section 2).
    const bool hasLine = m_place != Place::FieldStart || !m_row.empty();
    QString error = hasLine ? endLine() : QString();
    if (error.isEmpty() && m_names.empty())
        error = QStringLiteral("its answer is empty");
    return error;
}

QString CsvResultReader::takeByte(char byte)
{
    if (++m_rowBytes > m_limits.rowBytes)
        return tooLongRow();
    if (m_place == Place::Quoted) {
        if (byte == '"')
            m_place = Place::QuoteSeen;
        else
            m_field.append(byte);
        return {};
    }
    return takeBetween(byte);
}

// Outside of quotes.
QString CsvResultReader::takeBetween(char byte)
{
    if (m_place == Place::LineEnd && byte != '\n')
        return QStringLiteral("it gives a line whose end is half one");
    switch (byte) {
    case '\r':
        m_place = Place::LineEnd;
        return {};
    case '\n':
        return endLine();
    case ',':
        endField();
        m_place = Place::FieldStart;
        return int(m_row.size()) >= m_limits.columns ? tooManyColumns() : QString();
    case '"':
        if (m_place == Place::Plain)
            return brokenQuotes();
        if (m_place == Place::QuoteSeen)
            m_field.append(byte);
        m_isQuoted = true;
        m_place = Place::Quoted;
        return {};
    default:
        if (m_place == Place::QuoteSeen)
            return brokenQuotes();
        m_field.append(byte);
        m_place = Place::Plain;
        return {};
    }
}

void CsvResultReader::endField()
{
    // Nothing at all is unbound, an empty text has its quotes.
    m_row.push_back(m_field.isEmpty() && !m_isQuoted ? QByteArray()
            : m_field.isNull()                       ? QByteArray("")
                                                     : m_field);
    m_field = {};
    m_isQuoted = false;
}

QString CsvResultReader::endLine()
{
    endField();
    m_place = Place::FieldStart;
    m_rowBytes = 0;
    RemoteRow row = std::exchange(m_row, {});
    if (m_names.empty()) {
        static const QByteArray byteOrderMark("\xEF\xBB\xBF");
        if (row.front().startsWith(byteOrderMark))
            row.front().remove(0, byteOrderMark.size());
        m_names = std::move(row);
        return {};
    }
    if (row.size() != m_names.size())
        return QStringLiteral("it gives a row of %1 columns among rows of %2")
            .arg(row.size())
            .arg(m_names.size());
    m_rows.push_back(std::move(row));
    return {};
}
