// SPDX-License-Identifier: MIT
#include "KelvoMainWindow.h"
#include "KelvoQueryController.h"
#include "LogRecorder.h"
#include "QSparqlQueryModel.h"
#include "TestGroup.h"
#include "TrackerTestCase.h"

#include <QLabel>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>
#include <QToolButton>

namespace {
const char *const fetchRestLine = "void KelvoQueryController::fetchRest() not valid KelvoTrackerModel";
constexpr int patience = 10'000;

MediaItem video(int number)
{
    MediaItem item;
    item.kind = MediaKind::Video;
    item.number = quint64(1000 + number);
    item.path = "/video/" + QByteArray::number(number) + ".mp4";
    item.uri = "file://" + item.path;
    item.stamp = {item.number, 5000 + number, 5};
    item.title = QStringLiteral("Video %1").arg(number);
    item.seconds = 60 + number;
    return item;
}
} // namespace

/// The query controller over a store of eight songs, a video and a playlist, with a window that shows its state.
class QueryControllerTest : public TrackerTestCase
{
    Q_OBJECT

    // Songs 0 to 7 of the artists 0 to 5 and the albums 0 to 2; number 6 has neither artist nor album.
    bool fill()
    {
        std::vector<MediaItem> items;
        for (int i = 0; i < songCount; ++i)
            items.push_back(song(i));
        items[nameless].artists.clear();
        items[nameless].albumArtist.clear();
        items[nameless].album.clear();
        items.push_back(video(1));
        MediaItem playlist;
        playlist.kind = MediaKind::Playlist;
        playlist.number = 2000;
        playlist.path = "/music/list.m3u";
        playlist.uri = "file:///music/list.m3u";
        playlist.title = QStringLiteral("My list");
        playlist.entries = {{song(4).uri, {}}, {song(1).uri, {}}};
        items.push_back(playlist);
        return openStore() && writeSongs(items);
    }

    bool play(int number)
    {
        QSignalSpy counted(&store(), &KelvoTrackerStore::playCounted);
        store().countPlay(QUrl(QString::fromUtf8(song(number).uri)));
        return counted.wait(patience);
    }

    bool mark()
    {
        QSignalSpy marked(&store(), &KelvoTrackerStore::marked);
        store().setFavorite(QUrl(QString::fromUtf8(song(0).uri)), true);
        store().setDownloaded(QUrl(QString::fromUtf8(song(1).uri)), true);
        return QTest::qWaitFor([&] { return marked.count() == 2; }, patience) && play(2) && play(2)
            && play(3);
    }

    QAbstractItemModel *keep(QAbstractItemModel *model)
    {
        if (model && !m_models.contains(model))
            m_models.append(model);
        return model;
    }
    QAbstractItemModel *query(int index) { return keep(m_controller->query({}, index)); }
    QAbstractItemModel *extend(int row) { return keep(m_controller->extendQuery({}, row)); }
    bool waitUntilIdle() const
    {
        return QTest::qWaitFor(
            [&] { return m_controller->queryState() == KelvoQueryController::Idle; }, patience);
    }
    static QStringList shown(const QAbstractItemModel *model)
    {
        QStringList list;
        for (int row = 0; row < model->rowCount(); ++row)
            list.append(model->index(row, 1).data().toString());
        return list;
    }
    static QString titles(std::initializer_list<int> numbers)
    {
        QStringList list;
        for (const int number : numbers)
            list.append(song(number).title);
        return list.join(',');
    }
    QToolButton *button(const char *name) const
    {
        return m_window->findChild<QToolButton *>(QLatin1String(name));
    }
    QString caption() const { return button("m_query_executeButton")->text(); }
    bool buttonsEnabled() const
    {
        return button("m_query_executeButton")->isEnabled() && button("m_query_extendButton")->isEnabled();
    }

private Q_SLOTS:
    // One store for all functions: none changes what it holds.
    void initTestCase()
    {
        TrackerTestCase::initTestCase();
        TrackerTestCase::init();
        QVERIFY(fill());
        QVERIFY(mark());
    }

    void cleanupTestCase() { TrackerTestCase::cleanup(); }

    void init()
    {
        KelvoTestCase::init();
        m_window = new KelvoMainWindow(nullptr, nullptr);
        m_controller = std::make_unique<KelvoQueryController>(nullptr, m_window);
        QTRY_VERIFY(buttonsEnabled());
    }

    void cleanup()
    {
        m_controller.reset();
        for (const QPointer<QAbstractItemModel> &model : std::as_const(m_models))
            delete model;
        m_models.clear();
        delete m_window;
    }

    void startsIdleWithoutResult()
    {
        QCOMPARE(m_controller->queryState(), 0);
        QCOMPARE(m_controller->queryModel(), nullptr);
        QVERIFY(!m_controller->latestQueryExtendable());
    }

    void buttonsAreDisabledUntilTheFactoryIsReady()
    {
        LogRecorder log;
        const KelvoQueryController second(nullptr, m_window);
        QCOMPARE(log.count("void KelvoMainWindow::setQueryButtonsEnabled(bool)"), 1);
        QVERIFY(!button("m_query_executeButton")->isEnabled());
        QVERIFY(!button("m_query_extendButton")->isEnabled());
        QTRY_VERIFY(buttonsEnabled());
        QCOMPARE(log.count("void KelvoMainWindow::setQueryButtonsEnabled(bool)"), 2);
    }

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

    void unknownIndexChangesNothingButTheKind_data()
    {
        QTest::addColumn<int>("index");
        QTest::newRow("below") << -1;
        QTest::newRow("above") << 11;
    }

    void unknownIndexChangesNothingButTheKind()
    {
        QFETCH(int, index);
        const QAbstractItemModel *model = query(5);
        QVERIFY(waitUntilIdle());
        LogRecorder log;
        QCOMPARE(query(index), nullptr);
        QCOMPARE(log.lines(),
            QStringList({QStringLiteral("KelvoQueryController::query %1").arg(index), "Unknown index."}));
        QCOMPARE(m_controller->queryModel(), model);
        QCOMPARE(m_controller->queryState(), 0);
        QCOMPARE(caption(), QStringLiteral("Execute\nquery"));
        QVERIFY(!m_controller->latestQueryExtendable());
        QCOMPARE(extend(0), nullptr); // no kind any more
    }

    void statesAndButtonsOfALongResult()
    {
        m_controller->setNewQueryProperties(2, 2000);
        QAbstractItemModel *model = query(0);
        QCOMPARE(m_controller->queryState(), 1);
        QCOMPARE(caption(), QStringLiteral("Cancel"));
        QVERIFY(!button("m_query_extendButton")->isEnabled());
        QTRY_COMPARE(m_controller->queryState(), 2);
        QCOMPARE(caption(), QStringLiteral("Fetch\nrest"));
        QVERIFY(!button("m_query_extendButton")->isEnabled());
        QCOMPARE(model->rowCount(), 2);
        LogRecorder log;
        m_controller->fetchRest();
        QVERIFY(
            log.lines().first().startsWith("void KelvoQueryController::fetchRest() KelvoTrackerModel(0x"));
        QCOMPARE(m_controller->queryState(), 2);
        QVERIFY(waitUntilIdle());
        QCOMPARE(model->rowCount(), songCount);
        QCOMPARE(caption(), QStringLiteral("Execute\nquery"));
        QVERIFY(button("m_query_extendButton")->isEnabled());
        // Only the first rows count as first results.
        QCOMPARE(log.count("KelvoQueryController::handleFirstResults"), 0);
    }

    void firstResultsAreHandledOncePerQuery()
    {
        m_controller->setNewQueryProperties(1, 1);
        LogRecorder log;
        const QAbstractItemModel *model = query(0);
        QTRY_COMPARE(m_controller->queryState(), 2);
        m_controller->fetchRest();
        QVERIFY(waitUntilIdle());
        QCOMPARE(model->rowCount(), songCount);
        QCOMPARE(log.count("KelvoQueryController::handleFirstResults"), 1);
        QCOMPARE(log.count("KelvoQueryController::modelUpdatedSlot"), 1);
    }

    void aResultWithoutRowsNeverOffersToFetchTheRest()
    {
        query(5);
        QVERIFY(waitUntilIdle());
        LogRecorder log;
        const QAbstractItemModel *model = extend(99999); // no such artist
        QCOMPARE(m_controller->queryState(), 1);
        QTRY_COMPARE(log.count("KelvoQueryController::modelUpdatedSlot"), 1);
        QCOMPARE(m_controller->queryState(), 0);
        QCOMPARE(model->rowCount(), 0);
        QCOMPARE(log.count("KelvoMainWindow::showFetchRestButton"), 0);
        QCOMPARE(log.count("KelvoQueryController::handleFirstResults"), 0);
    }

    void aNewQueryLeavesTheEarlierResultAlive()
    {
        QPointer<QAbstractItemModel> first = query(0);
        QVERIFY(waitUntilIdle());
        QVERIFY(query(4) != first);
        QVERIFY(first);
        QCOMPARE(first->rowCount(), songCount);
    }

    // It lives on, may be in a playlist: what it tells is no news of the next query.
    void anEarlierResultDoesNotReachTheNextQuery()
    {
        m_controller->setNewQueryProperties(2, 2000);
        LogRecorder log;
        auto *first = qobject_cast<KelvoTrackerModel *>(query(0));
        query(4);
        QVERIFY(!query(99)); // leaves the one before it connected
        QVERIFY(QMetaObject::invokeMethod(first, "error", Q_ARG(QString, QStringLiteral("Too late"))));
        QCOMPARE(m_controller->queryState(), 1);
        QTRY_COMPARE(first->rowCount(), 2);
        QTRY_COMPARE(m_controller->queryState(), 2);
        QCOMPARE(log.count("KelvoQueryController::handleFirstResults"), 1);
        QSignalSpy completed(first, &KelvoTrackerModel::completed);
        first->fetchRest();
        QVERIFY(completed.wait());
        QCOMPARE(m_controller->queryState(), 2);
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

    void fetchRestOfVideosIsCritical()
    {
        query(10);
        LogRecorder log;
        m_controller->fetchRest();
        QCOMPARE(log.warnings(), QStringList(fetchRestLine));
        QVERIFY(waitUntilIdle());
    }

    void fetchRestWithoutAResultIsCritical()
    {
        LogRecorder log;
        m_controller->fetchRest();
        QCOMPARE(
            log.lines(), QStringList({"void KelvoQueryController::fetchRest() QObject(0x0)", fetchRestLine}));
        QCOMPARE(m_controller->queryState(), 0);
    }

    void errorsShowInTheWindow()
    {
        query(0);
        QVERIFY(QMetaObject::invokeMethod(
            m_controller->queryModel(), "error", Q_ARG(QString, QStringLiteral("The store is gone"))));
        QCOMPARE(
            m_window->findChild<QLabel *>("m_query_errorLabel")->text(), QStringLiteral("The store is gone"));
        QCOMPARE(caption(), QStringLiteral("Execute\nquery"));
        QCOMPARE(m_controller->queryState(), 0);
    }

    void aStoreThatCannotBeOpenedIsExplained()
    {
        const QByteArray data = qgetenv("XDG_DATA_HOME");
        m_controller.reset();
        closeStore();
        qputenv("XDG_DATA_HOME", "/proc/self/nothing");
        m_controller = std::make_unique<KelvoQueryController>(nullptr, m_window);
        const auto *label = m_window->findChild<QLabel *>("m_query_errorLabel");
        QTRY_VERIFY_WITH_TIMEOUT(!label->text().isEmpty(), patience);
        QCOMPARE(label->text(), store().errorText());
        QVERIFY2(label->text().contains("/proc/self/nothing"), qPrintable(label->text()));
        QVERIFY(!buttonsEnabled());

        qputenv("XDG_DATA_HOME", data);
        m_controller->setNewQueryProperties(200, 1000);
        QTRY_VERIFY(buttonsEnabled());
        QCOMPARE(label->text(), QString()); // what was wrong is right again
        QVERIFY(openStore());
    }

    void cancellingOnlyLogs()
    {
        const QAbstractItemModel *model = query(0);
        LogRecorder log;
        m_controller->cancelOngoingQuery();
        QCOMPARE(log.lines(), QStringList("KelvoQueryController::cancelOngoingQuery"));
        QCOMPARE(m_controller->queryState(), 1);
        QVERIFY(waitUntilIdle());
        QCOMPARE(model->rowCount(), songCount);
    }

    void searchOnlyLogs()
    {
        LogRecorder log;
        QCOMPARE(m_controller->search({}, "term", 3), nullptr);
        QCOMPARE(log.lines(), QStringList("KelvoQueryController::search"));
    }

    void theStateIsLogged()
    {
        LogRecorder log;
        m_controller->queryState();
        QCOMPARE(log.lines(), QStringList("KelvoQueryController::queryState 0"));
    }

    void firstBlockAloneKeepsTheFactory()
    {
        LogRecorder log;
        m_controller->setNewQueryProperties(3, 2000);
        QCOMPARE(
            log.lines(), QStringList("void KelvoQueryController::setNewQueryProperties(int, int) 3 2000"));
        QVERIFY(buttonsEnabled());
        const QAbstractItemModel *model = query(0);
        QTRY_COMPARE(m_controller->queryState(), 2);
        QCOMPARE(model->rowCount(), 3);
        m_controller->fetchRest();
        QVERIFY(waitUntilIdle());
        m_controller->setNewQueryProperties(4, 2000); // the result that is there stays as it is
        QCOMPARE(model->rowCount(), songCount);
    }

    void streamingBlockMakesANewFactory_data()
    {
        QTest::addColumn<int>("size");
        QTest::newRow("1") << 1;
        QTest::newRow("no limit") << 0;
        QTest::newRow("most") << 99999;
    }

    void streamingBlockMakesANewFactory()
    {
        QFETCH(int, size);
        const QAbstractItemModel *before = query(0);
        QVERIFY(waitUntilIdle());
        QCOMPARE(value(*before, nameless, "albumName").toString(), QStringLiteral("Unknown KTG Album"));
        QCOMPARE(value(*before, nameless, "artistName").toString(), QStringLiteral("Unknown KTG Artist"));

        LogRecorder log;
        m_controller->setNewQueryProperties(200, size);
        QCOMPARE(log.lines().mid(1), QStringList("void KelvoMainWindow::setQueryButtonsEnabled(bool)"));
        QVERIFY(!button("m_query_executeButton")->isEnabled());
        QTRY_VERIFY(buttonsEnabled());
        const QAbstractItemModel *after = query(0);
        QVERIFY(waitUntilIdle());
        QCOMPARE(value(*after, nameless, "albumName").toString(), QStringLiteral("Tuntematon Albumi"));
        QCOMPARE(value(*after, nameless, "artistName").toString(), QStringLiteral("Tuntematon Artisti"));
        // The same size again changes nothing.
        m_controller->setNewQueryProperties(200, size);
        QVERIFY(buttonsEnabled());
    }

    void subjectHooks()
    {
        LogRecorder log;
        m_controller->subjectsAdded({"a", "b"});
        m_controller->subjectsRemoved({});
        m_controller->subjectsChanged({"c"});
        m_controller->refreshModelSlot();
        m_controller->rowsUpdated(1, 2, QModelIndex());
        QCOMPARE(log.lines(),
            QStringList({"Subject(s) added: (a, b)", "Subject(s) removed: ()", "Subject(s) changed: (c)",
                "KelvoQueryController::refreshModelSlot",
                "void KelvoQueryController::rowsUpdated(int, int, const QModelIndex&)"}));
        QCOMPARE(log.warnings(), QStringList("Subject(s) changed: (c)"));
    }

    void slotsInTheirOrder()
    {
        const QMetaObject *meta = m_controller->metaObject();
        QStringList names;
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
            names.append(QString::fromLatin1(meta->method(i).methodSignature()));
        QCOMPARE(names,
            QStringList(
                {"setNewQueryProperties(int,int)", "modelUpdatedSlot()", "rowsUpdated(int,int,QModelIndex)",
                    "queryErrorSlot(QString)", "subjectsAdded(QStringList)", "subjectsRemoved(QStringList)",
                    "subjectsChanged(QStringList)", "refreshModelSlot()", "handleFirstResults()"}));
    }

    void endsWhileItsQueryRuns()
    {
        query(0);
        LogRecorder log;
        m_controller.reset();
        QCOMPARE(log.lines(), QStringList("KelvoQueryController::~KelvoQueryController"));
        QVERIFY(m_models.first()); // left alone
    }

    void queryOnAStoreThatCannotBeOpenedShowsAnError()
    {
        m_controller.reset();
        closeStore();
        const QByteArray dataFolder = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", "/dev/null/nowhere");
        LogRecorder log;
        m_controller = std::make_unique<KelvoQueryController>(nullptr, m_window);
        QTRY_COMPARE(log.count("void KelvoMainWindow::setQueryButtonsEnabled(bool)"), 2);
        const bool enabled = button("m_query_executeButton")->isEnabled();
        query(0);
        const bool ended = waitUntilIdle();
        m_controller.reset();
        qputenv("XDG_DATA_HOME", dataFolder);
        QVERIFY(openStore());
        QVERIFY(!enabled);
        QVERIFY(ended);
        QVERIFY(!m_window->findChild<QLabel *>("m_query_errorLabel")->text().isEmpty());
    }

    void rowsAfterTheWindowsEndGoNowhere()
    {
        QAbstractItemModel *model = query(0);
        delete m_window;
        QTRY_COMPARE(model->rowCount(), songCount);
        QCOMPARE(m_controller->queryState(), 1);
    }

private:
    static constexpr int songCount = 8;
    static constexpr int nameless = 6;

    QPointer<KelvoMainWindow> m_window;
    std::unique_ptr<KelvoQueryController> m_controller;
    QList<QPointer<QAbstractItemModel>> m_models;
};
KELVO_WIDGET_TEST(QueryControllerTest)
#include "QueryControllerTest.moc"
