// SPDX-License-Identifier: MIT
#include "PortableQuery.h"

#include "../store/Sparql.h"

#include <QRegularExpression>

#include <algorithm>

namespace {
const char prefixes[] = R"(PREFIX rdfs: <http://www.w3.org/2000/01/rdf-schema#>
PREFIX nao: <http://tracker.api.gnome.org/ontology/v3/nao#>
PREFIX nfo: <http://tracker.api.gnome.org/ontology/v3/nfo#>
PREFIX nie: <http://tracker.api.gnome.org/ontology/v3/nie#>
PREFIX nmm: <http://tracker.api.gnome.org/ontology/v3/nmm#>
)";

// An item of the catalogue's SELECT lists: the number of a resource, an expression with a name, a variable.
const QRegularExpression &selectItem()
{
    static const QRegularExpression pattern(QStringLiteral(
        R"(tracker:id\(\?(?<resource>\w+)\)|(?<named>\((?:[^()]|\([^()]*\))*\bAS\s+\?(?<name>\w+)\s*\))|\?(?<plain>\w+))"));
    return pattern;
}

std::vector<PortableQuery::Column> columnsOf(const QString &selectList, QStringList *ungrouped)
{
    std::vector<PortableQuery::Column> columns;
    QRegularExpressionMatchIterator items = selectItem().globalMatch(selectList);
    while (items.hasNext()) {
        const QRegularExpressionMatch item = items.next();
        const QString resource = item.captured(QStringLiteral("resource"));
        const QString plain = item.captured(QStringLiteral("plain"));
        const QString name = item.captured(QStringLiteral("name")) + resource + plain;
        columns.push_back({name.toLatin1(), !resource.isEmpty()});
        if (!resource.isEmpty() || !plain.isEmpty())
            ungrouped->append(QLatin1Char('?') + name);
    }
    return columns;
}
} // namespace

PortableQuery::PortableQuery(const QByteArray &builtIn, const QByteArray &subject)
{
    static const QRegularExpression comment(QStringLiteral("^#.*\\n"), QRegularExpression::MultilineOption);
    static const QRegularExpression limit(QStringLiteral("\\bLIMIT\\s+(\\d+)\\s*$"));
    static const QRegularExpression grouping(QStringLiteral("\\bGROUP BY\\s+\\?\\w+"));
    static const QRegularExpression number(QStringLiteral("\\btracker:id\\((\\?\\w+)\\)"));

    QString text = QString::fromUtf8(builtIn).remove(comment);
    m_limit = limit.match(text).captured(1).toInt();
    text.remove(limit);
    QStringList ungrouped;
    m_columns = columnsOf(text.left(text.indexOf(QLatin1String("WHERE"))), &ungrouped);
    // A selected variable is grouped by or counted; the store's library is content with one of them.
    text.replace(grouping, QStringLiteral("GROUP BY ") + ungrouped.join(QLatin1Char(' ')));
    text.replace(number, QStringLiteral("\\1"));
    if (!subject.isEmpty())
        text.replace(QLatin1String("~uri"), QString::fromUtf8(Sparql::iri(subject)));
    m_text = prefixes + text.trimmed().toUtf8();
}

QByteArray PortableQuery::page(int offset, int limit) const
{
    QByteArray text = m_text;
    if (m_limit > 0)
        limit = limit > 0 ? std::min(limit, m_limit - offset) : m_limit - offset;
    if (limit > 0)
        text += "\nLIMIT " + QByteArray::number(limit);
    if (offset > 0)
        text += "\nOFFSET " + QByteArray::number(offset);
    return text;
}

QByteArray PortableQuery::anything()
{
    return QByteArray("SELECT ?x WHERE { GRAPH <") + Sparql::musicGraph + "> { ?x a ?class } } LIMIT 1";
}
