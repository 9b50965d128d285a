// SPDX-License-Identifier: MIT
#include "LogRecorder.h"
#include "QSparqlQueryModel.h"
#include "QueryControllerCase.h"
#include "TestGroup.h"

/// What each query gives, and what its rows extend to.
class QueryResultTest : public QueryControllerCase
{
    Q_OBJECT
private Q_SLOTS:
    void builtInQueries_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("firstKey");
        QTest::addColumn<bool>("extendable");
        const auto row = [](int index, const QString &expected, const char *key, bool extendable = false) {
            QTest::addRow("%d", index) << index << expected << QString::fromLatin1(key) << extendable;
        };
        row(0, titles({0, 1, 2, 3, 4, 5, 6, 7}), "songId");
        row(2, titles({3, 2}), "songId");
        row(3, titles({2, 3}), "songId");
        row(4, "Album 0,Album 1,Album 2,Unknown KTG Album", "albumId", true);
        row(5, "Artist 0,Artist 1,Artist 2,Artist 3,Artist 4,Artist 5,Unknown KTG Artist", "artistId", true);
        row(6, "My list", "playlistId");
        row(7, titles({0}), "songId");
        row(8, titles({0, 1, 4, 5, 6, 7}), "songId");
        row(9, titles({1}), "songId");
        row(10, "1.mp4", "video");
    }

    void builtInQueries()
    {
        QFETCH(int, index);
        QFETCH(QString, expected);
        QFETCH(QString, firstKey);
        QFETCH(bool, extendable);
        LogRecorder log;
        QAbstractItemModel *model = query(index);
        QVERIFY(log.contains(QStringLiteral("KelvoQueryController::query %1").arg(index)));
        QVERIFY(model);
        QCOMPARE(m_controller->queryModel(), model);
        QCOMPARE(model->headerData(0, Qt::Horizontal).toString(), firstKey);
        QCOMPARE(m_controller->latestQueryExtendable(), extendable);
        QVERIFY(waitUntilIdle());
        QStringList rows = shown(model);
        if (extendable)
            rows.sort();
        QCOMPARE(rows.join(','), expected);
    }

    void recentlyAddedSongs()
    {
        const QAbstractItemModel *model = query(1);
        QVERIFY(waitUntilIdle());
        QStringList rows = shown(model);
        rows.sort();
        QCOMPARE(rows.join(','), titles({0, 1, 2, 3, 4, 5, 6, 7}));
    }

    void artistsExtendToAlbumsAndAlbumsToSongs()
    {
        QAbstractItemModel *artists = query(5);
        QVERIFY(waitUntilIdle());
        const QPointer<QAbstractItemModel> old = artists;
        LogRecorder log;
        QAbstractItemModel *albums = extend(rowOf(*artists, "artistName", "Artist 4"));
        QVERIFY(log.lines().first().startsWith("KelvoQueryController::extendQuery "));
        QVERIFY(!old);
        QCOMPARE(m_controller->queryModel(), albums);
        QCOMPARE(m_controller->queryState(), 1);
        QVERIFY(m_controller->latestQueryExtendable()); // still not playable
        QVERIFY(waitUntilIdle());
        QCOMPARE(shown(albums), QStringList("Album 1"));
        QAbstractItemModel *songs = extend(0);
        QVERIFY(!m_controller->latestQueryExtendable());
        QVERIFY(waitUntilIdle());
        QCOMPARE(shown(songs).join(','), titles({1, 4, 7}));
    }

    void playlistsExtendToTheirSongs()
    {
        query(6);
        QVERIFY(waitUntilIdle());
        QVERIFY(!m_controller->latestQueryExtendable());
        const QAbstractItemModel *songs = extend(0);
        QVERIFY(songs);
        QVERIFY(!m_controller->latestQueryExtendable());
        QVERIFY(waitUntilIdle());
        QCOMPARE(shown(songs).join(','), titles({4, 1}));
    }

    void songsExtendToRelatedSongs()
    {
        query(0);
        QVERIFY(waitUntilIdle());
        const QAbstractItemModel *songs = extend(0);
        QVERIFY(songs);
        QVERIFY(waitUntilIdle());
        QCOMPARE(shown(songs).join(','), titles({7}));
        QVERIFY(extend(0)); // songs again, so on and on
        QVERIFY(!m_controller->latestQueryExtendable());
    }

    void videosAndNothingDoNotExtend_data()
    {
        QTest::addColumn<bool>("videos");
        QTest::newRow("before any query") << false;
        QTest::newRow("videos") << true;
    }

    void videosAndNothingDoNotExtend()
    {
        QFETCH(bool, videos);
        if (videos) {
            query(10);
            QVERIFY(waitUntilIdle());
        }
        const QPointer<QAbstractItemModel> before = m_controller->queryModel();
        LogRecorder log;
        QCOMPARE(extend(0), nullptr);
        QCOMPARE(log.lines(), QStringList({"KelvoQueryController::extendQuery 0", "Not extendable item!"}));
        QCOMPARE(m_controller->queryModel(), before);
        QCOMPARE(m_controller->queryState(), 0);
        QCOMPARE(caption(), QStringLiteral("Execute\nquery"));
    }

    void rowsThatAreNotThereExtendToNothing()
    {
        query(5);
        QVERIFY(waitUntilIdle());
        const QAbstractItemModel *albums = extend(99999);
        QVERIFY(albums);
        QVERIFY(waitUntilIdle());
        QCOMPARE(albums->rowCount(), 0);
    }

    void aResultThatIsGoneExtendsToNothing()
    {
        delete query(0);
        const QAbstractItemModel *songs = extend(3);
        QVERIFY(songs);
        QVERIFY(waitUntilIdle());
        QCOMPARE(songs->rowCount(), 0);
    }

    void videoQueryText()
    {
        const auto *model = qobject_cast<QSparqlQueryModel *>(query(10));
        QVERIFY(model);
        QCOMPARE(model->query().query(),
            QStringLiteral("SELECT ?video nfo:fileName(?video) nie:url(?video) ?length "
                           "nfo:fileSize(?video)WHERE {    ?video a nmm:Video .    OPTIONAL    {      ?video "
                           "nfo:duration ?length .    } } ORDER BY nfo:fileName(?video)"));
        QCOMPARE(model->query().type(), QSparqlQuery::SelectStatement);
        QVERIFY(!model->QObject::parent());
        QCOMPARE(model->columnCount(), 5);
        QCOMPARE(m_controller->queryState(), 1);
        QVERIFY(waitUntilIdle());
        QCOMPARE(model->index(0, 2).data().toString(), QStringLiteral("file:///video/1.mp4"));
        QCOMPARE(model->index(0, 3).data().toInt(), 61);
        QCOMPARE(model->index(0, 4).data().toInt(), 5001);
    }

    void twoVideoQueriesMakeTwoModels()
    {
        QAbstractItemModel *first = query(10);
        QVERIFY(waitUntilIdle());
        QAbstractItemModel *second = query(10);
        QVERIFY(first != second);
        QVERIFY(waitUntilIdle());
        QCOMPARE(shown(first), shown(second));
    }
};
KELVO_WIDGET_TEST(QueryResultTest)
#include "QueryResultTest.moc"
