// SPDX-License-Identifier: MIT
#include "HtmlCard.h"

#include "Card.h"
#include "PlainText.h"
#include "SenseText.h"

namespace {
constexpr char style[] = R"(
:root { color-scheme: light dark; --line: #bbb; --good: #17702f; --bad: #b3161c; --faint: #595959; }
@media (prefers-color-scheme: dark) { :root { --line: #555; --good: #6fcf87; --bad: #ff8a80; --faint: #a8a8a8; } }
body { font: 1rem/1.45 system-ui, sans-serif; margin: 0 auto; max-width: 70rem; padding: 1rem; }
h1, h2, td { overflow-wrap: anywhere; }
table { border-collapse: collapse; width: 100%; }
th, td { border-bottom: 1px solid var(--line); padding: .3rem .5rem .3rem 0; text-align: left; vertical-align: top; }
td.number { font-variant-numeric: tabular-nums; white-space: nowrap; }
code, pre { font-family: ui-monospace, monospace; font-size: .85rem; }
pre { margin: .3rem 0; overflow-x: auto; white-space: pre-wrap; }
.holds { color: var(--good); }
.does-not-hold, .overclaimed { color: var(--bad); font-weight: bold; }
.refused, .not-tried, .about { color: var(--faint); }
@media (max-width: 40rem) { .results td, .results tr { display: block; border: 0; padding: 0; }
 .results tr { border-bottom: 1px solid var(--line); padding: .4rem 0; } .results th { display: none; } }
@media print { body { max-width: none; } details > * { display: block; } }
)";

/// Foreign text, with a direction of its own.
QString foreign(const QString &text)
{
    return QStringLiteral("<bdi>%1</bdi>").arg(plainText(text).toHtmlEscaped());
}

QString htmlHead(const Card &card)
{
    const CardHead &head = card.head();
    return QStringLiteral(
        "<h1>%1</h1>\n<p class=\"about\">%2 of the back end %3, held to the contract by %4 on %5, with %6. "
        "From a command to its report: %7&nbsp;ms.</p>\n")
        .arg(foreign(head.renderer), foreign(head.uuid), foreign(head.backEnd), foreign(head.program),
            head.when.toUTC().toString(Qt::ISODate).toHtmlEscaped(), foreign(head.media),
            QString::number(head.roundTrip));
}

QString htmlCounts(const Card &card)
{
    QString header;
    QString sums;
    for (Verdict verdict : allVerdicts()) {
        header += QStringLiteral("<th scope=\"col\">%1</th>").arg(textOf(verdict));
        sums += QStringLiteral("<td class=\"number\">%1</td>").arg(card.count(verdict));
    }
    QString rows;
    for (const QString &group : card.groups()) {
        rows += QStringLiteral("<tr><th scope=\"row\">%1</th>").arg(foreign(group));
        for (Verdict verdict : allVerdicts())
            rows += QStringLiteral("<td class=\"number\">%1</td>").arg(card.count(verdict, group));
        rows += QLatin1String("</tr>\n");
    }
    return QStringLiteral("<table>\n<tr><th scope=\"col\">group</th>%1</tr>\n%2<tr><th "
                          "scope=\"row\">all</th>%3</tr>\n</table>\n")
        .arg(header, rows, sums);
}

QString numberCell(const QString &number)
{
    return QLatin1String("<td class=\"number\">") + foreign(number) + QLatin1String("</td>");
}

QString htmlSenseRows(const Card &card)
{
    if (card.senseRows().isEmpty())
        return {};
    QString rows;
    for (const SenseRow &row : card.senseRows()) {
        rows += QLatin1String("<tr><td><code>") + plainText(row.id).toHtmlEscaped()
            + QLatin1String("</code></td><th scope=\"row\">") + foreign(row.what) + QLatin1String("</th>");
        rows += numberCell(SenseText::said(row));
        rows += row.cameOut
            ? numberCell(SenseText::cameOut(row))
            : QLatin1String("<td>") + foreign(SenseText::cameOut(row)) + QLatin1String("</td>");
        rows += numberCell(SenseText::difference(row));
        const char *const kind = row.isOff() ? "does-not-hold" : row.difference() ? "holds" : "not-tried";
        rows += QLatin1String("<td class=\"") + QLatin1String(kind) + QLatin1String("\">")
            + SenseText::verdict(row) + QLatin1String("</td></tr>\n");
    }
    return QLatin1String("<h2>what it says and what came out</h2>\n<table>\n<tr><th scope=\"col\">id</th>"
                         "<th scope=\"col\">what</th>"
                         "<th scope=\"col\">said</th><th scope=\"col\">came out</th>"
                         "<th scope=\"col\">difference</th><th scope=\"col\">verdict</th></tr>\n")
        + rows + QLatin1String("</table>\n");
}

QString htmlDetail(const Result &result)
{
    if (result.verdict == Verdict::DoesNotHold || result.verdict == Verdict::Overclaimed)
        return QStringLiteral("<details open><summary>evidence</summary><pre dir=\"ltr\">%1</pre></details>")
            .arg(plainLines(textOf(result.evidence)).toHtmlEscaped());
    return result.reason.isEmpty() ? QString() : foreign(result.reason);
}

QString htmlResults(const Card &card, const QString &group)
{
    QString rows;
    for (const Result &result : card.resultsOf(group)) {
        // Not all in one call: what is filled in may look like a place to fill.
        rows += QLatin1String("<tr><td><code>") + plainText(result.id).toHtmlEscaped()
            + QLatin1String("</code></td><td>") + foreign(result.sentence)
            + QLatin1String("</td><td class=\"") + keyOf(result.verdict) + QLatin1String("\">")
            + textOf(result.verdict) + QLatin1String("</td><td>") + htmlDetail(result)
            + QLatin1String("</td></tr>\n");
    }
    return QStringLiteral("<h2>%1</h2>\n<table class=\"results\">\n<tr><th scope=\"col\">id</th>"
                          "<th scope=\"col\">statement</th><th scope=\"col\">verdict</th>"
                          "<th scope=\"col\">why</th></tr>\n")
               .arg(foreign(group))
        + rows + QLatin1String("</table>\n");
}
} // namespace

QByteArray toHtml(const Card &card)
{
    QString page
        = QStringLiteral("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                         "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>");
    page += plainText(card.head().renderer).toHtmlEscaped() + QLatin1String(": conformance</title>\n<style>")
        + QLatin1String(style) + QLatin1String("</style>\n</head>\n<body>\n");
    page += htmlHead(card) + htmlCounts(card) + htmlSenseRows(card);
    for (const QString &group : card.groups())
        page += htmlResults(card, group);
    page += QLatin1String("</body>\n</html>\n");
    return page.toUtf8();
}
