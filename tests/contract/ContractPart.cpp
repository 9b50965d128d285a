// SPDX-License-Identifier: MIT
#include "ContractPart.h"

#include "Subject.h"

#include <QTest>

#include <utility>

ContractPart::ContractPart(Subject &subject, StatementGroup group)
    : m_subject(subject)
    , m_group(std::move(group))
{
}

void ContractPart::holds_data()
{
    QTest::addColumn<int>("number");
    for (int i = 0; i < m_group.statements.size(); ++i)
        QTest::newRow(qPrintable(m_group.statements.at(i).id)) << i;
}

void ContractPart::holds()
{
    QFETCH(int, number);
    const Statement &statement = m_group.statements.at(number);
    for (Ability ability : statement.needs) {
        const QString reason = m_subject.whyNot(ability);
        if (!reason.isEmpty())
            QSKIP(qPrintable(reason));
    }
    const Finding finding = statement.tryOn(m_subject);
    QVERIFY2(finding.kind != Finding::NotTried, qPrintable(finding.reason));
    QVERIFY2(finding.kind == Finding::Held,
        qPrintable(statement.sentence + QLatin1Char('\n') + textOf(finding.evidence)));
}
