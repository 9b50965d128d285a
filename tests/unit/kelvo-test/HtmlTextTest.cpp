// SPDX-License-Identifier: MIT
#include "HtmlText.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QJsonObject>
#include <QTest>

/// Texts of others stay texts.
class HtmlTextTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void textStaysText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("html");
        QTest::newRow("plain") << "A song" << QByteArray("A song");
        QTest::newRow("element") << "<script>x()</script>" << QByteArray("&lt;script&gt;x()&lt;/script&gt;");
        QTest::newRow("attribute") << "\" onclick='x()'" << QByteArray("&quot; onclick=&#39;x()&#39;");
        QTest::newRow("entity") << "&lt;" << QByteArray("&amp;lt;");
        QTest::newRow("comment") << "--><!--" << QByteArray("--&gt;&lt;!--");
        QTest::newRow("umlaut") << QString::fromUtf8("Für") << QByteArray("Für");
        QTest::newRow("beyond the first plane") << QString::fromUtf8("🎵") << QByteArray("🎵");
        QTest::newRow("letters from right to left") << QString::fromUtf8("שלום") << QByteArray("שלום");
        QTest::newRow("joiner") << QString::fromUtf8("👩‍🎤") << QByteArray("👩‍🎤");
        QTest::newRow("bell") << QString("a\ab") << QByteArray("a\\u0007b");
        QTest::newRow("zero") << QString(QChar(u'\0')) << QByteArray("\\u0000");
        QTest::newRow("line end") << QString("a\nb") << QByteArray("a\\u000ab");
        QTest::newRow("C1") << QString(QChar(0x9b)) << QByteArray("\\u009b");
        QTest::newRow("delete") << QString(QChar(0x7f)) << QByteArray("\\u007f");
        for (const int mark :
            {0x200e, 0x200f, 0x061c, 0x202a, 0x202e, 0x2066, 0x2069, 0xfeff, 0x2028, 0x2029}) {
            QTest::addRow("mark %x", mark) << QString(
                QChar(mark)) << QByteArray("\\u" + QByteArray::number(mark, 16).rightJustified(4, '0'));
        }
        QTest::newRow("half a pair") << QString(QChar(0xd83c)) << QByteArray("\\ud83c");
        QTest::newRow("other half") << QString(QChar(0xdfb5)) + "x" << QByteArray("\\udfb5x");
        QTest::newRow("tag") << QString::fromUcs4(U"\U000e0041") << QByteArray("\\udb40\\udc41");
        QTest::newRow("no character") << QString(QChar(0xffff)) << QByteArray("\\uffff");
    }

    void textStaysText()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, html);
        QCOMPARE(HtmlText::of(text), html);
    }

    void jsonStaysJson()
    {
        QCOMPARE(HtmlText::ofJson(QJsonArray{"<b>", 1.5, QJsonValue(), QJsonObject{{"a\n", true}}}),
            QByteArray("[&quot;&lt;b&gt;&quot;,1.5,null,{&quot;a\\n&quot;:true}]"));
        QCOMPARE(HtmlText::ofJson(QString(QChar(0x202e))), QByteArray("&quot;\\u202e&quot;"));
        QCOMPARE(HtmlText::ofJson(7), QByteArray("7"));
    }
};

KELVO_TEST(HtmlTextTest)
#include "HtmlTextTest.moc"
