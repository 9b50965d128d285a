// SPDX-License-Identifier: MIT
#include "QSparqlQuery.h"

#include <QRegularExpression>

#include <vector>

namespace {
// The parts of SPARQL that matter here (SPARQL 1.1, section 19.8): what may hold brackets and keywords without
// meaning them (IRIs, strings, comments), variables, numbers, names, single characters.
const QRegularExpression &tokenPattern()
{
    static const QRegularExpression pattern(
        QStringLiteral(
            R"((?<skip>\s+|#[^\n]*)|<[^<>"{}|^`\\\x00-\x20]*>|"""(?:\\.|[^\\])*?"""|'''(?:\\.|[^\\])*?'''|"(?:\\.|[^"\\])*"|'(?:\\.|[^'\\])*'|[?$]\w+|\d[\w.]*|[A-Za-z_][\w.-]*(?::[\w.-]*)?|:[\w.-]*|.)"),
        QRegularExpression::DotMatchesEverythingOption | QRegularExpression::UseUnicodePropertiesOption);
    return pattern;
}

struct Token
{
    QString text;
    qsizetype start = 0;
    qsizetype end = 0;
};

bool isWord(const Token &token, const char *word)
{
    return token.text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
}

bool isVariable(const Token &token)
{
    return token.text.startsWith(QLatin1Char('?')) || token.text.startsWith(QLatin1Char('$'));
}

// The tokens between SELECT and the WHERE clause.
std::vector<Token> selectList(const QString &query)
{
    std::vector<Token> list;
    bool inside = false;
    int depth = 0;
    QRegularExpressionMatchIterator matches = tokenPattern().globalMatch(query);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        if (match.hasCaptured(QStringLiteral("skip")) && match.capturedLength(QStringLiteral("skip")) > 0)
            continue;
        const Token token{match.captured(), match.capturedStart(), match.capturedEnd()};
        const bool atEnd
            = isWord(token, "WHERE") || isWord(token, "FROM") || token.text == QLatin1String("{");
        if (inside && depth == 0 && atEnd)
            break;
        depth += token.text == QLatin1String("(") ? 1 : token.text == QLatin1String(")") ? -1 : 0;
        const bool modifier = list.empty() && (isWord(token, "DISTINCT") || isWord(token, "REDUCED"));
        if (inside && !modifier)
            list.push_back(token);
        inside = inside || isWord(token, "SELECT");
    }
    return list;
}

// The place behind the bracket that closes the one at `open`.
size_t behindBracket(const std::vector<Token> &tokens, size_t open)
{
    int depth = 0;
    for (size_t i = open; i < tokens.size(); ++i) {
        depth += tokens[i].text == QLatin1String("(") ? 1 : tokens[i].text == QLatin1String(")") ? -1 : 0;
        if (depth == 0)
            return i + 1;
    }
    return tokens.size();
}

QString nameOf(const QString &query, const std::vector<Token> &tokens, size_t first, size_t end)
{
    if (isVariable(tokens[first]))
        return tokens[first].text.mid(1);
    if (end - first >= 4 && tokens[first].text == QLatin1String("(") && isWord(tokens[end - 3], "AS"))
        return tokens[end - 2].text.mid(1);
    const bool call = end - first >= 2 && tokens[first + 1].text == QLatin1String("(");
    if (call && tokens[first].text.contains(QLatin1Char(':')))
        return tokens[first].text.section(QLatin1Char(':'), -1);
    return query.mid(tokens[first].start, tokens[end - 1].end - tokens[first].start);
}
} // namespace

QSparqlQuery::QSparqlQuery(QString text, StatementType type)
    : m_text(std::move(text))
    , m_type(type)
{
}

QStringList QSparqlQuery::columnNames() const
{
    const std::vector<Token> tokens = selectList(m_text);
    QStringList names;
    for (size_t first = 0; first < tokens.size();) {
        if (tokens[first].text == QLatin1String("*"))
            return {};
        size_t end = first + 1;
        const bool bracket = tokens[first].text == QLatin1String("(");
        if (bracket)
            end = behindBracket(tokens, first);
        else if (!isVariable(tokens[first]) && end < tokens.size() && tokens[end].text == QLatin1String("("))
            end = behindBracket(tokens, end);
        names.append(nameOf(m_text, tokens, first, end));
        first = end;
    }
    return names;
}
