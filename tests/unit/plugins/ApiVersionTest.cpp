// SPDX-License-Identifier: MIT
#include "ApiVersion.h"
#include "KelvoPlugin.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

class ApiVersionTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void whatIsBuiltWithTheseHeadersFits()
    {
        QCOMPARE(QString::fromLatin1(KelvoPlugin_iid), QStringLiteral("org.kelvo.Plugin/" KELVO_API_VERSION));
        QCOMPARE(ApiVersion::defectOf(QStringLiteral(KelvoPlugin_iid)), QString());
    }

    void fits_data()
    {
        QTest::addColumn<QString>("interface");
        QTest::addColumn<QString>("defect"); // how it begins; empty: it fits
        const QString other("made for version ");
        const QString foreign("made for the interface ");
        QTest::newRow("the same") << "org.kelvo.Plugin/3.2" << QString();
        QTest::newRow("older minor") << "org.kelvo.Plugin/3.1" << QString();
        QTest::newRow("first minor") << "org.kelvo.Plugin/3.0" << QString();
        QTest::newRow("newer minor") << "org.kelvo.Plugin/3.3" << other + "3.3";
        QTest::newRow("minor of two digits") << "org.kelvo.Plugin/3.10" << other + "3.10";
        QTest::newRow("older major") << "org.kelvo.Plugin/2.9" << other + "2.9";
        QTest::newRow("newer major") << "org.kelvo.Plugin/4.0" << other + "4.0";
        QTest::newRow("none") << ""
                              << "not a plug-in";
        QTest::newRow("somebody else's") << "org.example.Codec/3.2" << foreign + "org.example.Codec/3.2";
        QTest::newRow("longer name") << "xorg.kelvo.Plugin/3.2" << foreign;
        QTest::newRow("any letter for a dot") << "org-kelvo-Plugin/3.2" << foreign;
        QTest::newRow("no version") << "org.kelvo.Plugin" << foreign;
        QTest::newRow("no minor") << "org.kelvo.Plugin/3" << foreign;
        QTest::newRow("three numbers") << "org.kelvo.Plugin/3.2.1" << foreign;
        QTest::newRow("no numbers") << "org.kelvo.Plugin/x.y" << foreign;
        QTest::newRow("a number beyond all") << "org.kelvo.Plugin/3.99999999999999999999" << foreign;
        QTest::newRow("negative") << "org.kelvo.Plugin/3.-1" << foreign;
        QTest::newRow("line break behind") << "org.kelvo.Plugin/3.2\n" << foreign;
    }

    void fits()
    {
        QFETCH(QString, interface);
        QFETCH(QString, defect);
        const QString told = ApiVersion::defectOf(interface, 3, 2);
        QCOMPARE(told.isEmpty(), defect.isEmpty());
        QVERIFY2(told.startsWith(defect), qPrintable(told));
    }

    void saysWhatHelps()
    {
        QVERIFY(ApiVersion::defectOf("org.kelvo.Plugin/2.9", 3, 2)
                    .endsWith("built anew with the headers of this program"));
        QVERIFY(ApiVersion::defectOf("org.kelvo.Plugin/3.3", 3, 2).contains("needs a newer program"));
        QVERIFY(ApiVersion::defectOf("org.kelvo.Plugin/4.0", 3, 2).contains("needs a newer program"));
        QVERIFY(ApiVersion::defectOf("org.kelvo.Plugin/4.0", 3, 2).contains("this program has 3.2"));
    }
};

KELVO_TEST(ApiVersionTest)
#include "ApiVersionTest.moc"
