// SPDX-License-Identifier: MIT
#include "RecordingReader.h"
#include "KelvoTestCase.h"
#include "PeakMemory.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {
const QByteArray header = R"({"kelvo-recording":1,"program":"console","started":"2026-11-22T08:00:00.000Z"})";
const QByteArray playing
    = R"({"time":1.5,"uuid":"r","kind":"report","name":"stateChanged","arguments":["Playing"]})";
} // namespace

/// What is read of recordings, whole or damaged.
class RecordingReaderTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_reader = std::make_unique<RecordingReader>();
    }

    void aLineIsAnEvent()
    {
        QVERIFY(open(header + '\n' + playing + '\n'));
        const std::optional<RecordedEvent> event = m_reader->next();
        QVERIFY(event);
        QCOMPARE(event->time, 1.5);
        QCOMPARE(event->uuid, "r");
        QCOMPARE(event->kind, "report");
        QCOMPARE(event->name, "stateChanged");
        QCOMPARE(event->arguments, QJsonArray{"Playing"});
        QCOMPARE(event->run, 0);
        QVERIFY(!m_reader->next());
        QCOMPARE(m_reader->header().value("program").toString(), "console");
        QCOMPARE(m_reader->skippedLines(), 0);
        QCOMPARE(m_reader->error(), QString());
    }

    void whatIsUnknownIsKept()
    {
        QVERIFY(open(header
            + "\n"
              R"({"time":2,"kind":"heard","level":-3,"name":7,"arguments":{}})"));
        const std::optional<RecordedEvent> event = m_reader->next();
        QVERIFY(event);
        QCOMPARE(event->kind, "heard");
        QCOMPARE(event->uuid, QString());
        QCOMPARE(event->name, QString());
        QCOMPARE(event->arguments, QJsonArray());
        QCOMPARE(event->all.value("level").toInt(), -3);
    }

    void aLastLineWithoutItsEndCountsWhenItIsWhole()
    {
        QVERIFY(open(header + '\n' + playing));
        QVERIFY(m_reader->next());
        QVERIFY(!m_reader->next());
        QCOMPARE(m_reader->skippedLines(), 0);
    }

    void aCutLineIsCounted()
    {
        QVERIFY(open(header + '\n' + playing + '\n' + playing.left(30)));
        QVERIFY(m_reader->next());
        QVERIFY(!m_reader->next());
        QCOMPARE(m_reader->skippedLines(), 1);
        QCOMPARE(m_reader->error(), QString());
    }

    void whatIsNoEventIsCounted_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("counted");
        QTest::newRow("words") << QByteArray("no JSON") << 1;
        QTest::newRow("array") << QByteArray("[1,2]") << 1;
        QTest::newRow("empty object") << QByteArray("{}") << 1;
        QTest::newRow("no time") << QByteArray(R"({"kind":"report"})") << 1;
        QTest::newRow("time as text") << QByteArray(R"({"time":"1","kind":"report"})") << 1;
        QTest::newRow("endless time") << QByteArray(R"({"time":1e999,"kind":"report"})") << 1;
        QTest::newRow("no kind") << QByteArray(R"({"time":1})") << 1;
        QTest::newRow("zeros") << QByteArray(100, '\0') << 1;
        QTest::newRow("no UTF-8") << QByteArray("{\"time\":1,\"kind\":\"\xff\xfe\"}") << 1;
        QTest::newRow("an empty line is none") << QByteArray("") << 0;
        QTest::newRow("line end of other systems") << QByteArray("\r") << 0;
        QTest::newRow("deep") << QByteArray(100000, '[') << 1;
    }

    void whatIsNoEventIsCounted()
    {
        QFETCH(QByteArray, line);
        QFETCH(int, counted);
        QVERIFY(open(header + '\n' + line + '\n' + playing + '\n'));
        const std::optional<RecordedEvent> event = m_reader->next();
        QVERIFY(event);
        QCOMPARE(event->name, "stateChanged");
        QCOMPARE(m_reader->skippedLines(), counted);
    }

    void aLineThatIsTooLongIsSkipped_data()
    {
        QTest::addColumn<qint64>("more");
        QTest::addColumn<bool>("isRead");
        QTest::newRow("just as long") << qint64(0) << true;
        QTest::newRow("one more") << qint64(1) << false;
        QTest::newRow("many times") << 5 * RecordingReader::LongestLine << false;
    }

    void aLineThatIsTooLongIsSkipped()
    {
        QFETCH(qint64, more);
        QFETCH(bool, isRead);
        QByteArray line = R"({"time":1,"kind":"long","name":"")";
        line.insert(line.size() - 1, QByteArray(RecordingReader::LongestLine - line.size() - 2 + more, 'x'));
        line += "}\n";
        QCOMPARE(line.size(), RecordingReader::LongestLine + more);
        QVERIFY(open(header + '\n' + line + playing + '\n'));
        if (isRead)
            QCOMPARE(m_reader->next()->kind, "long");
        QCOMPARE(m_reader->next()->name, "stateChanged");
        QCOMPARE(m_reader->skippedLines(), isRead ? 0 : 1);
    }

    void aSecondHeaderBeginsAnotherRun()
    {
        const QByteArray other = R"({"kelvo-recording":1,"program":"other"})";
        QVERIFY(open(header + '\n' + playing + '\n' + other + '\n' + playing + '\n'));
        QCOMPARE(m_reader->runs(), 1);
        QCOMPARE(m_reader->next()->run, 0);
        QCOMPARE(m_reader->next()->run, 1);
        QCOMPARE(m_reader->header().value("program").toString(), "other");
        QCOMPARE(m_reader->runs(), 2);
    }

    void aRunAfterACutLineIsFound()
    {
        QVERIFY(open(header + '\n' + playing.left(30) + header + '\n' + playing));
        const std::optional<RecordedEvent> event = m_reader->next();
        QVERIFY(event);
        QCOMPARE(event->run, 1);
    }

    void whatIsNoRecordingIsRefused_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("reason");
        const QString none = QStringLiteral("is no recording: its first line has no \"kelvo-recording\"");
        QTest::newRow("empty") << QByteArray() << "is empty";
        QTest::newRow("only line ends") << QByteArray("\n\n") << "is empty";
        QTest::newRow("words") << QByteArray("Dear reader,\n") << none;
        QTest::newRow("event first") << playing << none;
        QTest::newRow("zeros") << QByteArray(4096, '\0') << none;
        QTest::newRow("next version")
            << QByteArray(R"({"kelvo-recording":2})") << "is of version 2, this program reads version 1";
        QTest::newRow("version as text") << QByteArray(R"({"kelvo-recording":"1"})")
                                         << "is of version \"1\", this program reads version 1";
        QTest::newRow("in between") << QByteArray(R"({"kelvo-recording":1.5})")
                                    << "is of version 1.5, this program reads version 1";
    }

    void whatIsNoRecordingIsRefused()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, reason);
        QVERIFY(!open(content));
        QCOMPARE(m_openError, m_path + ' ' + reason);
        QVERIFY(!m_reader->next());
    }

    void whatCannotBeReadIsRefused()
    {
        QString error;
        QVERIFY(!m_reader->open(m_folder.path(), &error));
        QCOMPARE(error, m_folder.path() + " is a folder");
        QVERIFY(!m_reader->open(m_folder.filePath("none"), &error));
        QVERIFY2(error.startsWith(m_folder.filePath("none") + " cannot be read: "), qPrintable(error));
    }

    void aRunOfAnotherVersionEndsTheReading()
    {
        QVERIFY(open(header + '\n' + playing + "\n{\"kelvo-recording\":3}\n" + playing + '\n'));
        QVERIFY(m_reader->next());
        QVERIFY(!m_reader->next());
        QCOMPARE(m_reader->error(), m_path + " is of version 3, this program reads version 1");
        QVERIFY(!m_reader->next());
    }

    void anotherFileBeginsAnew()
    {
        QVERIFY(open(header + "\nno JSON\n" + header));
        QVERIFY(!m_reader->next());
        QVERIFY(open(header + '\n' + playing));
        QCOMPARE(m_reader->runs(), 1);
        QCOMPARE(m_reader->skippedLines(), 0);
        QCOMPARE(m_reader->next()->run, 0);
    }

    /// What is kept of a file does not grow with it: here with its events, and with one line of 256 MB.
    void memoryStaysFlat()
    {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(header + '\n');
        constexpr int written = 50000;
        for (int i = 0; i < written; ++i)
            file.write(playing + '\n');
        QVERIFY(file.resize(file.size() + 256 * 1024 * 1024));
        file.close();
        const qint64 before = peakMemory();
        QVERIFY(m_reader->open(m_path, &m_openError));
        int events = 0;
        while (m_reader->next())
            ++events;
        QCOMPARE(events, written);
        QCOMPARE(m_reader->skippedLines(), 1);
        const qint64 grown = peakMemory() - before;
        QVERIFY2(grown < 16 * 1024 * 1024, qPrintable(QString::number(grown)));
    }

private:
    bool open(const QByteArray &content)
    {
        QFile file(m_path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            return false;
        file.close();
        return m_reader->open(m_path, &m_openError);
    }

    QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath("run.jsonl");
    std::unique_ptr<RecordingReader> m_reader;
    QString m_openError;
};

QTEST_GUILESS_MAIN(RecordingReaderTest)
#include "RecordingReaderTest.moc"
