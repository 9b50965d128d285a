// SPDX-License-Identifier: MIT
#include "KelvoMessageHandler.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QTemporaryFile>
#include <QTest>
#include <QTextStream>

class MessageHandlerTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { KelvoMessageHandler::initKelvoLogging(false, nullptr); }

    void switchesDebugLines()
    {
        LogRecorder log;
        KelvoMessageHandler::initKelvoLogging(true, nullptr);
        qCDebug(lcKelvo) << "seen";
        KelvoMessageHandler::initKelvoLogging(false, nullptr);
        qCDebug(lcKelvo) << "not seen";
        qCWarning(lcKelvo) << "always seen";
        QCOMPARE(log.lines(), QStringList({"seen", "always seen"}));
    }

    void leavesTheProgramsOwnLinesAlone()
    {
        LogRecorder log;
        KelvoMessageHandler::initKelvoLogging(false, nullptr);
        qDebug() << "the console's line";
        QCOMPARE(log.lines(), QStringList("the console's line"));
    }

    void copiesToTheStream()
    {
        QString text;
        QTextStream stream(&text);
        KelvoMessageHandler::initKelvoLogging(true, &stream);
        qDebug() << "one";
        qCWarning(lcKelvo) << "two";
        KelvoMessageHandler::initKelvoLogging(true, nullptr);
        qDebug() << "three";
        QCOMPARE(text, "one\nkelvo: two\n");
    }

    /// Who reads the copy while the program runs, or after it has crashed, misses nothing.
    void eachLineIsInTheFileAtOnce()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        QTextStream stream(&file);
        KelvoMessageHandler::initKelvoLogging(true, &stream);
        const auto written = [&] {
            QFile reader(file.fileName());
            return reader.open(QIODevice::ReadOnly) ? reader.readAll() : QByteArray();
        };
        qDebug() << "one";
        QCOMPARE(written(), QByteArray("one\n"));
        qCWarning(lcKelvo) << "two";
        QCOMPARE(written(), QByteArray("one\nkelvo: two\n"));
    }
};

KELVO_TEST(MessageHandlerTest)
#include "MessageHandlerTest.moc"
