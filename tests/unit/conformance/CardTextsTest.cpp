// SPDX-License-Identifier: MIT
// A card as JSON, Markdown and HTML, with texts that would be more than texts.
#include "KelvoTestCase.h"
#include "TestGroup.h"
#include "card/Card.h"
#include "card/HtmlCard.h"
#include "card/JsonCard.h"
#include "card/MarkdownCard.h"
#include "card/PlainText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

namespace {
// Markup, an entity, an end of everything, a place for QString::arg(), a colour of a terminal, a direction, half a
// character, and what XML does not allow.
const QString hostile = QStringLiteral("<script>alert('x')</script> &lt; ]]> \" | `%1` *a* [b](c) \x1b[31m ")
    + QChar(0x202E) + QStringLiteral("txt") + QChar(0xD800) + QChar(0xFFFE) + QChar(0);

Card hostileCard()
{
    CardHead head;
    head.renderer = hostile;
    head.uuid = hostile;
    head.backEnd = hostile;
    head.program = hostile;
    head.media = hostile;
    head.when = QDateTime(QDate(2026, 11, 22), QTime(8, 0), Qt::UTC);
    head.roundTrip = 12;
    Result failed;
    failed.id = QStringLiteral("state.failed");
    failed.sentence = hostile;
    failed.verdict = Verdict::DoesNotHold;
    failed.evidence.expected = hostile;
    failed.evidence.came = hostile;
    failed.evidence.where = QStringLiteral("a.cpp:1");
    failed.evidence.violations = QStringList{hostile};
    for (int i = 0; i < 15; ++i)
        failed.evidence.events.append({1000 * i, QStringLiteral("event %1 ").arg(i) + hostile});
    failed.milliseconds = 1500;
    Result refused;
    refused.id = QStringLiteral("seek.refused");
    refused.verdict = Verdict::Refused;
    refused.reason = hostile;
    refused.needs = {Ability::Seek};
    Result held;
    held.id = QStringLiteral("seek.held");
    held.verdict = Verdict::Holds;
    held.needs = {Ability::Seek};
    Result overclaimed;
    overclaimed.id = QStringLiteral("pause-at.claimed");
    overclaimed.verdict = Verdict::Overclaimed;
    Result untried;
    untried.id = QStringLiteral("state.untried");
    untried.reason = hostile;
    return Card(head, {failed, refused, held, overclaimed, untried});
}

SenseRow senseRow(const QString &id, std::optional<double> said, std::optional<double> cameOut)
{
    SenseRow row;
    row.id = id;
    row.what = id + QStringLiteral(" in words");
    row.unit = QStringLiteral("s");
    row.said = said;
    row.cameOut = cameOut;
    row.error = 0.0105;
    row.limit = 0.2;
    row.doubt = cameOut ? QString() : hostile;
    return row;
}

/// Nothing but what was heard: one that agrees, one that is off, and two that are not known.
Card sensedCard()
{
    Card card({}, {});
    card.setSenseRows({senseRow(QStringLiteral("start"), 0.1, 0.3),
        senseRow(QStringLiteral("pause"), 0.001, 0.3), senseRow(QStringLiteral("seek"), 20.0, std::nullopt),
        senseRow(QStringLiteral("stop"), std::nullopt, 0.02)});
    return card;
}
} // namespace

class CardTextsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void plainTextShowsWhatWouldCommand_data();
    void plainTextShowsWhatWouldCommand();
    void jsonHasEverything();
    void htmlKeepsTextsAsTexts();
    void markdownKeepsTextsAsTexts();
    void emptyCards();
    void whatCameOut();
};

void CardTextsTest::plainTextShowsWhatWouldCommand_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("plain");
    QTest::newRow("plain") << QStringLiteral("Ünïcode, 日本") << QStringLiteral("Ünïcode, 日本");
    QTest::newRow("lines") << "a\nb\tc"
                           << "a b c";
    QTest::newRow("return") << "a\rb"
                            << "a\\u000db";
    QTest::newRow("escape") << QStringLiteral("\x1b[31m") << "\\u001b[31m";
    QTest::newRow("c1") << QString(QChar(0x9B)) << "\\u009b";
    QTest::newRow("override") << QString(QChar(0x202E)) << "\\u202e";
    QTest::newRow("isolate") << QString(QChar(0x2067)) << "\\u2067";
    QTest::newRow("separator") << QString(QChar(0x2028)) << "\\u2028";
    QTest::newRow("no character") << QString(QChar(0xFFFE)) << "\\ufffe";
    QTest::newRow("half a character") << QString(QChar(0xD83D)) << QString(QChar(0xFFFD));
    QTest::newRow("beyond 16 bits") << QStringLiteral("\U0001F3B5") << QStringLiteral("\U0001F3B5");
    QTest::newRow("null") << QString(QChar(0)) << "\\u0000";
}

void CardTextsTest::plainTextShowsWhatWouldCommand()
{
    QFETCH(QString, text);
    QFETCH(QString, plain);
    QCOMPARE(plainText(text), plain);
}

void CardTextsTest::jsonHasEverything()
{
    QJsonParseError error;
    const QJsonObject card = QJsonDocument::fromJson(toJson(hostileCard()), &error).object();
    QCOMPARE(error.error, QJsonParseError::NoError);
    QCOMPARE(card.value("kelvo-conformance").toInt(), 1);
    QCOMPARE(card.value("when").toString(), QStringLiteral("2026-11-22T08:00:00Z"));
    QCOMPARE(card.value("renderer").toObject().value("round-trip").toDouble(), 0.012);
    QVERIFY(card.value("renderer").toObject().value("name").toString().startsWith(QLatin1String("<script>")));
    QCOMPARE(card.value("counts").toObject().value("does-not-hold").toInt(), 1);
    QCOMPARE(card.value("counts").toObject().value("holds").toInt(), 1);
    const QJsonArray results = card.value("results").toArray();
    QCOMPARE(results.size(), 5);
    const QJsonObject failed = results.at(0).toObject();
    QCOMPARE(failed.value("verdict").toString(), QStringLiteral("does-not-hold"));
    QCOMPARE(failed.value("seconds").toDouble(), 1.5);
    const QJsonObject evidence = failed.value("evidence").toObject();
    QCOMPARE(evidence.value("where").toString(), QStringLiteral("a.cpp:1"));
    QCOMPARE(evidence.value("violations").toArray().size(), 1);
    // The last ten, with their times.
    const QJsonArray events = evidence.value("events").toArray();
    QCOMPARE(events.size(), 10);
    QCOMPARE(events.at(0).toObject().value("time").toDouble(), 5.0);
    QVERIFY(results.at(1).toObject().contains("reason"));
    QVERIFY(!results.at(1).toObject().contains("evidence"));
    QCOMPARE(results.at(1).toObject().value("needs").toArray().at(0).toString(), QStringLiteral("seek"));
}

void CardTextsTest::htmlKeepsTextsAsTexts()
{
    const QString page = QString::fromUtf8(toHtml(hostileCard()));
    QVERIFY(!page.contains(QLatin1String("<script")));
    QVERIFY(!page.contains(QLatin1String("alert('x')<")));
    QVERIFY(page.contains(QLatin1String("&lt;script&gt;")));
    QVERIFY(page.contains(QLatin1String("&amp;lt;")));
    QVERIFY(page.contains(QLatin1String("%1")));
    QVERIFY(page.contains(QLatin1String("\\u202e")));
    for (int code : {0x1b, 0x202E, 0xFFFE, 0})
        QVERIFY2(!page.contains(QChar(code)), qPrintable(QString::number(code, 16)));
    // It needs nothing else.
    for (const char *reference : {"http:", "https:", "src=", "href=", "@import", "url("})
        QVERIFY2(!page.contains(QLatin1String(reference)), reference);
    QVERIFY(page.contains(QLatin1String("5 events before these")));
    QVERIFY(page.contains(QLatin1String("prefers-color-scheme: dark")));
    for (Verdict verdict : allVerdicts())
        QVERIFY2(page.contains(QLatin1String("class=\"") + keyOf(verdict) + QLatin1Char('"')),
            qPrintable(keyOf(verdict)));
}

void CardTextsTest::markdownKeepsTextsAsTexts()
{
    const QString page = QString::fromUtf8(toMarkdown(hostileCard()));
    for (const QString &line : page.split(QLatin1Char('\n'))) {
        // Lines of a block are texts as they are.
        if (line.startsWith(QLatin1String("    ")))
            continue;
        QVERIFY2(!line.contains(QLatin1String("<script")), qPrintable(line));
        QVERIFY2(!line.contains(QLatin1String("[b](c)")), qPrintable(line));
        QVERIFY2(!line.contains(QLatin1String(" *a* ")), qPrintable(line));
        // A table keeps its columns.
        if (line.startsWith(QLatin1String("| seek.refused")))
            QCOMPARE(QString(line).remove(QLatin1String("\\|")).count(QLatin1Char('|')), 3);
    }
    QVERIFY(page.contains(QLatin1String("| seek.refused |")));
    QVERIFY(page.contains(QLatin1String("### state.failed")));
    QVERIFY(page.contains(QLatin1String("## What it claims and does not do")));
    for (int code : {0x1b, 0x202E, 0xFFFE, 0})
        QVERIFY2(!page.contains(QChar(code)), qPrintable(QString::number(code, 16)));
}

void CardTextsTest::emptyCards()
{
    const Card card({}, {});
    QVERIFY(!toHtml(card).isEmpty());
    QVERIFY(!toMarkdown(card).isEmpty());
    QVERIFY(!QJsonDocument::fromJson(toJson(card)).isNull());
}

void CardTextsTest::whatCameOut()
{
    QVERIFY(!sensedCard().isClean());
    const QString markdown = QString::fromUtf8(toMarkdown(sensedCard()));
    QVERIFY2(markdown.contains(
                 QStringLiteral("| start in words | 0.100 s | 0.300 s ± 10.5 ms | \\+200.0 ms | agrees |\n")),
        qPrintable(markdown));
    QVERIFY(markdown.contains(
        QStringLiteral("| pause in words | 0.001 s | 0.300 s ± 10.5 ms | \\+299.0 ms | is off |\n")));
    QVERIFY(markdown.contains(QStringLiteral("| seek in words | 20.000 s | not measured\\: &lt;script")));
    QVERIFY(markdown.contains(QStringLiteral("| stop in words |  | 0.020 s ± 10.5 ms |  | not known |\n")));
    const QString html = QString::fromUtf8(toHtml(sensedCard()));
    QVERIFY(html.contains(QLatin1String("<td class=\"does-not-hold\">is off</td>")));
    QVERIFY(!html.contains(QLatin1String("<script")));
    const QJsonArray rows
        = QJsonDocument::fromJson(toJson(sensedCard())).object()[QLatin1String("came-out")].toArray();
    QCOMPARE(rows.size(), 4);
    QCOMPARE(rows.at(1)[QLatin1String("off")].toBool(), true);
    QCOMPARE(rows.at(1)[QLatin1String("came-out")].toDouble(), 0.3);
    QVERIFY(rows.at(2)[QLatin1String("came-out")].isNull() && !rows.at(2)[QLatin1String("off")].toBool());
    // Where nobody listened.
    QVERIFY(!toMarkdown(hostileCard()).contains("came out"));
    QVERIFY(!QJsonDocument::fromJson(toJson(hostileCard())).object().contains(QLatin1String("came-out")));
}

KELVO_TEST(CardTextsTest)
#include "CardTextsTest.moc"
