// SPDX-License-Identifier: MIT
#include "JunitCard.h"

#include "Card.h"
#include "PlainText.h"

#include <QXmlStreamWriter>

#include <numeric>

namespace {
QString seconds(qint64 milliseconds)
{
    return QString::number(double(milliseconds) / 1000, 'f', 3);
}

void writeCounts(QXmlStreamWriter &xml, const Card &card)
{
    const QList<Result> &results = card.results();
    const qint64 time = std::accumulate(results.cbegin(), results.cend(), qint64(0),
        [](qint64 sum, const Result &result) { return sum + result.milliseconds; });
    xml.writeAttribute(QStringLiteral("tests"), QString::number(results.size()));
    xml.writeAttribute(QStringLiteral("failures"),
        QString::number(card.count(Verdict::DoesNotHold) + card.count(Verdict::Overclaimed)));
    xml.writeAttribute(QStringLiteral("errors"), QStringLiteral("0"));
    xml.writeAttribute(QStringLiteral("skipped"),
        QString::number(card.count(Verdict::Refused) + card.count(Verdict::NotTried)));
    xml.writeAttribute(QStringLiteral("time"), seconds(time));
}

void writeCase(QXmlStreamWriter &xml, const Result &result)
{
    xml.writeStartElement(QStringLiteral("testcase"));
    xml.writeAttribute(QStringLiteral("classname"), plainText(result.group()));
    xml.writeAttribute(QStringLiteral("name"), plainText(result.id));
    xml.writeAttribute(QStringLiteral("time"), seconds(result.milliseconds));
    if (result.verdict == Verdict::DoesNotHold || result.verdict == Verdict::Overclaimed) {
        xml.writeStartElement(QStringLiteral("failure"));
        xml.writeAttribute(QStringLiteral("type"), keyOf(result.verdict));
        xml.writeAttribute(QStringLiteral("message"), plainText(result.sentence));
        xml.writeCharacters(plainLines(textOf(result.evidence)));
        xml.writeEndElement();
    } else if (result.verdict != Verdict::Holds) {
        xml.writeEmptyElement(QStringLiteral("skipped"));
        xml.writeAttribute(QStringLiteral("message"),
            textOf(result.verdict) + QLatin1String(": ") + plainText(result.reason));
    }
    xml.writeEndElement();
}
} // namespace

QByteArray toJunit(const Card &card)
{
    QByteArray text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("testsuites"));
    writeCounts(xml, card);
    xml.writeStartElement(QStringLiteral("testsuite"));
    xml.writeAttribute(
        QStringLiteral("name"), QLatin1String("conformance of ") + plainText(card.head().renderer));
    xml.writeAttribute(QStringLiteral("timestamp"),
        card.head().when.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")));
    writeCounts(xml, card);
    for (const Result &result : card.results())
        writeCase(xml, result);
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeEndDocument();
    return text;
}
