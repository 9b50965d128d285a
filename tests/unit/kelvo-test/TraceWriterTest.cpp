// SPDX-License-Identifier: MIT
#include "TraceWriter.h"
#include "HandWritten.h"
#include "KelvoTestCase.h"
#include "RecordedRun.h"
#include "TestGroup.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QTest>

/// What trace viewers get to see.
class TraceWriterTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        QFile::remove(m_path);
    }

    void everyEventIsThere()
    {
        const QStringList lines = traced(R"(
            0 r appears renderer ["Speaker"]
            1 r command play []
            1.25 r report stateChanged ["Transitioning"]
            1.5 r report bufferingInfo [0.4]
            2.5 r report stateChanged ["Playing"]
            4 r answer getPosition [2]
            5 r report error [{"code":202,"message":"<\n"}]
            6 q report stateChanged ["Playing"]
            7 q vanishes renderer ["Other"]
            8  note ended []
            )");
        const QStringList wanted{
            "M process_name 0 1/0 {\"name\":\"r\"}",
            "M thread_name 0 1/1 {\"name\":\"commands\"}",
            "M thread_name 0 1/2 {\"name\":\"states\"}",
            "M thread_name 0 1/3 {\"name\":\"reports\"}",
            "M process_name 0 1/0 {\"name\":\"Speaker\"}",
            "i renderer 0 1/3 {\"arguments\":[\"Speaker\"]}",
            "i play 1000000 1/1 {\"arguments\":[]}",
            "C buffer 1500000 1/3 {\"percent\":40}",
            "X Transitioning 1250000 1/2  1250000",
            "b play 1000000 1/1 {\"effect\":\"stateChanged(Playing)\"}",
            "e play 2500000 1/1 {\"effect\":\"stateChanged(Playing)\"}",
            "C position 4000000 1/3 {\"seconds\":2}",
            "i error 5000000 1/3 {\"arguments\":[{\"code\":202,\"message\":\"<\\n\"}]}",
            "M process_name 0 2/0 {\"name\":\"q\"}",
            "M thread_name 0 2/1 {\"name\":\"commands\"}",
            "M thread_name 0 2/2 {\"name\":\"states\"}",
            "M thread_name 0 2/3 {\"name\":\"reports\"}",
            "i renderer 7000000 2/3 {\"arguments\":[\"Other\"]}",
            "X Playing 6000000 2/2  1000000",
            "M process_name 0 3/0 {\"name\":\"process\"}",
            "M thread_name 0 3/1 {\"name\":\"commands\"}",
            "M thread_name 0 3/2 {\"name\":\"states\"}",
            "M thread_name 0 3/3 {\"name\":\"reports\"}",
            "i ended 8000000 3/3 {\"arguments\":[]}",
            "X Playing 2500000 1/2  5500000",
        };
        QCOMPARE(lines, wanted);
    }

    void anEmptyRunIsATraceToo()
    {
        QCOMPARE(traced(""), QStringList());
        QVERIFY(m_isJson);
    }

    void timesOfAnySizeAreTaken()
    {
        const QStringList lines
            = traced("-1e300 r report stateChanged [\"Playing\"]\n1e300 r report stateChanged [\"Paused\"]");
        QVERIFY(m_isJson);
        QVERIFY(lines.contains("X Playing -9000000000000000 1/2  18000000000000000"));
    }

    void aFullDiskIsTold()
    {
        traced("0 r command play []");
        RecordedRun run;
        QString error;
        QVERIFY(run.open(m_path, &error));
        QFile full(QStringLiteral("/dev/full"));
        QVERIFY(full.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QVERIFY(!TraceWriter(&full).write(run));
    }

private:
    /// "phase name time process/thread arguments duration" of each event.
    QStringList traced(const QString &events)
    {
        RecordedRun run;
        QString error;
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        if (!HandWritten::append(m_path, HandWritten::events(events)) || !run.open(m_path, &error)
            || !TraceWriter(&buffer).write(run))
            return {"not written"};
        const QJsonDocument document = QJsonDocument::fromJson(buffer.data());
        m_isJson
            = document["traceEvents"].isArray() && document["otherData"]["program"] == QLatin1String("test");
        QStringList result;
        const QJsonArray all = document["traceEvents"].toArray();
        for (const QJsonValueConstRef each : all) {
            const QJsonObject event = each.toObject();
            const QJsonValue args = event["args"];
            const QByteArray json = args.isObject()
                ? QJsonDocument(args.toObject()).toJson(QJsonDocument::Compact)
                : QByteArray();
            QString line = QStringLiteral("%1 %2 %3 %4/%5 %6")
                               .arg(event["ph"].toString(), event["name"].toString())
                               .arg(event["ts"].toInteger())
                               .arg(event["pid"].toInt())
                               .arg(event["tid"].toInt())
                               .arg(QString::fromUtf8(json));
            if (event["ph"] == QLatin1String("X"))
                line += QStringLiteral(" %1").arg(event["dur"].toInteger());
            result.append(line);
        }
        return result;
    }

    QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath("run.jsonl");
    bool m_isJson = false;
};

KELVO_TEST(TraceWriterTest)
#include "TraceWriterTest.moc"
