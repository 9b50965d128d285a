// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoTrackerGlobal.h"

#include <QString>
#include <QStringList>

/// The text of a SPARQL 1.1 query and what kind of statement it is.
class KELVO_TRACKER_EXPORT QSparqlQuery
{
public:
    enum StatementType { SelectStatement };

    QSparqlQuery() = default;
    explicit QSparqlQuery(QString text, StatementType type = SelectStatement);

    QString query() const { return m_text; }
    StatementType type() const { return m_type; }

    /// The names of the result's columns, read from the SELECT list: "x" for ?x and for (... AS ?x), "fileName" for
    /// nfo:fileName(...), the text itself for any other expression. Empty for SELECT * and for what is no SELECT.
    QStringList columnNames() const;

private:
    QString m_text;
    StatementType m_type = SelectStatement;
};
