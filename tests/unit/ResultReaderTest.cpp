// SPDX-License-Identifier: MIT
#include "remote/ResultReader.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QTest>

#include <algorithm>

/// What servers answer to a query is read while it comes, in whatever pieces.
class ResultReaderTest : public KelvoTestCase
{
    Q_OBJECT

    static inline const QByteArray Csv = QByteArrayLiteral("text/csv");
    static inline const QByteArray Json = QByteArrayLiteral("application/sparql-results+json");
    static inline const QByteArray JsonHead
        = QByteArrayLiteral("{\"head\":{\"link\":[],\"vars\":[\"x\",\"y\"]},\"results\":{\"bindings\":[");
    static inline const QByteArray JsonEnd = QByteArrayLiteral("]}}\n");

    struct Read
    {
        QString text; ///< rows on lines, values between bars, "-" for those that are unbound
        QString names;
        QString error;
    };

    static QString line(const RemoteRow &row)
    {
        QStringList values;
        for (const QByteArray &value : row)
            values.append(value.isNull() ? QStringLiteral("-") : QString::fromUtf8(value));
        return values.join('|');
    }

    static Read read(
        const QByteArray &type, const QByteArray &bytes, qsizetype piece, const RemoteLimits &limits = {})
    {
        Read result;
        const std::unique_ptr<ResultReader> reader = ResultReader::forType(type, limits);
        QStringList lines;
        const auto take = [&] {
            for (const RemoteRow &row : reader->takeRows())
                lines.append(line(row));
        };
        for (qsizetype at = 0; at < bytes.size() && result.error.isEmpty(); at += piece) {
            result.error = reader->take(bytes.mid(at, piece));
            take();
        }
        if (result.error.isEmpty())
            result.error = reader->finish();
        take();
        result.text = lines.join('\n');
        result.names = line(reader->names());
        return result;
    }

private Q_SLOTS:
    void otherTypesHaveNoReader()
    {
        for (const char *type : {"text/html", "application/sparql-results+xml", "", "text/csvx"})
            QVERIFY(!ResultReader::forType(type, {}));
        QVERIFY(ResultReader::forType("Text/CSV; charset=UTF-8", {}));
    }

    void answers_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("rows");
        const auto csv = [](const char *name, const QByteArray &bytes, const QString &rows) {
            QTest::newRow(name) << Csv << bytes << rows;
        };
        csv("standard", "x,y\r\n1,2\r\n3,4\r\n", "1|2\n3|4");
        csv("all with quotes, ends of one character", "\"x\",\"y\"\n\"1\",\"2\"\n", "1|2");
        csv("no end of the last line", "x,y\n1,2", "1|2");
        csv("unbound and empty", "x,y\n,\"\"\n\"\",\n", "-|\n|-");
        csv("quotes, commas and lines in a value", "x,y\n\"a \"\"b\"\"\",\"c,\r\nd\"\n", "a \"b\"|c,\r\nd");
        csv("byte order mark", "\xEF\xBB\xBFx,y\n1,2\n", "1|2");
        csv("characters of two bytes", "x,y\n\xC3\xA4,\"\xC3\xB6\"\n", QString::fromUtf8("\u00e4|\u00f6"));
        csv("no rows", "x,y\n", "");
        const auto json = [](const char *name, const QByteArray &results, const QString &rows) {
            QTest::newRow(name) << Json << JsonHead + results + JsonEnd << rows;
        };
        json("JSON",
            "{\"x\":{\"type\":\"uri\",\"value\":\"urn:a\"},\"y\":{\"type\":\"literal\",\"datatype\":\"d\","
            "\"value\":\"2\"}} ,\n"
            "{\"y\":{\"value\":\"a <&> \\\" \\\\ \\/ \\u00e4 "
            "\\n|\\uD83D\\uDE00\",\"xml:lang\":\"en\",\"type\":\"literal\"}}",
            QString::fromUtf8("urn:a|2\n-|a <&> \" \\ / \u00e4 \n|\U0001F600"));
        json("JSON, empty", "{\"x\":{\"value\":\"\"}},{}", "|-\n-|-");
        json("JSON, other members",
            "{\"x\":{\"value\":\"1\",\"more\":[1,{\"value\":\"no\"},true,null,-1.5e3]}}", "1|-");
        json("JSON, no rows", "", "");
    }

    void answers()
    {
        QFETCH(QByteArray, type);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, rows);
        for (const qsizetype piece : {qsizetype(1), qsizetype(7), bytes.size()}) {
            const Read result = read(type, bytes, piece);
            QCOMPARE(result.error, QString());
            QCOMPARE(result.names, QString("x|y"));
            QCOMPARE(result.text, rows);
        }
    }

    void wrongAnswers_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("rows");
        QTest::addColumn<QString>("error");
        const auto csv
            = [](const char *name, const QByteArray &bytes, const QString &rows, const QString &error) {
                  QTest::newRow(name) << Csv << bytes << rows << error;
              };
        csv("nothing", "", "", "its answer is empty");
        csv("a row that is short", "x,y\n1,2\n3\n", "1|2", "it gives a row of 1 columns among rows of 2");
        csv("a row that is long", "x,y\n1,2,3\n", "", "it gives a row of 3 columns among rows of 2");
        csv("half a row", "x,y\n1,2\n3,\"4", "1|2", "its answer ends within a row");
        csv("a quote in a value", "x,y\n1\"2,3\n", "", "it gives a line with misplaced quotes");
        csv("text behind a quote", "x,y\n\"1\"2,3\n", "", "it gives a line with misplaced quotes");
        csv("half an end of line", "x,y\r1,2\r\n", "", "it gives a line whose end is half one");
        csv("columns", QByteArray("x,").repeated(1'000'000), "", "it gives more than 100 columns");
        csv("a long row", "x,y\n1,2\n\"" + QByteArray(1024 * 1024, 'a'), "1|2",
            "it gives a row of more than 1024 KiB");
        const auto json
            = [](const char *name, const QByteArray &bytes, const QString &rows, const QString &error) {
                  QTest::newRow(name) << Json << bytes << rows << error;
              };
        const QByteArray row("{\"x\":{\"value\":\"1\"}}");
        json("JSON, nothing", "", "", "its answer ends before its end");
        json("JSON, half", JsonHead + row + ",{\"x\":{\"va", "1|-", "its answer ends before its end");
        json("JSON, no end", JsonHead + row + "]}", "1|-", "its answer ends before its end");
        json("JSON, more behind its end", JsonHead + row + "]}}{", "1|-", "its answer is no JSON");
        json("JSON, no comma", JsonHead + row + row, "1|-", "its answer is no JSON");
        json("JSON, no colon", "{\"head\" 1}", "", "its answer is no JSON");
        json("JSON, a key that is none", "{head:1}", "", "its answer is no JSON");
        json("JSON, a word that is none", "{\"head\":yes}", "", "its answer is no JSON");
        json("JSON, an escape that is none", "{\"head\":\"\\x\"}", "", "its answer is no JSON");
        json("JSON, a code that is none", "{\"head\":\"\\u12G4\"}", "", "its answer is no JSON");
        json("JSON, a line in a text", "{\"head\":\"\n\"}", "", "its answer is no JSON");
        json("JSON, brackets", "{\"head\":[}", "", "its answer is no JSON");
        json("JSON, a comma before the end", "{\"head\":1,}", "", "its answer is no JSON");
        json("a page", "<html><body>Welcome</body></html>", "", "its answer is no JSON");
        json("a list", "[]", "", "its answer is no result of a query");
        json("an object", "{}", "", "its answer is no result of a query");
        json("a truth value", "{\"head\":{},\"boolean\":true}", "", "its answer is no result of a query");
        json("rows that are none", JsonHead + "[]", "", "its answer is no result of a query");
        json("a column that was not named", JsonHead + "{\"z\":{\"value\":\"1\"}}", "",
            "it gives a value of a column that it did not name");
        json("JSON, rows before the head", "{\"results\":{\"bindings\":[{\"x\":{\"value\":\"1\"}}]}}", "",
            "it gives a value of a column that it did not name");
        json("JSON, columns", "{\"head\":{\"vars\":[" + QByteArray("\"x\",").repeated(1'000'000), "",
            "it gives more than 100 columns");
        json("JSON, a long row", JsonHead + row + ",{\"x\":{\"value\":\"" + QByteArray(2048 * 1024, 'a'),
            "1|-", "it gives a row of more than 1024 KiB");
        json("JSON, depth", "{\"a\":" + QByteArray("[").repeated(1024 * 1024), "",
            "its answer is no result of a query");
    }

    void wrongAnswers()
    {
        QFETCH(QByteArray, type);
        QFETCH(QByteArray, bytes);
        QFETCH(QString, rows);
        QFETCH(QString, error);
        const Read result = read(type, bytes, 16 * 1024);
        QCOMPARE(result.error, error);
        QCOMPARE(result.text, rows);
    }
};

KELVO_TEST(ResultReaderTest)
#include "ResultReaderTest.moc"
