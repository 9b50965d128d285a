// SPDX-License-Identifier: MIT
#include "LogRecorder.h"
#include "QSparqlConnection.h"
#include "QSparqlQueryModel.h"
#include "TestGroup.h"
#include "TrackerIndexCase.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

namespace {
MediaItem video(int number)
{
    MediaItem item;
    item.kind = MediaKind::Video;
    item.number = quint64(number) + 1'000'000;
    item.path = "/videos/film " + QByteArray::number(number).rightJustified(4, '0') + ".mp4";
    item.uri = "file:///videos/film%20" + QByteArray::number(number).rightJustified(4, '0') + ".mp4";
    item.title = "Film";
    item.stamp = {1, 2000 + number, 7};
    item.seconds = number; // not known for the first one
    return item;
}
} // namespace

class SparqlModelTest : public TrackerIndexCase
{
    Q_OBJECT

    static QList<QVariant> row(const QAbstractItemModel &model, int number)
    {
        QList<QVariant> values;
        for (int column = 0; column < model.columnCount(); ++column)
            values.append(model.index(number, column).data());
        return values;
    }

private Q_SLOTS:
    void answersTheVideoQuery()
    {
        QVERIFY(openStore());
        QVERIFY(writeSongs({video(1), video(0), song(0)}));
        QSparqlConnection connection("QTRACKER", QSparqlConnectionOptions());
        QSparqlQueryModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy finished(&model, &QSparqlQueryModel::finished);
        model.setQuery(QSparqlQuery(VideoQuery, QSparqlQuery::SelectStatement), connection);
        QCOMPARE(model.columnCount(), 5);
        QVERIFY(finished.wait());
        QCOMPARE(model.rowCount(), 2);
        QStringList headers;
        for (int column = 0; column < 5; ++column)
            headers.append(model.headerData(column, Qt::Horizontal).toString());
        QCOMPARE(headers, QStringList({"video", "fileName", "url", "length", "fileSize"}));
        QCOMPARE(row(model, 1),
            QList<QVariant>(
                {"urn:kelvo:video:f4241", "film 0001.mp4", "file:///videos/film%200001.mp4", 1, 2001}));
        QCOMPARE(row(model, 0),
            QList<QVariant>({"urn:kelvo:video:f4240", "film 0000.mp4", "file:///videos/film%200000.mp4",
                QVariant(), 2000}));
    }

    void opensTheStoreByItself()
    {
        QSparqlConnection connection("QTRACKER", QSparqlConnectionOptions());
        QVERIFY(connection.isValid());
        QSparqlQueryModel first;
        QSparqlQueryModel second;
        QSignalSpy firstFinished(&first, &QSparqlQueryModel::finished);
        QSignalSpy secondFinished(&second, &QSparqlQueryModel::finished);
        first.setQuery(QSparqlQuery(VideoQuery, QSparqlQuery::SelectStatement), connection);
        second.setQuery(QSparqlQuery(VideoQuery, QSparqlQuery::SelectStatement), connection);
        QVERIFY(firstFinished.wait(10000));
        QTRY_COMPARE(secondFinished.count(), 1);
        QCOMPARE(first.rowCount(), 0);
    }

    void answersAnySelect()
    {
        QVERIFY(openStore());
        QVERIFY(writeSongs({song(1)}));
        QSparqlConnection connection("QTRACKER");
        QSparqlQueryModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy finished(&model, &QSparqlQueryModel::finished);
        model.setQuery(
            QSparqlQuery("SELECT ?t (?n + 0.5 AS ?half) (EXISTS { ?s a nmm:Video } AS ?video) 12345 { ?s a "
                         "nmm:MusicPiece ; nie:title ?t ; nfo:duration ?n }"),
            connection);
        QVERIFY(finished.wait());
        QCOMPARE(row(model, 0), QList<QVariant>({"Song 000001", 101.5, false, 12345}));
        model.setQuery(
            QSparqlQuery("SELECT * { ?song nfo:duration ?seconds ; a nmm:MusicPiece }"), connection);
        QCOMPARE(model.rowCount(), 0);
        QVERIFY(finished.wait());
        QCOMPARE(model.rowCount(), 1);
        QVERIFY(value(model, 0, "song").toString().startsWith("urn:kelvo:song:"));
        QCOMPARE(value(model, 0, "seconds").toInt(), 101);
    }

    void reportsErrors_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("syntax") << "SELECT ?x WHERE { ?x a";
        QTest::newRow("unknown property") << "SELECT ?x { ?x nie:nonsense ?y }";
        QTest::newRow("update") << "DELETE WHERE { ?x a nmm:MusicPiece }";
        QTest::newRow("empty") << "";
    }

    void reportsErrors()
    {
        QFETCH(QString, text);
        QVERIFY(openStore());
        QSparqlConnection connection("QTRACKER");
        QSparqlQueryModel model;
        QSignalSpy finished(&model, &QSparqlQueryModel::finished);
        QSignalSpy failed(&model, &QSparqlQueryModel::error);
        model.setQuery(QSparqlQuery(text), connection);
        QVERIFY(failed.wait());
        QVERIFY(!failed.first().first().toString().isEmpty());
        QCOMPARE(finished.count(), 0);
    }

    void knowsOneDriver()
    {
        LogRecorder log;
        QSparqlConnection connection("QMYSQL");
        QVERIFY(!connection.isValid());
        QCOMPARE(log.warnings().size(), 1);
        QSparqlQueryModel model;
        QSignalSpy failed(&model, &QSparqlQueryModel::error);
        model.setQuery(QSparqlQuery(VideoQuery), connection);
        QVERIFY(failed.wait());
        QVERIFY(failed.first().first().toString().contains("QMYSQL"));
    }

    void outlivesItsConnection()
    {
        QVERIFY(openStore());
        std::vector<MediaItem> videos;
        for (int i = 0; i < 500; ++i)
            videos.push_back(video(i));
        QVERIFY(writeSongs(videos));
        auto connection = std::make_unique<QSparqlConnection>("QTRACKER");
        QSparqlQueryModel model;
        QSignalSpy finished(&model, &QSparqlQueryModel::finished);
        model.setQuery(QSparqlQuery(VideoQuery), *connection);
        connection.reset();
        QVERIFY(finished.wait());
        QCOMPARE(model.rowCount(), 500);
    }

    void isCalledOffByItsEnd()
    {
        QVERIFY(openStore());
        QSparqlConnection connection("QTRACKER");
        for (int round = 0; round < 20; ++round) {
            QSparqlQueryModel model;
            model.setQuery(QSparqlQuery("SELECT ?a ?b ?c { ?a ?p ?b . ?c ?q ?d }"), connection);
            if (round % 2)
                QTest::qWait(5);
        }
    }
};

KELVO_TEST(SparqlModelTest)
#include "SparqlModelTest.moc"
