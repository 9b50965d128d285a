// SPDX-License-Identifier: MIT
#pragma once

#include "ResultReader.h"

/// SPARQL 1.1 Query Results CSV: RFC 4180 in UTF-8, the first line names the columns. Lines may end without CR, as some
/// servers' do.
class CsvResultReader : public ResultReader
{
public:
    explicit CsvResultReader(const RemoteLimits &limits);

    QString take(const QByteArray &bytes) override;
    QString finish() override;

private:
    enum class Place {
        FieldStart,
        Plain, ///< in a field without quotes
        Quoted,
        QuoteSeen, ///< in a field with quotes, behind one: its end, or the first of two that stand for one
        LineEnd, ///< behind CR
    };

    QString takeByte(char byte);
    QString takeBetween(char byte);
    void endField();
    QString endLine();

    Place m_place = Place::FieldStart;
    QByteArray m_field;
    bool m_isQuoted = false;
    RemoteRow m_row;
    qsizetype m_rowBytes = 0;
};
