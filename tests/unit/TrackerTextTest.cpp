// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"
#include "TestGroup.h"
#include "index/TextRepair.h"
#include "store/FileUri.h"
#include "store/Sparql.h"

#include <QTest>

class TrackerTextTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void decodesWhatIsGiven_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("ascii") << QByteArray("Plain") << "Plain";
        QTest::newRow("utf-8") << QByteArray("Bj\xc3\xb6rk") << QString::fromUtf8("Björk");
        QTest::newRow("latin-1") << QByteArray("Bj\xf6rk") << QString::fromUtf8("Björk");
        QTest::newRow("windows-1252") << QByteArray("Don\x92t \x80") << QString::fromUtf8("Don’t €");
        QTest::newRow("windows-1251") << QByteArray("\xcf\xf0\xe8\xe2\xe5\xf2 \xec\xe8\xf0, \xfd\xf2\xee "
                                                    "\xef\xe5\xf1\xed\xff \xee \xe2\xe5\xf1\xed\xe5")
                                      << QString::fromUtf8("Привет мир, это песня о весне");
        QTest::newRow("empty") << QByteArray() << QString();
    }

    void decodesWhatIsGiven()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QCOMPARE(TextRepair::decode(bytes), text);
    }

    void guessesTheShiftJisOfATitleByItsContext()
    {
        const QByteArray title("\x8d\xf7\x82\xcc\x89\xd4"); // 桜の花
        const QByteArray album("\x93\xfa\x96\x7b\x82\xcc\x89\xcc\x82\xc6\x83\x8d\x83\x62\x83\x4e");
        QCOMPARE(TextRepair::decode(title, album), QString::fromUtf8("桜の花"));
    }

    void tidiesTexts()
    {
        QCOMPARE(TextRepair::tidy("  a\tb\nc\x01 "), "a b c");
        QCOMPARE(TextRepair::tidy(QString::fromUtf8("u\xcc\x88")), QString::fromUtf8("ü"));
        QCOMPARE(TextRepair::tidy(QString(5'000'000, 'x')).size(), 1000);
    }

    void escapesLiterals()
    {
        QCOMPARE(Sparql::literal(QByteArray()), QByteArray("\"\""));
        QCOMPARE(
            Sparql::literal(QByteArray("\b\t\n\f\r\"'\\")), QByteArray("\"\\b\\t\\n\\f\\r\\\"\\'\\\\\""));
        QCOMPARE(Sparql::literal(QByteArray("a\0b\x01", 4)), QByteArray("\"ab\x01\""));
        QCOMPARE(Sparql::literal(QString::fromUtf8("Björk?")), QByteArray("\"Bj\xc3\xb6rk?\""));
    }

    void spellsFileUrisInOneWay_data()
    {
        QTest::addColumn<QByteArray>("uri");
        QTest::addColumn<QByteArray>("canonical");
        QTest::newRow("plain") << QByteArray("file:///a/b.mp3") << QByteArray("file:///a/b.mp3");
        QTest::newRow("needless escapes")
            << QByteArray("file:///%61/b%2emp3") << QByteArray("file:///a/b.mp3");
        QTest::newRow("missing escapes") << QByteArray("file:///a b") << QByteArray("file:///a%20b");
        QTest::newRow("dots") << QByteArray("file:///a/../c/./d") << QByteArray("file:///c/d");
        QTest::newRow("bytes") << QByteArray("file:///caf%e9") << QByteArray("file:///caf%E9");
        QTest::newRow("other scheme") << QByteArray("http://h/%61") << QByteArray("http://h/%61");
    }

    void spellsFileUrisInOneWay()
    {
        QFETCH(QByteArray, uri);
        QFETCH(QByteArray, canonical);
        QCOMPARE(FileUri::canonical(uri), canonical);
    }
};

KELVO_TEST(TrackerTextTest)
#include "TrackerTextTest.moc"
