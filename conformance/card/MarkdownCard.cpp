// SPDX-License-Identifier: MIT
#include "MarkdownCard.h"

#include "Card.h"
#include "PlainText.h"
#include "SenseText.h"

namespace {
/// As text of a paragraph, heading or table, whatever it holds.
QString escaped(const QString &text)
{
    static const QString marks = QStringLiteral("\\`*_{}[]()#+!|~>:@");
    QString safe;
    for (const QChar letter : plainText(text)) {
        if (letter == QLatin1Char('<'))
            safe += QLatin1String("&lt;");
        else if (letter == QLatin1Char('&'))
            safe += QLatin1String("&amp;");
        else if (marks.contains(letter))
            safe += QLatin1Char('\\') + QString(letter);
        else
            safe += letter;
    }
    return safe;
}

/// As a block of text as it is, which no line of it can end.
QString block(const QString &text)
{
    QString indented;
    for (const QString &line : plainLines(text).split(QLatin1Char('\n')))
        indented += QLatin1String("    ") + line + QLatin1Char('\n');
    return indented;
}

QString markdownHead(const Card &card)
{
    const CardHead &head = card.head();
    return QStringLiteral("# %1\n\n%2 of the back end %3, held to the contract by %4 on %5, with %6.\n"
                          "From a command to its report: %7 ms.\n\n")
        .arg(escaped(head.renderer), escaped(head.uuid), escaped(head.backEnd), escaped(head.program),
            head.when.toUTC().toString(Qt::ISODate), escaped(head.media), QString::number(head.roundTrip));
}

QString markdownTable(const Card &card)
{
    QString header = QStringLiteral("| group |");
    QString line = QStringLiteral("|---|");
    QString sums = QStringLiteral("| all |");
    for (Verdict verdict : allVerdicts()) {
        header += QStringLiteral(" %1 |").arg(textOf(verdict));
        line += QLatin1String("---|");
        sums += QStringLiteral(" %1 |").arg(card.count(verdict));
    }
    QString rows;
    for (const QString &group : card.groups()) {
        rows += QStringLiteral("| %1 |").arg(escaped(group));
        for (Verdict verdict : allVerdicts())
            rows += QStringLiteral(" %1 |").arg(card.count(verdict, group));
        rows += QLatin1Char('\n');
    }
    return header + QLatin1Char('\n') + line + QLatin1Char('\n') + rows + sums + QLatin1Char('\n');
}

QString senseRowsOf(const Card &card)
{
    if (card.senseRows().isEmpty())
        return {};
    QString text
        = QStringLiteral("\n## What it says and what came out\n\n"
                         "| id | what | said | came out | difference | |\n|---|---|---|---|---|---|\n");
    for (const SenseRow &row : card.senseRows()) {
        const QStringList cells{row.id, row.what, SenseText::said(row), SenseText::cameOut(row),
            SenseText::difference(row), SenseText::verdict(row)};
        for (const QString &cell : cells)
            text += QStringLiteral("| %1 ").arg(escaped(cell));
        text += QLatin1String("|\n");
    }
    return text;
}

QString faultsOf(const Card &card, Verdict verdict)
{
    if (card.count(verdict) == 0)
        return {};
    QString text = QStringLiteral("\n## What %1\n")
                       .arg(verdict == Verdict::Overclaimed ? QStringLiteral("it claims and does not do")
                                                            : textOf(verdict));
    for (const Result &result : card.results()) {
        if (result.verdict == verdict)
            text += QStringLiteral("\n### %1\n\n%2\n\n%3")
                        .arg(escaped(result.id), escaped(result.sentence), block(textOf(result.evidence)));
    }
    return text;
}

QString excusesOf(const Card &card, Verdict verdict)
{
    if (card.count(verdict) == 0)
        return {};
    QString text
        = QStringLiteral("\n## What %1\n\n| statement | why |\n|---|---|\n")
              .arg(verdict == Verdict::Refused ? QStringLiteral("is honestly refused") : textOf(verdict));
    for (const Result &result : card.results()) {
        if (result.verdict == verdict)
            text += QStringLiteral("| %1 | %2 |\n").arg(escaped(result.id), escaped(result.reason));
    }
    return text;
}
} // namespace

QByteArray toMarkdown(const Card &card)
{
    const QString text = markdownHead(card) + markdownTable(card) + senseRowsOf(card)
        + faultsOf(card, Verdict::DoesNotHold) + faultsOf(card, Verdict::Overclaimed)
        + excusesOf(card, Verdict::Refused) + excusesOf(card, Verdict::NotTried);
    return text.toUtf8();
}
