// SPDX-License-Identifier: MIT
#include "RecordedRun.h"
#include "HandWritten.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTemporaryDir>
#include <QTest>

/// Which events of a recording belong to a run.
class RecordedRunTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        QFile::remove(m_path);
        m_error.clear();
    }

    void theOnlyRun()
    {
        QVERIFY(append("0 r command play []\n1 r report stateChanged [\"Playing\"]", "one"));
        RecordedRun run;
        QVERIFY2(run.open(m_path, &m_error), qPrintable(m_error));
        QCOMPARE(run.events(), 2);
        QCOMPARE(run.run(), 0);
        QCOMPARE(run.runs(), 1);
        QCOMPARE(run.header().value("program").toString(), "one");
        QCOMPARE(visited(run), QStringList({"0 play", "1 stateChanged"}));
    }

    void theLastOfSeveralUnlessAnotherIsChosen()
    {
        QVERIFY(append("0 r command play []", "one"));
        QVERIFY(append("0 r command stop []\n1 r command pause []", "two"));
        RecordedRun run;
        QVERIFY(run.open(m_path, &m_error));
        QCOMPARE(run.run(), 1);
        QCOMPARE(run.runs(), 2);
        QCOMPARE(run.events(), 2);
        QCOMPARE(run.header().value("program").toString(), "two");
        QCOMPARE(visited(run), QStringList({"0 stop", "1 pause"}));
        QVERIFY(run.open(m_path, &m_error, 0));
        QCOMPARE(run.run(), 0);
        QCOMPARE(run.header().value("program").toString(), "one");
        QCOMPARE(visited(run), QStringList("0 play"));
        QVERIFY(!run.open(m_path, &m_error, 2));
        QCOMPARE(m_error, m_path + " has no run 3: it has 2");
    }

    void aRunWithoutEvents()
    {
        QVERIFY(append("0 r command play []", "one"));
        QVERIFY(append("", "two"));
        RecordedRun run;
        QVERIFY(run.open(m_path, &m_error));
        QCOMPARE(run.run(), 1);
        QCOMPARE(run.events(), 0);
        QCOMPARE(run.header().value("program").toString(), "two");
        QCOMPARE(visited(run), QStringList());
        QVERIFY(run.open(m_path, &m_error, 0));
        QCOMPARE(run.header().value("program").toString(), "one");
        QCOMPARE(run.events(), 1);
    }

    void whatComesLaterIsLeftOut()
    {
        QVERIFY(append("0 r command play []", "one"));
        RecordedRun run;
        QVERIFY(run.open(m_path, &m_error));
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::Append));
        file.write("{\"time\":2,\"kind\":\"command\",\"name\":\"stop\"}\n");
        file.close();
        QCOMPARE(visited(run), QStringList("0 play"));
    }

    void damageIsTold()
    {
        QVERIFY(append("0 r command play []", "one"));
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::Append));
        file.write("no JSON\n{\"kelvo-recording\":9}\n");
        file.close();
        RecordedRun run;
        QVERIFY(run.open(m_path, &m_error));
        QCOMPARE(run.events(), 1);
        QCOMPARE(run.skippedLines(), 1);
        QVERIFY2(run.trouble().endsWith("is of version 9, this program reads version 1"),
            qPrintable(run.trouble()));
    }

    void whatIsNoRecordingIsRefused()
    {
        RecordedRun run;
        QVERIFY(!run.open(m_path, &m_error));
        QVERIFY(m_error.contains(m_path));
    }

private:
    bool append(const QString &events, const QString &program) const
    {
        return HandWritten::append(
            m_path, HandWritten::events(events), {{"kelvo-recording", 1}, {"program", program}});
    }

    static QStringList visited(const RecordedRun &run)
    {
        QStringList result;
        run.forEach([&result](qint64 index, const RecordedEvent &event) {
            result.append(QStringLiteral("%1 %2").arg(index).arg(event.name));
        });
        return result;
    }

    QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath("run.jsonl");
    QString m_error;
};

KELVO_TEST(RecordedRunTest)
#include "RecordedRunTest.moc"
