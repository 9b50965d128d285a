// SPDX-License-Identifier: MIT
#include "RemoteFetch.h"

#include <QRegularExpression>

#include <algorithm>

namespace {
// A row in one text, in which no two rows are alike.
QByteArray keyOf(const RemoteRow &row)
{
    QByteArray key;
    for (const QByteArray &value : row)
        key += value.isNull() ? QByteArray("-") : QByteArray::number(value.size()) + ':' + value;
    return key;
}

bool isThisMachine(const QUrl &url)
{
    static const QRegularExpression loopback(QStringLiteral("^(localhost|127(\\.\\d+){3}|::1)$"));
    return loopback.match(url.host()).hasMatch();
}
} // namespace

RemoteFetch::RemoteFetch(
    const QUrl &library, const PortableQuery &query, const RemoteLimits &limits, Taker taker)
    : m_library(library)
    , m_query(query)
    , m_limits(limits)
    , m_taker(std::move(taker))
    , m_http(library, limits)
{
}

RemoteFetch::End RemoteFetch::askFirst(int rows)
{
    QString error = ask(m_query.page(0, rows), m_query.columns());
    m_isFirst = false;
    const int asked = m_query.limit() > 0 ? std::min(rows, m_query.limit()) : rows;
    const bool isMore = m_rowsOfAnswer >= asked && asked != m_query.limit();
    if (error.isEmpty() && m_rows == 0)
        error = askWhetherAnythingIsThere();
    return {error, error.isEmpty() && isMore};
}

RemoteFetch::End RemoteFetch::askRest()
{
    if (!m_isPaged)
        return {ask(m_query.page(0, 0), m_query.columns()), false};
    const int rows = m_query.limit() > 0 ? std::min(m_limits.page, m_query.limit() - m_rows) : m_limits.page;
    const QString error = ask(m_query.page(m_rows, rows), m_query.columns());
    return {error, error.isEmpty() && m_rowsOfAnswer >= rows && m_rows != m_query.limit()};
}

// A library that has nothing to answer with, or one that is none.
QString RemoteFetch::askWhetherAnythingIsThere()
{
    const QString error = ask(PortableQuery::anything(), {{"x", true}});
    const bool isNothing = error.isEmpty() && m_rowsOfAnswer == 0 && !m_http.isCancelled();
    return isNothing ? QStringLiteral("it holds no Kelvo library") : error;
}

QString RemoteFetch::ask(const QByteArray &query, const std::vector<PortableQuery::Column> &columns)
{
    m_rowsOfAnswer = 0;
    std::unique_ptr<ResultReader> reader;
    const HttpQuery::Listener listener{
        [&](const QByteArray &mediaType) {
            reader = ResultReader::forType(mediaType, m_limits);
            m_isPaged = !mediaType.toLower().startsWith("text/csv");
            return reader
                ? QString()
                : QStringLiteral("it answers with %1, not with the rows of a query")
                      .arg(mediaType.isEmpty() ? QStringLiteral("something without a type")
                                               : QString::fromLatin1(mediaType.left(100)).simplified());
        },
        [&](const QByteArray &bytes) {
            const QString broken = reader->take(bytes);
            // What came before the break is good.
            const QString error = pass(*reader, columns);
            return error.isEmpty() ? broken : error;
        }};
    QString error = m_http.ask(query, listener);
    if (error.isEmpty() && reader && !m_http.isCancelled()) {
        const QString broken = reader->finish();
        error = pass(*reader, columns);
        if (error.isEmpty())
            error = broken;
    }
    return error;
}

QString RemoteFetch::pass(ResultReader &reader, const std::vector<PortableQuery::Column> &columns)
{
    const std::vector<QByteArray> &names = reader.names();
    std::vector<RemoteRow> rows = reader.takeRows();
    const bool areAsked = std::equal(names.begin(), names.end(), columns.begin(), columns.end(),
        [](const QByteArray &name, const PortableQuery::Column &column) { return name == column.name; });
    if (!names.empty() && !areAsked)
        return QStringLiteral("it answers with other columns than those that were asked for");
    if (rows.empty())
        return {};
    m_rowsOfAnswer += int(rows.size());
    m_http.restartClock();
    if (columns.size() != m_query.columns().size())
        return {}; // of another question
    QString error = pass(std::move(rows));
    m_http.restartClock(); // as long as nobody took them, none could come
    return error;
}

QString RemoteFetch::pass(std::vector<RemoteRow> rows)
{
    if (!m_isPaged)
        rows.erase(
            std::remove_if(rows.begin(), rows.end(), [this](const RemoteRow &row) { return wasGiven(row); }),
            rows.end());
    for (size_t column = 0; column < m_query.columns().size(); ++column) {
        if (m_query.columns()[column].name != "url")
            continue;
        for (RemoteRow &row : rows)
            nameMachine(&row[column]);
    }
    const bool areTooMany = int(rows.size()) > m_limits.rows - m_rows;
    if (areTooMany)
        rows.resize(size_t(m_limits.rows - m_rows));
    m_rows += int(rows.size());
    if (!rows.empty() && !m_taker(std::move(rows)))
        m_http.cancel();
    return areTooMany
        ? QStringLiteral("it gives more than %1 rows, of which the others are left out").arg(m_limits.rows)
        : QString();
}

// Notes the first rows, and knows them again.
bool RemoteFetch::wasGiven(const RemoteRow &row)
{
    if (m_isFirst) {
        ++m_given[keyOf(row)];
        return false;
    }
    const auto found = m_given.find(keyOf(row));
    if (found == m_given.end())
        return false;
    if (--*found == 0)
        m_given.erase(found);
    return true;
}

// The same path on this machine is another file.
void RemoteFetch::nameMachine(QByteArray *address) const
{
    static const QByteArray file("file:///");
    if (address->startsWith(file) && !isThisMachine(m_library))
        *address = "file://" + QUrl::toAce(m_library.host()) + '/' + address->mid(file.size());
}
