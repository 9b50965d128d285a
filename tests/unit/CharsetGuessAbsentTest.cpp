// SPDX-License-Identifier: MIT
// Texts in a build that does not guess encodings.
#include "KelvoTestCase.h"
#include "index/TextRepair.h"

#include <QTest>

class CharsetGuessAbsentTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void takesWhatIsNotUtf8ForWestern()
    {
        QCOMPARE(TextRepair::decode("Bj\xc3\xb6rk"), QString::fromUtf8("Björk"));
        QCOMPARE(TextRepair::decode("Don\x92t \x80"), QString::fromUtf8("Don’t €"));
        // Windows-1251
        QCOMPARE(TextRepair::decode("\xcf\xf0\xe8\xe2\xe5\xf2"), QString::fromUtf8("Ïðèâåò"));
    }
};

QTEST_GUILESS_MAIN(CharsetGuessAbsentTest)
#include "CharsetGuessAbsentTest.moc"
