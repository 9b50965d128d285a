// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"

#include "GlibTables.h"

#include <QRegularExpression>
#include <QTest>

KelvoTestCase::KelvoTestCase()
{
    ignoreGlibTables();
}

void KelvoTestCase::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("No such (signal|slot)")));
    QTest::failOnWarning(QRegularExpression(QStringLiteral("^Selecting when no model")));
}
