// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"
#include "Statement.h"
#include "TestGroup.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

class StatementsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void idsAreUniqueAndOfTheirGroup();
    void sentencesAreSentences();
    void listIsWrittenDown();
};

void StatementsTest::idsAreUniqueAndOfTheirGroup()
{
    static const QRegularExpression form(QStringLiteral("^[a-z]+(-[a-z]+)*(\\.[a-z0-9]+(-[a-z0-9]+)*)+$"));
    QSet<QString> known;
    for (const StatementGroup &group : contractGroups()) {
        QVERIFY(!group.statements.isEmpty());
        for (const Statement &statement : group.statements) {
            QVERIFY2(form.match(statement.id).hasMatch(), qPrintable(statement.id));
            QCOMPARE(statement.group(), group.name);
            QVERIFY2(!known.contains(statement.id), qPrintable(statement.id));
            known.insert(statement.id);
        }
    }
    QCOMPARE(known.size(), contractStatements().size());
}

void StatementsTest::sentencesAreSentences()
{
    QSet<QString> known;
    for (const Statement &statement : contractStatements()) {
        QVERIFY2(statement.sentence.endsWith(QLatin1Char('.')), qPrintable(statement.id));
        QVERIFY2(statement.sentence.size() <= 130, qPrintable(statement.sentence));
        // It stands in tables.
        QVERIFY2(
            !statement.sentence.contains(QLatin1Char('|')) && !statement.sentence.contains(QLatin1Char('\n')),
            qPrintable(statement.id));
        QVERIFY2(!known.contains(statement.sentence), qPrintable(statement.sentence));
        known.insert(statement.sentence);
        QVERIFY(statement.tryOn != nullptr);
    }
}

/// With KELVO_WRITE_STATEMENTS set this writes the list anew.
void StatementsTest::listIsWrittenDown()
{
    QFile list(QStringLiteral(KELVO_STATEMENTS_LIST));
    if (qEnvironmentVariableIsSet("KELVO_WRITE_STATEMENTS")) {
        QVERIFY(list.open(QIODevice::WriteOnly));
        list.write(contractAsMarkdown());
        return;
    }
    QVERIFY(list.open(QIODevice::ReadOnly));
    QVERIFY2(list.readAll() == contractAsMarkdown(),
        "docs/conformance/statements.md is not of now: run this test with KELVO_WRITE_STATEMENTS=1");
}

KELVO_TEST(StatementsTest)
#include "StatementsTest.moc"
