// SPDX-License-Identifier: MIT
#include "TimeText.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

#include <limits>

class TimeTextTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void position_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<uint>("seconds");
        QTest::addColumn<QString>("after");
        QTest::newRow("zero") << "0:00 /\n3:56" << 0U << "0:00 /\n3:56";
        QTest::newRow("minute") << "0:59 /\n3:56" << 65U << "1:05 /\n3:56";
        QTest::newRow("two digits of minutes") << "9:59 /\n99:59" << 600U << "10:00 /\n99:59";
        QTest::newRow("three digits of minutes") << "99:59 /\n200:00" << 6000U << "100:00 /\n200:00";
        QTest::newRow("back to one digit") << "100:00 /\n200:00" << 5U << "0:05 /\n200:00";
        QTest::newRow("a thousand minutes") << "999:59 /\n2000:00" << 60000U << "1000:00 /\n2000:00";
        QTest::newRow("beyond, leading digits accumulate")
            << "1000:00 /\n2000:00" << 60001U << "11000:01 /\n2000:00";
        QTest::newRow("no position in the text") << "Scan\n..." << 5U << "Scan\n...";
        QTest::newRow("empty") << QString() << 5U << QString();
    }

    void position()
    {
        QFETCH(QString, before);
        QFETCH(uint, seconds);
        QFETCH(QString, after);
        QCOMPARE(TimeText::withPosition(before, seconds), after);
    }

    void durationOfAnyLength()
    {
        QCOMPARE(TimeText::duration(59), QStringLiteral("0:00 /\n0:59"));
        QCOMPARE(TimeText::duration(60), QStringLiteral("0:00 /\n1:00"));
        QCOMPARE(TimeText::duration(std::numeric_limits<int>::min()), QStringLiteral("0:00 /\n0:00"));
        QCOMPARE(TimeText::duration(std::numeric_limits<int>::max()), QStringLiteral("0:00 /\n35791394:07"));
    }
};

KELVO_TEST(TimeTextTest)
#include "TimeTextTest.moc"
