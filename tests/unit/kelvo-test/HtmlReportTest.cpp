// SPDX-License-Identifier: MIT
#include "HtmlReport.h"
#include "HandWritten.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {
/// What is outside of the page's own script and style.
QByteArray withoutOwnCode(const QByteArray &html)
{
    QString text = QString::fromUtf8(html);
    static const QRegularExpression code(
        "<(script|style)>.*</\\1>", QRegularExpression::DotMatchesEverythingOption);
    return text.remove(code).toUtf8();
}

/// The first element that is not closed where it must be, or that is closed without having been opened.
QByteArray firstUnbalanced(const QByteArray &html)
{
    static const QRegularExpression tag(
        "<(/?)(html|body|main|section|div|svg|a|g|title|table|details|summary|ul|"
        "dl|aside|fieldset|button|p|h1|h2|h3)\\b[^>]*>");
    static const QSet<QString> closedByOthers{"p"};
    QStringList open;
    QRegularExpressionMatchIterator tags = tag.globalMatch(QString::fromUtf8(withoutOwnCode(html)));
    while (tags.hasNext()) {
        const QRegularExpressionMatch match = tags.next();
        const QString name = match.captured(2);
        if (closedByOthers.contains(name))
            continue;
        if (match.captured(1).isEmpty())
            open.append(name);
        else if (open.isEmpty() || open.takeLast() != name)
            return match.captured().toUtf8() + " at " + QByteArray::number(match.capturedStart());
    }
    return open.join(' ').toUtf8();
}

/// Takes everything but one of the writes.
class LossyDevice : public QIODevice
{
public:
    explicit LossyDevice(int lost)
        : m_left(lost)
    {
    }
    bool hasLost() const { return m_left < 0; }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 size) override { return m_left-- == 0 ? -1 : size; }

private:
    int m_left;
};

const char *const hostile
    = "\"<script>steal()</script><img src=x onerror=\\\"steal()\\\">'&lt;\\u202e\\u0007\\u0000</title>"
      "</style>--></table></svg>\"";
} // namespace

/// The page that is made of a recording.
class HtmlReportTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        QFile::remove(m_path);
    }

    void everythingIsThere()
    {
        const QByteArray html = page(R"(
            0 r appears renderer ["Speaker"]
            1 r command playUri ["u:a"]
            1.25 r report stateChanged ["Transitioning"]
            1.5 r report bufferingInfo [0.4]
            2 r report bufferingInfo [1]
            2.5 r report stateChanged ["Playing"]
            4 r answer getPosition [1]
            5 r report error [{"code":202,"message":"no data"}]
            6  note lost [12]
            )");
        QCOMPARE(firstUnbalanced(html), QByteArray());
        QVERIFY(html.startsWith("<!DOCTYPE html>\n<html lang=en><head><meta charset=utf-8>"));
        for (const char *const part : {
                 "<dt>program<dd>test",
                 "<dt>events<dd>9<dt>duration<dd>6.000 s",
                 "<li>At 6.000 s: lost(12)",
                 "<h3>Speaker</h3>",
                 // the lanes: a command, two states, a filling, a position, an error
                 "<a tabindex=\"-1\" href=\"#e1\"><title>1.000 s: playUri(u:a)</title><path d=\"M1 "
                 "2v20\"/></a>",
                 "<title>1.250 s to 2.500 s: Transitioning</title><rect class=\"transitioning\" x=\"1.25\" "
                 "y=\"15.6\" "
                 "width=\"1.25\" height=\"8.4\"/>",
                 "<title>2.500 s to 6.000 s: Playing</title><rect class=\"playing\" x=\"2.5\" y=\"0\" "
                 "width=\"3.5\" "
                 "height=\"24\"/>",
                 "<title>1.500 s to 2.000 s: 40 %</title><rect class=\"filling\"",
                 "<path class=\"curve\" d=\"M4 1h0\"/>",
                 "<title>5.000 s: error 202: no data</title>",
                 "<span style=\"left:50%\">3</span>",
                 // the tables
                 "<tr><td>Speaker<td>playUri<td>stateChanged(Playing)<td>1<td>0<td>1.500 s<td>1.500 s<td><a "
                 "href=\"#e1\">1.500 s</a>",
                 "<tr><td>Speaker<td>Playing<td>1<td>3.500 s",
                 "<tr class=error><td><a href=\"#e7\">5.000 s</a><td>Speaker<td>202<td>no data",
                 "<details open><summary>Events from 0.000 s</summary>",
                 "<tr id=e1 "
                 "class=\"command\"><td>1.000000<td>Speaker<td>command<td>playUri<td>[&quot;u:a&quot;]",
                 "<tr id=e6 class=\"answer\">",
                 "<tr id=e7 class=\"report error\">",
                 "<tr id=e8 class=\"other\"><td>6.000000<td><td>note<td>lost<td>[12]",
             })
            QVERIFY2(html.contains(part), part);
    }

    void whatMustBeKnownIsTold()
    {
        QVERIFY(HandWritten::append(m_path, HandWritten::events("0 r command play []")));
        QVERIFY(HandWritten::append(m_path, HandWritten::events("0 r command stop []\n1  note ended []")));
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::Append));
        file.write("no JSON\n{\"kelvo-recording\":7}\n");
        file.close();
        const QByteArray html = page();
        QVERIFY(html.contains("<li>The recording has 2 runs; this is number 2."));
        QVERIFY(html.contains("<li>1 lines of the recording could not be understood."));
        QVERIFY(html.contains("is of version 7, this program reads version 1.\n"));
        QVERIFY(!html.contains("ended()")); // as it should be
    }

    void anEmptyRunIsAPageToo()
    {
        const QByteArray html = page("");
        QCOMPARE(firstUnbalanced(html), QByteArray());
        QVERIFY(html.contains("No renderer was told anything"));
        QVERIFY(!html.contains("<section id=errors>"));
    }

    void whatCameOfTheRun()
    {
        TestResult held;
        held.name = "starts";
        held.group = "Speaker";
        held.seconds = 1.5;
        TestResult failed;
        failed.outcome = TestResult::Failed;
        failed.name = held.group = QString::fromUtf8(hostile);
        failed.message = "expected Playing, came " + QString::fromUtf8(hostile);
        failed.details = "first " + QString::fromUtf8(hostile) + "\nsecond";
        TestResult skipped;
        skipped.outcome = TestResult::Skipped;
        skipped.message = "needs a window";
        QVERIFY(HandWritten::append(m_path, HandWritten::events("0 r command stop []")));
        const QByteArray html = page({held, failed, skipped});
        QCOMPARE(firstUnbalanced(html), QByteArray());
        QVERIFY(html.contains("<tr class=error><td>failed<td>"));
        QVERIFY(html.contains("<summary>expected Playing, came "));
        QVERIFY(html.contains("\nsecond\n</pre>"));
        QVERIFY(html.contains("<tr class=other><td>skipped<td><td><td>0.000 s<td>needs a window\n"));
        QCOMPARE(html.count("<script"), 1);
        QVERIFY(!html.contains("<img"));
        held.group = "Speaker";
        QVERIFY(page({held}).contains("<tr class=held><td>held<td>starts<td>Speaker<td>1.500 s<td>\n"));
        QVERIFY(!page().contains("<section id=results>"));
    }

    void textsOfOthersStayTexts()
    {
        const QString any = QString::fromUtf8(hostile);
        const QString name = QJsonDocument::fromJson('[' + any.toUtf8() + ']').array().at(0).toString();
        const QByteArray html = page(QString(R"(
            0 r appears renderer [%1]
            1 r command playUri [%1]
            1 r command setKelvoProperty [%1]
            2 r report stateChanged [%1]
            3 r report kelvoPropertyChanged [%1,%1]
            4 r report metadataChanged ["title",[%1]]
            5 r report error [{"code":1,"message":%1}]
            6 r report error [{%1:%1}]
            7 r heard level [%1]
            8  note crashed [%1]
            )")
                                         .arg(any),
            {{"kelvo-recording", 1}, {"program", name}, {"started", name}, {name, name},
                {"plug-ins", QJsonArray{name}}},
            name);
        QCOMPARE(firstUnbalanced(html), QByteArray());
        QCOMPARE(html.count("<script"), 1);
        QCOMPARE(html.count("<style"), 1);
        QCOMPARE(html.count("<title>"), 1 + html.mid(html.indexOf("<main>")).count("<title>"));
        QVERIFY(!html.contains("<img"));
        QVERIFY(html.contains("&lt;script&gt;steal()&lt;/script&gt;&lt;img src=x onerror="));
        for (const QChar character : QString::fromUtf8(html)) {
            const bool isHarmless = character == u'\n' || character == u'\u200c' || character == u'\u200d'
                || (character.category() != QChar::Other_Control
                    && character.category() != QChar::Other_Format);
            QVERIFY2(isHarmless, QByteArray::number(character.unicode(), 16));
        }
    }

    void nothingComesFromElsewhere()
    {
        const QByteArray html = page("0 r command playUri [\"http://host/a\"]");
        for (const char *const part : {"src=", "url(", "@import", "<link", "javascript:", "fetch("})
            QVERIFY2(!html.contains(part), part);
        static const QRegularExpression href("href=[\"']?([^\"'>]*)");
        QRegularExpressionMatchIterator links = href.globalMatch(QString::fromUtf8(withoutOwnCode(html)));
        QVERIFY(links.hasNext());
        while (links.hasNext())
            QVERIFY(links.next().captured(1).startsWith('#'));
        const qsizetype begin = html.indexOf("<script>") + 8;
        const QByteArray script = html.sliced(begin, html.indexOf("</script>") - begin);
        QVERIFY(script.contains("'use strict'"));
        QVERIFY(html.contains("default-src 'none'; style-src 'unsafe-inline'; script-src 'sha256-"
            + QCryptographicHash::hash(script, QCryptographicHash::Sha256).toBase64() + "'"));
    }

    /// A browser opens what it gets in a moment: bounded in rows and marks, and few rows in sight.
    void aLongRunIsBounded()
    {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{\"kelvo-recording\":1}\n");
        constexpr int more = 700;
        for (int i = 0; i < HtmlReport::MostRows + more; ++i) {
            const QByteArray time = QByteArray::number(i * 0.01, 'f', 6);
            const char *const states[] = {"\"Playing\"", "\"Paused\""};
            file.write("{\"time\":" + time + ",\"uuid\":\"r" + QByteArray::number(i % 9)
                + (i % 2 ? "\",\"kind\":\"command\",\"name\":\"pause\",\"arguments\":[]}\n"
                         : QByteArray("\",\"kind\":\"report\",\"name\":\"stateChanged\",\"arguments\":[")
                            + states[i / 2 % 2] + "]}\n"));
        }
        file.close();
        const QByteArray html = page();
        QCOMPARE(firstUnbalanced(html), QByteArray());
        QCOMPARE(html.count("<tr id=e"), HtmlReport::MostRows);
        QVERIFY(!html.contains("<tr id=e699 "));
        QVERIFY(html.contains("<tr id=e700 "));
        static const QRegularExpression link("href=\"#e(\\d+)\"");
        QRegularExpressionMatchIterator links = link.globalMatch(QString::fromUtf8(withoutOwnCode(html)));
        QVERIFY(links.hasNext());
        while (links.hasNext())
            QVERIFY(links.next().captured(1).toInt() >= more); // leads to a row that is there
        QVERIFY(html.contains("The table has the last 100000 of 100700 events"));
        QVERIFY(!html.contains("<details open"));
        QCOMPARE(html.count("<details>"), HtmlReport::MostRows / 500);
        const qsizetype marks = html.count("<path d") + html.count("<rect");
        QVERIFY2(marks > 5000 && marks <= 20000, qPrintable(QString::number(marks)));
        QVERIFY2(html.size() < 16 * 1024 * 1024, qPrintable(QString::number(html.size())));
    }

    /// Nothing of the page divides by the run's length or counts up to its times.
    void timesOfAnySizeAreTaken_data()
    {
        QTest::addColumn<QString>("times");
        QTest::newRow("one moment") << "5 5";
        QTest::newRow("negative") << "-5 5";
        QTest::newRow("backwards") << "5 1";
        QTest::newRow("endless") << "0 1e300";
        QTest::newRow("large and close") << "1e17 100000000000000016";
        QTest::newRow("large and the same") << "1e20 1e20";
        QTest::newRow("short") << "0 0.000001";
    }

    void timesOfAnySizeAreTaken()
    {
        QFETCH(QString, times);
        const QStringList both = times.split(' ');
        const QByteArray html
            = page(QStringLiteral("%1 r command play []\n%2 r report stateChanged [\"Playing\"]\n"
                                  "%2 r answer getPosition [1e300]")
                       .arg(both.at(0), both.at(1)));
        QCOMPARE(firstUnbalanced(html), QByteArray());
        QVERIFY(html.count("<span style=") <= 9);
    }

    /// Whichever part of the page is lost.
    void aFullDiskIsTold()
    {
        page("0 r command play []");
        RecordedRun run;
        QString error;
        QVERIFY(run.open(m_path, &error));
        const HtmlReport report(run);
        int writes = 0;
        for (bool isWritten = false; !isWritten; ++writes) {
            LossyDevice device(writes);
            QVERIFY(device.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
            isWritten = report.write(&device);
            QCOMPARE(isWritten, !device.hasLost());
        }
        QVERIFY(writes > 4); // the beginning, a table's beginning, row and end, the end
    }

private:
    QByteArray page(const QString &events,
        const QJsonObject &header = {{"kelvo-recording", 1}, {"program", "test"}}, const QString &uuid = {})
    {
        QList<RecordedEvent> all = HandWritten::events(events);
        for (RecordedEvent &event : all) {
            if (!uuid.isEmpty())
                event.all["uuid"] = event.uuid + uuid;
        }
        if (!uuid.isEmpty()) {
            RecordedEvent other;
            other.all = {{"time", 9}, {"kind", uuid}, {"name", uuid}, {"uuid", "r" + uuid}};
            all.append(other);
        }
        return HandWritten::append(m_path, all, header) ? page() : QByteArray();
    }

    QByteArray page(const QList<TestResult> &results = {})
    {
        RecordedRun run;
        QString error;
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        if (!run.open(m_path, &error) || !HtmlReport(run, results).write(&buffer))
            return {};
        // For looking at it.
        if (const QByteArray folder = qgetenv("KELVO_TEST_PAGES"); !folder.isEmpty()) {
            QFile file(QFile::decodeName(folder) + '/' + QTest::currentTestFunction() + ".html");
            if (file.open(QIODevice::WriteOnly))
                file.write(buffer.data());
        }
        return buffer.data();
    }

    QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath("run.jsonl");
};

KELVO_TEST(HtmlReportTest)
#include "HtmlReportTest.moc"
