// SPDX-License-Identifier: MIT
#include "RendererPattern.h"
#include "KelvoTestCase.h"
#include "Keyboard.h"
#include "Output.h"
#include "RecordingRenderer.h"
#include "TestGroup.h"

#include <QTest>

/// What testers write and press.
class RendererPatternTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void matches_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("found"); // uuids
        QTest::newRow("uuid") << "one"
                              << "one";
        QTest::newRow("uuids are as they are") << "ONE"
                                               << "";
        QTest::newRow("name") << "Kitchen"
                              << "one";
        QTest::newRow("name in other letters") << "kitchen"
                                               << "one";
        QTest::newRow("name that two have") << "Hall"
                                            << "two three";
        QTest::newRow("uuid before name") << "four"
                                          << "four";
        QTest::newRow("glob for names") << "K*n"
                                        << "one";
        QTest::newRow("glob for uuids") << "t[wh]*"
                                        << "two three";
        QTest::newRow("one letter") << "tw?"
                                    << "two";
        QTest::newRow("name with a star") << "a*"
                                          << "five";
        QTest::newRow("all") << "all"
                             << "one two three four five";
        QTest::newRow("part of a name") << "Kitch"
                                        << "";
        QTest::newRow("nothing") << ""
                                 << "";
        QTest::newRow("broken glob") << "["
                                     << "";
    }
    void matches()
    {
        RecordingRenderer one("one", "Kitchen");
        RecordingRenderer two("two", "Hall");
        RecordingRenderer three("three", "Hall");
        RecordingRenderer four("four", "");
        RecordingRenderer five("five", "a*");
        QFETCH(QString, pattern);
        QStringList uuids;
        for (const KelvoRenderer *renderer :
            RendererPattern(pattern).matchesAmong({&one, &two, &three, &four, &five}))
            uuids.append(renderer->uuid());
        QTEST(uuids.join(' '), "found");
    }

    void openPatterns()
    {
        QVERIFY(RendererPattern("all").isOpen());
        QVERIFY(RendererPattern("K*").isOpen());
        QVERIFY(!RendererPattern("Kitchen").isOpen());
    }

    void keys()
    {
        QCOMPARE(Keyboard::keysOf(" \x1b[C\x1bODnq+"),
            QList<Keyboard::Key>({Keyboard::Space, Keyboard::Forward, Keyboard::Back, Keyboard::Next,
                Keyboard::Quit, Keyboard::Louder}));
        QCOMPARE(Keyboard::keysOf("xyz\x1b[9~"), QList<Keyboard::Key>());
    }

    void printableTexts()
    {
        QCOMPARE(Output::printable("two\nlines\tof text äöü 😀"), QStringLiteral("two\nlines\tof text äöü 😀"));
        QCOMPARE(Output::printable(QStringLiteral("\u001b[2J\r\u0007\u202e\u2028\u0085")),
            QStringLiteral("\\u001b[2J\\u000d\\u0007\\u202e\\u2028\\u0085"));
    }
};

KELVO_TEST(RendererPatternTest)
#include "RendererPatternTest.moc"
