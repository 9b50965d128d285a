// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <vector>

/// A query of the catalogue as any SPARQL 1.1 server understands it: with its prefixes, with resources in place of the
/// numbers that the store's library gives them, grouped by all that is selected as it is, and in pages.
class PortableQuery
{
public:
    /// @param builtIn  the text of the catalogue
    /// @param subject  the resource that stands for "~uri"; empty where there is none
    explicit PortableQuery(const QByteArray &builtIn, const QByteArray &subject = {});

    /// The rows from this one on, at most so many (below 1: all); what the query itself is limited to holds too.
    QByteArray page(int offset, int limit) const;
    /// What the query itself is limited to; 0: nothing.
    int limit() const { return m_limit; }

    /// A column of the result.
    struct Column
    {
        QByteArray name;
        bool isResource = false; ///< has the resource that the store's library gives the number of
    };
    const std::vector<Column> &columns() const { return m_columns; }

    /// A query with a row where there is a library of ours, whatever it holds.
    static QByteArray anything();

private:
    QByteArray m_text; ///< without a limit
    std::vector<Column> m_columns;
    int m_limit = 0;
};
