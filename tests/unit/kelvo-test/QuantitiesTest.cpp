// SPDX-License-Identifier: MIT
#include "Quantities.h"
#include "KelvoTestCase.h"
#include "Spelling.h"
#include "TestGroup.h"

#include <QTest>

/// Times, tolerances and misspelt words as people write them.
class QuantitiesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void times_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("milliseconds"); // -1: none
        QTest::newRow("seconds") << "5 s" << 5000;
        QTest::newRow("without a blank") << "250ms" << 250;
        QTest::newRow("without a unit") << "3" << 3000;
        QTest::newRow("fraction") << " 1.5 s " << 1500;
        QTest::newRow("minutes") << "2 min" << 120'000;
        QTest::newRow("nothing") << "0 s" << 0;
        QTest::newRow("a day") << "86400 s" << 86'400'000;
        QTest::newRow("more than a day") << "86401 s" << -1;
        QTest::newRow("negative") << "-1 s" << -1;
        QTest::newRow("other unit") << "1 h" << -1;
        QTest::newRow("empty") << "" << -1;
        QTest::newRow("word") << "soon" << -1;
        QTest::newRow("exponent") << "1e3" << -1;
        QTest::newRow("huge") << "99999999999999999999" << -1;
    }
    void times()
    {
        QFETCH(QString, text);
        QFETCH(int, milliseconds);
        const auto time = Quantities::time(text);
        QCOMPARE(time ? int(time->count()) : -1, milliseconds);
    }

    void tolerances()
    {
        const auto position = Quantities::timeWithTolerance(QStringLiteral("3 s ± 250 ms"));
        QVERIFY(position);
        QCOMPARE(position->value, 3.0);
        QCOMPARE(position->deviation, 0.25);
        QVERIFY(position->takes(2.75) && position->takes(3.25));
        QVERIFY(!position->takes(2.749) && !position->takes(3.251));
        QCOMPARE(Quantities::text(*position), QStringLiteral("3 s ± 250 ms"));
        QCOMPARE(Quantities::timeWithTolerance(QStringLiteral("3 +- 1"))->deviation, 1.0);
        QCOMPARE(Quantities::timeWithTolerance(QStringLiteral("3 s"))->deviation, 0.0);
        QVERIFY(!Quantities::timeWithTolerance(QStringLiteral("3 ± 1 ± 1")));
        QVERIFY(!Quantities::timeWithTolerance(QStringLiteral("± 1")));
        QCOMPARE(Quantities::numberWithTolerance(QStringLiteral("-4.5 ± 0.5"))->value, -4.5);
        QVERIFY(!Quantities::numberWithTolerance(QStringLiteral("4 ± -1")));
        QVERIFY(!Quantities::numberWithTolerance(QStringLiteral("nan")));
    }

    void meantWords()
    {
        const QStringList known{"play", "playUri", "pauseAt", "stop"};
        QCOMPARE(Spelling::closest("playURL", known), QStringLiteral("playUri"));
        QCOMPARE(Spelling::closest("PAUSEAT", known), QStringLiteral("pauseAt"));
        QCOMPARE(Spelling::closest("stp", known), QStringLiteral("stop"));
        QCOMPARE(Spelling::closest("volume", known), QString());
        QCOMPARE(Spelling::closest(QString(100'000, 'p'), known), QString());
        QCOMPARE(Spelling::suggestion("plai", known), QStringLiteral("; did you mean \"play\"?"));
        QCOMPARE(
            Spelling::suggestion("x", known), QStringLiteral("; there are: play, playUri, pauseAt, stop"));
        QCOMPARE(Spelling::suggestion("x", {}), QString());
    }
};

KELVO_TEST(QuantitiesTest)
#include "QuantitiesTest.moc"
