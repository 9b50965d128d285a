// SPDX-License-Identifier: MIT
#pragma once

#include "HttpQuery.h"
#include "PortableQuery.h"
#include "RemoteLimits.h"
#include "ResultReader.h"

#include <QHash>
#include <QString>
#include <QUrl>

#include <functional>

/// Asks one library one query: the first rows, and later the rest. One thread at a time; cancel() on any.
///
/// Servers that answer in CSV send rows while they find them: the rest is one answer, of which the rows that are there
/// already are left out (rows that sort alike may come in another order than before). Others, among them the store's own
/// endpoint, build an answer before they send it: the rest is asked for in pages.
class RemoteFetch
{
public:
    /// Takes rows; may block. False when nobody wants them any more.
    using Taker = std::function<bool(std::vector<RemoteRow>)>;

    RemoteFetch(const QUrl &library, const PortableQuery &query, const RemoteLimits &limits, Taker taker);

    struct End
    {
        QString error; ///< fit to be shown; empty: none
        bool isMore = false; ///< askRest() may give rows
    };
    End askFirst(int rows);
    End askRest();
    void cancel() { m_http.cancel(); }

private:
    QString ask(const QByteArray &query, const std::vector<PortableQuery::Column> &columns);
    QString pass(ResultReader &reader, const std::vector<PortableQuery::Column> &columns);
    QString pass(std::vector<RemoteRow> rows);
    bool wasGiven(const RemoteRow &row);
    void nameMachine(QByteArray *address) const;
    QString askWhetherAnythingIsThere();

    const QUrl m_library;
    const PortableQuery m_query;
    const RemoteLimits m_limits;
    const Taker m_taker;
    HttpQuery m_http;
    bool m_isPaged = false;
    int m_rows = 0; ///< given so far
    int m_rowsOfAnswer = 0;
    bool m_isFirst = true;
    QHash<QByteArray, int> m_given; ///< the first rows, and how often each
};
