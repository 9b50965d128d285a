// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"

#include <QRegularExpression>
#include <QTest>

void KelvoTestCase::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("No such (signal|slot)")));
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^Selecting when no model")));
}
