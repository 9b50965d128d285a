// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoPlaylistController.h"
#include "KelvoRegistry.h"
#include "KelvoShared.h"
#include "KelvoSourceController.h"
#include "LogRecorder.h"
#include "RecordingSource.h"
#include "TestGroup.h"
#include "TrackerTestCase.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QListView>
#include <QMetaMethod>
#include <QStandardItemModel>
#include <QTest>
#include <QTextEdit>
#include <QToolButton>

namespace {
enum QueryIndex { AllSongs = 0, AllAlbums = 4, AllArtists = 5, AllPlaylists = 6, AllVideos = 10 };
constexpr int songCount = 6;

const QStringList propertyKeys{"signIn", "signedIn", "deviceType", "manufacturer", "manufacturerURL",
    "modelDescription", "modelName", "modelNumber", "modelURL", "serialNumber", "presentationURL",
    "universalProductCode", "iconURL", "supportQuery"};

QStringList requests(const QStringList &keys)
{
    QStringList calls;
    for (const QString &key : keys)
        calls.append("kelvoProperty(" + key + ')');
    return calls;
}
} // namespace

/// The source controller in a console with three sources and a store of six songs.
class SourceControllerTest : public TrackerTestCase
{
    Q_OBJECT

    template <typename T> T *find(const char *name) const { return m_console->find<T>(name); }
    void click(const char *name) const { find<QToolButton>(name)->click(); }
    void choose(int query) const { find<QComboBox>("m_query_queryCombo")->setCurrentIndex(query); }
    QString caption() const { return find<QToolButton>("m_query_executeButton")->text(); }
    QString propertiesText() const { return find<QTextEdit>("m_propertiesField")->toPlainText(); }
    QAbstractItemModel *shown() const { return find<QListView>("m_query_resultsView")->model(); }
    void select(int row) const
    {
        auto *view = find<QListView>("m_query_resultsView");
        view->setCurrentIndex(view->model()->index(row, 1));
    }
    void execute(int query)
    {
        choose(query);
        click("m_query_executeButton");
        m_models.append(m_controller->queryModel());
        QTRY_COMPARE(caption(), QStringLiteral("Execute\nquery"));
    }
    // An empty playlist of its own, made current.
    KelvoPlaylist *makePlaylist() const
    {
        KelvoPlaylistController *playlists = m_console->application()->playlists();
        playlists->createPlaylist("mine", "my list", nullptr);
        playlists->playlistChanged("mine");
        return playlists->currentPlaylist();
    }
    // Opens the select-sources dialog, checks these boxes only and answers.
    QList<bool> chooseSources(const QList<bool> &checks, ModalCloser::Answer answer)
    {
        QList<bool> before;
        ModalCloser closer(answer);
        closer.whenOpen = [&](QWidget *dialog) {
            const QList<QCheckBox *> boxes = dialog->findChildren<QCheckBox *>();
            for (qsizetype i = 0; i < boxes.size(); ++i) {
                before.append(boxes.at(i)->isChecked());
                boxes.at(i)->setChecked(checks.value(i));
            }
        };
        find<QAction>("m_actionSelectSources")->trigger();
        return before;
    }
    static void enter(const QString &source, KelvoSourceController *controller)
    {
        QVERIFY(QMetaObject::invokeMethod(controller, "invokeGetProperties", Q_ARG(QString, source)));
    }

private Q_SLOTS:
    // One store for all functions: none changes what it holds.
    void initTestCase()
    {
        TrackerTestCase::initTestCase();
        TrackerTestCase::init();
        std::vector<MediaItem> items;
        for (int i = 0; i < songCount; ++i)
            items.push_back(song(i));
        QVERIFY(openStore());
        QVERIFY(writeSongs(items));
    }

    void cleanupTestCase() { TrackerTestCase::cleanup(); }

    void init()
    {
        KelvoTestCase::init();
        m_first
            = std::make_unique<RecordingSource>("s1", "first", QStringList({"deviceType", "supportQuery"}));
        m_second = std::make_unique<RecordingSource>("s2", "second", propertyKeys);
        m_third = std::make_unique<RecordingSource>("s3", "third");
        for (RecordingSource *source : {m_first.get(), m_second.get(), m_third.get()})
            KelvoRegistry::instance()->addSource(source);
        m_console = std::make_unique<ConsoleFixture>();
        m_controller = m_console->application()->sources();
    }

    void cleanup()
    {
        m_console.reset();
        const QList<KelvoPlaylist *> playlists = KelvoRegistry::instance()->allPlaylists();
        for (const KelvoPlaylist *playlist : playlists)
            KelvoShared::instance()->unPublishPlaylist(playlist->uuid());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        for (const QPointer<QAbstractItemModel> &model : std::as_const(m_models))
            delete model;
        m_models.clear();
        m_first.reset();
        m_second.reset();
        m_third.reset();
    }

    void constructionOrder()
    {
        LogRecorder log;
        const KelvoSourceController second(m_console->application(), m_console->window());
        QVERIFY(log.containsInOrder({"KelvoSourceController::KelvoSourceController",
            "KelvoQueryController::KelvoQueryController",
            "KelvoBrowseController::KelvoBrowseController(QObject*, KelvoMainWindow*)",
            "KelvoThumbnailDownloader::KelvoThumbnailDownloader", "KelvoMainWindow::connectSourceSignals"}));
        QVERIFY(!second.parent());
        QStringList children;
        for (const QObject *child : second.children())
            children.append(QString::fromLatin1(child->metaObject()->className()));
        QCOMPARE(children,
            QStringList({"KelvoQueryController", "KelvoBrowseController", "KelvoThumbnailDownloader"}));
    }

    void destructionTakesTheHelpersAlong()
    {
        auto second = std::make_unique<KelvoSourceController>(m_console->application(), m_console->window());
        LogRecorder log;
        second.reset();
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourceController::~KelvoSourceController",
                "KelvoQueryController::~KelvoQueryController",
                "KelvoThumbnailDownloader::~KelvoThumbnailDownloader"}));
    }

    void slotsInTheirOrder()
    {
        const QMetaObject *meta = m_controller->metaObject();
        QStringList names;
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
            names.append(QString::fromLatin1(meta->method(i).methodSignature()));
        QCOMPARE(names,
            QStringList({"selectSources()", "showSourceProperties()", "invokeGetProperties(QString)",
                "invokeSignIn()", "invokeSignOut()", "search()", "executeQuery()", "extendQuery()",
                "addQueryToPlaylist()", "addBrowseToPlaylist()", "playableItemsInQueryModel()",
                "playableItemsInBrowseModel(int)", "executeBrowse()", "clearBrowseResults()",
                "browseResultItemActivated(QModelIndex)", "mediaArtsUpdatedSlot()",
                "setNewQueryProperties(int,int)", "sourcePropertyCallback(QString&,QVariant&)",
                "thumbnailReady(QByteArray)"}));
    }

    void operationsLogTheirNames()
    {
        LogRecorder log;
        m_controller->queryModel();
        m_controller->addBrowseToPlaylist();
        m_controller->mediaArtsUpdatedSlot();
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourceController::queryModel", "KelvoQueryController::queryModel",
                "KelvoSourceController::addBrowseToPlaylist",
                "KelvoSourceController::mediaArtsUpdatedSlot"}));
    }

    void noSourceIsCheckedAtFirst()
    {
        QCOMPARE(chooseSources({}, ModalCloser::Reject), QList<bool>({false, false, false}));
    }

    void acceptedChoiceIsProposedAgain()
    {
        chooseSources({false, true, true}, ModalCloser::Accept);
        QCOMPARE(chooseSources({false, true, true}, ModalCloser::Accept), QList<bool>({false, true, true}));
        QCOMPARE(chooseSources({}, ModalCloser::Reject), QList<bool>({false, true, true}));
    }

    void cancellingDropsTheEarlierChoice()
    {
        chooseSources({true, false, true}, ModalCloser::Accept);
        chooseSources({true, true, true}, ModalCloser::Reject);
        QCOMPARE(chooseSources({}, ModalCloser::Reject), QList<bool>({false, false, false}));
    }

    void nothingCheckedQueriesAsNoChoiceDoes()
    {
        chooseSources({false, false, false}, ModalCloser::Accept);
        execute(AllSongs);
        QCOMPARE(shown()->rowCount(), songCount);
        QCOMPARE(chooseSources({}, ModalCloser::Reject), QList<bool>({false, false, false}));
    }

    void chosenSourcesMakeNoDifference()
    {
        chooseSources({true, true, true}, ModalCloser::Accept);
        execute(AllSongs);
        QCOMPARE(shown()->rowCount(), songCount);
        QCOMPARE(m_first->takeCalls() + m_second->takeCalls() + m_third->takeCalls(), QStringList());
    }

    void chosenSourcesMayVanish()
    {
        chooseSources({true, true, true}, ModalCloser::Accept);
        m_first.reset(); // the registry takes it out by itself
        QCOMPARE(chooseSources({true, true}, ModalCloser::Accept), QList<bool>({true, true}));
        KelvoRegistry::instance()->removeSource(m_second.get());
        execute(AllSongs);
        QCOMPARE(chooseSources({}, ModalCloser::Reject), QList<bool>({true}));
    }

    void sourcesMayVanishUnderTheDialog()
    {
        {
            ModalCloser closer;
            closer.whenOpen = [this](QWidget *dialog) {
                for (QCheckBox *box : dialog->findChildren<QCheckBox *>())
                    box->setChecked(true);
                m_second.reset();
            };
            m_controller->selectSources();
        }
        QCOMPARE(chooseSources({}, ModalCloser::Reject), QList<bool>({true, true}));
    }

    void executeStartsAQuery()
    {
        choose(AllAlbums);
        LogRecorder log;
        click("m_query_executeButton");
        m_models.append(m_controller->queryModel());
        QVERIFY(log.containsInOrder({"KelvoSourceController::executeQuery",
            "KelvoQueryController::queryState 0", "KelvoMainWindow::getQuery",
            "KelvoQueryController::query 4", "KelvoMainWindow::showQueryCancelButton",
            "KelvoMainWindow::showQueryResults", "stopQueryDebugtimer()"}));
        QCOMPARE(shown(), m_controller->queryModel());
        QTRY_COMPARE(find<QLabel>("m_query_resultsLabel")->text(), QStringLiteral("3 results"));
    }

    void executeWhileRunningOnlyLogs()
    {
        click("m_query_executeButton");
        m_models.append(m_controller->queryModel());
        QCOMPARE(caption(), QStringLiteral("Cancel"));
        LogRecorder log;
        click("m_query_executeButton");
        QCOMPARE(log.lines(),
            QStringList({"startQueryDebugTimer()", "KelvoSourceController::executeQuery",
                "KelvoQueryController::queryState 1", "KelvoQueryController::cancelOngoingQuery"}));
        QTRY_COMPARE(shown()->rowCount(), songCount);
    }

    void executeAfterTheFirstRowsFetchesTheRest()
    {
        m_controller->setNewQueryProperties(2, 2000);
        click("m_query_executeButton");
        m_models.append(m_controller->queryModel());
        QTRY_COMPARE(caption(), QStringLiteral("Fetch\nrest"));
        QCOMPARE(find<QLabel>("m_query_resultsLabel")->text(), QStringLiteral("2 results"));
        LogRecorder log;
        click("m_query_executeButton");
        QVERIFY(log.containsInOrder(
            {"KelvoSourceController::executeQuery", "KelvoQueryController::queryState 2"}));
        QCOMPARE(log.count("KelvoMainWindow::showQueryResults"), 0);
        QTRY_COMPARE(find<QLabel>("m_query_resultsLabel")->text(), QStringLiteral("6 results"));
        QTRY_COMPARE(caption(), QStringLiteral("Execute\nquery"));
    }

    void extendWithoutASelectionWarns()
    {
        LogRecorder log;
        click("m_query_extendButton");
        QCOMPARE(log.warnings(), QStringList("Please select item to extend!"));
        QCOMPARE(log.lines().last(), QStringLiteral("Please select item to extend!"));
    }

    void extendShowsWhatBelongsToTheRow()
    {
        execute(AllAlbums);
        select(1);
        click("m_query_extendButton");
        m_models.append(m_controller->queryModel());
        QCOMPARE(shown(), m_controller->queryModel());
        QTRY_COMPARE(texts(*shown(), "songTitle"), QStringList({song(1).title, song(4).title}));
        QCOMPARE(find<QLabel>("m_query_resultsLabel")->text(), QStringLiteral("2 results"));
    }

    void extendingVideosLeavesThemShown()
    {
        execute(AllVideos);
        QAbstractItemModel *videos = shown();
        QStandardItemModel other(1, 2);
        m_console->window()->showQueryResults(&other);
        select(0);
        LogRecorder log;
        click("m_query_extendButton");
        QVERIFY(
            log.containsInOrder({"KelvoSourceController::extendQuery", "KelvoQueryController::extendQuery 0",
                "Not extendable item!", "KelvoMainWindow::showQueryResults"}));
        QCOMPARE(shown(), &other);
        QCOMPARE(m_controller->queryModel(), videos);
    }

    void searchReadsItsConditionsAndSearchesNothing()
    {
        ModalCloser closer(ModalCloser::Accept);
        LogRecorder log;
        m_controller->search();
        QCOMPARE(closer.seen(), QStringList("Search"));
        QVERIFY(log.containsInOrder({"KelvoSourceController::search", "KelvoMainWindow::showSearchDialog",
            "KelvoMainWindow::getSearchConditions", "KelvoMainWindow::showQueryResults"}));
        QCOMPARE(log.count("KelvoQueryController::search"), 0);
    }

    void cancelledSearchStops()
    {
        ModalCloser closer(ModalCloser::Reject);
        LogRecorder log;
        m_controller->search();
        QCOMPARE(log.count("KelvoMainWindow::getSearchConditions"), 0);
        QCOMPARE(log.count("KelvoMainWindow::showQueryResults"), 0);
    }

    void containersAreNotAppended_data()
    {
        QTest::addColumn<int>("query");
        QTest::newRow("artists") << int(AllArtists);
        QTest::newRow("albums") << int(AllAlbums);
    }

    void containersAreNotAppended()
    {
        QFETCH(int, query);
        const KelvoPlaylist *playlist = makePlaylist();
        execute(query);
        select(0);
        LogRecorder log;
        click("m_query_addButton");
        QCOMPARE(log.lines(),
            QStringList(
                {"KelvoSourceController::addQueryToPlaylist", "KelvoMainWindow::selectedQueryResultItemIndex",
                    "KelvoQueryController::latestQueryExtendable"}));
        QVERIFY(!m_controller->playableItemsInQueryModel());
        QCOMPARE(playlist->count(), 0);
    }

    void songsOfAnExtendedAlbumAreAppended()
    {
        const KelvoPlaylist *playlist = makePlaylist();
        execute(AllAlbums);
        select(0);
        click("m_query_extendButton");
        m_models.append(m_controller->queryModel());
        QTRY_COMPARE(caption(), QStringLiteral("Execute\nquery"));
        QVERIFY(m_controller->playableItemsInQueryModel());
        click("m_query_addButton");
        QCOMPARE(playlist->count(), 2);
        QCOMPARE(playlist->mediaInfoAt(1).title(), song(3).title);
        QCOMPARE(playlist->mediaInfoAt(1).url(), QUrl(QString::fromUtf8(song(3).uri)));
    }

    void theSelectedRowAloneIsAppended()
    {
        const KelvoPlaylist *playlist = makePlaylist();
        execute(AllSongs);
        select(3);
        LogRecorder log;
        click("m_query_addButton");
        QVERIFY(log.contains("KelvoPlaylistController::addToPlaylist 3 3"));
        QCOMPARE(playlist->count(), 1);
        QCOMPARE(playlist->mediaInfoAt(0).title(), song(3).title);
    }

    void anEmptyResultGivesTheRangeOfNothing()
    {
        makePlaylist();
        execute(7); // no favourites
        LogRecorder log;
        click("m_query_addButton");
        QVERIFY(log.contains("KelvoPlaylistController::addToPlaylist 0 -1"));
    }

    void appendingBeforeAnyQueryOnlyLogs()
    {
        const KelvoPlaylist *playlist = makePlaylist();
        LogRecorder log;
        click("m_query_addButton");
        QCOMPARE(log.lines().filter("addToPlaylist"), QStringList());
        QCOMPARE(log.warnings(), QStringList());
        QCOMPARE(playlist->count(), 0);
    }

    void aPlaylistStandsOnTheResult()
    {
        execute(AllSongs);
        LogRecorder log;
        click("m_query_createPlaylistButton");
        QVERIFY(log.contains("Showing create playlist dialog disabled until VKB works!"));
        const QList<KelvoPlaylist *> playlists = KelvoRegistry::instance()->allPlaylists();
        QCOMPARE(playlists.size(), 1);
        const auto *playlist = qobject_cast<KelvoGeneralSourcePlaylist *>(playlists.first());
        QVERIFY(playlist);
        QCOMPARE(playlist->name(), QStringLiteral("pl1"));
        QCOMPARE(playlist->underlyingModel(), m_controller->queryModel());
        QCOMPARE(playlist->count(), songCount);
        QCOMPARE(playlist->mediaInfoAt(2).title(), song(2).title);
        // Extending deletes the result; the playlist keeps its items.
        select(0);
        click("m_query_extendButton");
        m_models.append(m_controller->queryModel());
        QCOMPARE(playlist->count(), songCount);
        QCOMPARE(playlist->mediaInfoAt(2).title(), song(2).title);
    }

    void containersMakeNoPlaylist()
    {
        execute(AllArtists);
        LogRecorder log;
        click("m_query_createPlaylistButton");
        QVERIFY(log.contains("Playlist will be created only of playable items!"));
        QVERIFY(KelvoRegistry::instance()->allPlaylists().isEmpty());
    }

    void appendingToAPlaylistOverAResultIsRefused()
    {
        execute(AllSongs);
        click("m_query_createPlaylistButton");
        const KelvoPlaylist *playlist = KelvoRegistry::instance()->allPlaylists().first();
        m_console->application()->playlists()->playlistChanged(playlist->uuid());
        click("m_query_addButton");
        QCOMPARE(playlist->count(), songCount);
        QCOMPARE(find<QTextEdit>("m_errorLogField")->toPlainText(),
            QStringLiteral("Code 0, Playlist or its model has wrong type."));
    }

    void browsingShowsNothing()
    {
        LogRecorder log;
        click("m_browse_executeButton");
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourceController::executeBrowse", "KelvoBrowseController::isOngoing false",
                            "KelvoMainWindow::selectedBrowseResultItemIndex",
                            "KelvoMainWindow::browseResultCount", "KelvoMainWindow::setBrowseButtonsEnabled",
                            "QAbstractItemModel* KelvoBrowseController::browse(QList<KelvoSource*>)",
                            "KelvoMainWindow::showBrowseResults", "KelvoMainWindow::updateBrowseResultLabel",
                            "KelvoMainWindow::setBrowseButtonsEnabled"})
                .mid(0, log.lines().size()));
        QCOMPARE(find<QListView>("m_browse_resultsView")->model(), nullptr);
        QCOMPARE(find<QLabel>("m_browse_resultsLabel")->text(), QStringLiteral("0 results"));
        QVERIFY(find<QToolButton>("m_browse_executeButton")->isEnabled());
        QVERIFY(find<QToolButton>("m_browse_clearButton")->isEnabled());
    }

    void browsingWithResultsNeedsASelection()
    {
        QStandardItemModel results(2, 2);
        m_console->window()->showBrowseResults(&results);
        click("m_browse_executeButton");
        auto *view = find<QListView>("m_browse_resultsView");
        QCOMPARE(view->model(), &results);
        view->setCurrentIndex(results.index(1, 1));
        click("m_browse_executeButton");
        QCOMPARE(view->model(), nullptr);
    }

    void clearEmptiesTheBrowseTab()
    {
        QStandardItemModel results(2, 2);
        m_console->window()->showBrowseResults(&results);
        LogRecorder log;
        click("m_browse_clearButton");
        QVERIFY(log.containsInOrder({"KelvoSourceController::clearBrowseResults",
            "void KelvoBrowseController::clearBrowseResults()", "KelvoMainWindow::clearBrowseResults"}));
        QCOMPARE(find<QListView>("m_browse_resultsView")->model(), nullptr);
        QCOMPARE(find<QLabel>("m_browse_resultsLabel")->text(), QStringLiteral("0 results"));
    }

    void everyBrowseRowIsPlayable()
    {
        QVERIFY(m_controller->playableItemsInBrowseModel(0));
        QVERIFY(m_controller->playableItemsInBrowseModel(-1));
    }

    void activatedRowClearsTheMetadata()
    {
        m_console->window()->addBrowseMetadata("title", "x");
        LogRecorder log;
        m_controller->browseResultItemActivated(QModelIndex());
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourceController::browseResultItemActivated",
                "KelvoMainWindow::clearBrowseMetadata"}));
        QCOMPARE(find<QTextEdit>("m_browse_metadataField")->toPlainText(), QString());
    }

    void activationsDuringAnActivationAreHandledAfterIt()
    {
        const QStandardItemModel rows(3, 2);
        int nested = 0;
        auto *field = find<QTextEdit>("m_browse_metadataField");
        m_console->window()->addBrowseMetadata("title", "x");
        const auto again = [&] {
            if (nested++ > 0)
                return;
            m_controller->browseResultItemActivated(rows.index(1, 1));
            m_controller->browseResultItemActivated(rows.index(2, 1)); // replaces the row before
        };
        connect(field, &QTextEdit::textChanged, this, again);
        LogRecorder log;
        m_controller->browseResultItemActivated(rows.index(0, 1));
        field->disconnect(this);
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourceController::browseResultItemActivated",
                "KelvoMainWindow::clearBrowseMetadata", "KelvoSourceController::browseResultItemActivated",
                "KelvoSourceController::browseResultItemActivated",
                "\nKelvoSourceController::browseResultItemActivated loop",
                "KelvoMainWindow::clearBrowseMetadata"}));
        log.clear();
        m_controller->browseResultItemActivated(rows.index(0, 1)); // not busy any more
        QCOMPARE(log.count("KelvoMainWindow::clearBrowseMetadata"), 1);
    }

    void thumbnailsGoToTheWindow()
    {
        LogRecorder log;
        m_controller->thumbnailReady("no picture");
        QVERIFY(log.containsInOrder(
            {"KelvoSourceController::thumbnailReady", "KelvoMainWindow::showBrowseResultThumbnail, array"}));
        QCOMPARE(find<QLabel>("m_browse_pictureField")->text(), QStringLiteral("error showing thumbnail"));
    }

    void propertiesAreAskedInTheirOrderOneByOne()
    {
        enter("second", m_controller);
        QStringList lines;
        for (const QString &key : propertyKeys) {
            QCOMPARE(m_second->takeCalls(), requests({key}));
            QVERIFY(m_second->answer(key + " value"));
            lines.append(key + ": " + key + " value");
            QTRY_COMPARE(propertiesText(), lines.join('\n'));
        }
        QCOMPARE(m_second->takeCalls(), QStringList());
    }

    void refusedPropertiesAreSkipped()
    {
        LogRecorder log;
        enter("first", m_controller);
        QCOMPARE(m_first->takeCalls(), requests(propertyKeys.mid(0, 3)));
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourceController::invokeGetProperties",
                "KelvoSourceController::getNextSourceProperty 0",
                "KelvoSourceController::getNextSourceProperty 1",
                "KelvoSourceController::getNextSourceProperty 2"}));
        QVERIFY(m_first->answer("box"));
        QTRY_COMPARE(propertiesText(), QStringLiteral("deviceType: box"));
        QCOMPARE(m_first->takeCalls(), requests(propertyKeys.mid(3)));
        QVERIFY(m_first->answer(true));
        QTRY_COMPARE(propertiesText(), QStringLiteral("deviceType: box\nsupportQuery: true"));
        QCOMPARE(log.count("KelvoSourceController::getNextSourceProperty 14"), 0);
    }

    void valuesShowAsTheirTexts_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("text") << QVariant("X") << "deviceType: X";
        QTest::newRow("true") << QVariant(true) << "deviceType: true";
        QTest::newRow("false") << QVariant(false) << "deviceType: false";
        QTest::newRow("number") << QVariant(17) << "deviceType: 17";
        QTest::newRow("no text") << QVariant(QVariantMap{{"a", 1}}) << "deviceType: ";
        QTest::newRow("none") << QVariant() << "deviceType: ";
        QTest::newRow("placeholders") << QVariant("%1 %2") << "deviceType: %1 %2";
        QTest::newRow("markup") << QVariant("<b>x</b>") << "deviceType: <b>x</b>";
    }

    void valuesShowAsTheirTexts()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, text);
        enter("first", m_controller);
        QVERIFY(m_first->answer(value));
        QTRY_COMPARE(propertiesText(), text);
    }

    void propertiesOfAnUnknownNameStopSilently_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("none") << "unknown";
        QTest::newRow("other case") << "First";
        QTest::newRow("empty") << "";
    }

    void propertiesOfAnUnknownNameStopSilently()
    {
        QFETCH(QString, name);
        enter("first", m_controller);
        m_first->takeCalls();
        LogRecorder log;
        enter(name, m_controller);
        QCOMPARE(log.lines(), QStringList("KelvoSourceController::invokeGetProperties"));
        QCOMPARE(m_first->takeCalls(), QStringList());
        m_controller->invokeSignIn();
        QCOMPARE(m_first->takeCalls(), QStringList());
    }

    void theFirstSourceOfANameIsAsked()
    {
        RecordingSource twin("s4", "second");
        KelvoRegistry::instance()->addSource(&twin);
        enter("second", m_controller);
        QCOMPARE(m_second->takeCalls(), requests({"signIn"}));
        QCOMPARE(twin.takeCalls(), QStringList());
    }

    void aNewWalkSharesItsPlaceWithTheAnswersOfTheOld()
    {
        enter("second", m_controller);
        enter("second", m_controller);
        QCOMPARE(m_second->takeCalls(), requests({"signIn", "signIn"}));
        QVERIFY(m_second->answer(false));
        QVERIFY(m_second->answer(false));
        QTRY_COMPARE(propertiesText(), QStringLiteral("signIn: false\nsignIn: false"));
        QCOMPARE(m_second->takeCalls(), requests({"signedIn", "deviceType"}));
    }

    void aSourceThatVanishesEndsTheWalk()
    {
        enter("second", m_controller);
        QVERIFY(m_second->answer("x"));
        m_second.reset();
        QTRY_COMPARE(propertiesText(), QStringLiteral("signIn: x"));
        m_controller->invokeSignIn();
        m_controller->getNextSourceProperty();
    }

    void signInAndOut()
    {
        enter("third", m_controller);
        m_third->takeCalls();
        LogRecorder log;
        m_controller->invokeSignIn();
        m_controller->invokeSignOut();
        QCOMPARE(m_third->takeCalls(),
            QStringList({"setKelvoProperty(signIn,bool,true)", "setKelvoProperty(signIn,bool,false)"}));
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourceController::invokeSignIn", "KelvoSourceController::invokeSignOut"}));
    }

    void signInWithoutAChosenSourceDoesNothing()
    {
        m_controller->invokeSignIn();
        m_controller->invokeSignOut();
        QCOMPARE(m_first->takeCalls() + m_second->takeCalls() + m_third->takeCalls(), QStringList());
    }

    void thePropertiesDialogAsksAtOnce()
    {
        ModalCloser closer;
        closer.whenOpen = [this](QWidget *dialog) {
            QCOMPARE(m_first->takeCalls(), requests(propertyKeys.mid(0, 3)));
            auto *combo = dialog->findChild<QComboBox *>("m_sourceCombo");
            QCOMPARE(combo->count(), 3);
            QVERIFY(m_first->answer("box"));
            QTRY_COMPARE(propertiesText(), QStringLiteral("deviceType: box"));
            combo->setCurrentIndex(1);
            QCOMPARE(propertiesText(), QString());
            QCOMPARE(m_second->takeCalls(), requests({"signIn"}));
            dialog->findChild<QPushButton *>("m_signInButton")->click();
            dialog->findChild<QPushButton *>("m_signOutButton")->click();
            QCOMPARE(m_second->takeCalls(),
                QStringList({"setKelvoProperty(signIn,bool,true)", "setKelvoProperty(signIn,bool,false)"}));
        };
        find<QAction>("m_actionSourceProperties")->trigger();
        QCOMPARE(closer.seen(), QStringList("Source properties"));
    }

    void thePropertiesDialogIsConnectedOnceHoweverOftenItOpens()
    {
        ModalCloser closer;
        for (int i = 0; i < 3; ++i)
            m_controller->showSourceProperties();
        LogRecorder log;
        closer.whenOpen = [](QWidget *dialog) {
            dialog->findChild<QComboBox *>("m_sourceCombo")->setCurrentIndex(2);
            dialog->findChild<QPushButton *>("m_signInButton")->click();
        };
        m_third->takeCalls();
        m_controller->showSourceProperties();
        QCOMPARE(
            m_third->takeCalls(), requests(propertyKeys) + QStringList("setKelvoProperty(signIn,bool,true)"));
        // The emptied list, its new first entry and the choice above.
        QCOMPARE(log.count("KelvoSourceController::invokeGetProperties"), 3);
    }

    void queryPropertiesReachTheFactoryTwice()
    {
        ModalCloser closer;
        LogRecorder log;
        closer.whenOpen = [](QWidget *dialog) {
            dialog->findChild<QDialogButtonBox *>("m_buttonBox")->button(QDialogButtonBox::Ok)->click();
        };
        find<QAction>("m_actionQuery_properties")->trigger();
        const QStringList lines = log.lines();
        QVERIFY(log.containsInOrder({"void KelvoMainWindow::showQueryPropertiesDialog()",
            "KelvoGUIMain::sources", "virtual void KelvoQueryPropertiesDialog::accept() 0 0",
            "void KelvoSourceController::setNewQueryProperties(int, int) 0 0",
            "void KelvoQueryController::setNewQueryProperties(int, int) 0 0",
            "void KelvoMainWindow::setQueryButtonsEnabled(bool)",
            "virtual void KelvoQueryPropertiesDialog::accept() 0 0",
            "void KelvoQueryController::setNewQueryProperties(int, int) 0 0"}));
        // One new factory, not two.
        QVERIFY(!find<QToolButton>("m_query_executeButton")->isEnabled());
        QTRY_VERIFY(find<QToolButton>("m_query_executeButton")->isEnabled());
        QCOMPARE(log.count("void KelvoMainWindow::setQueryButtonsEnabled(bool)"), 2);
    }

    void theQueryPropertiesDialogIsMadeOnce()
    {
        QVERIFY(!m_console->find<QDialog>("QueryPropertiesDialog"));
        ModalCloser closer(ModalCloser::Reject);
        QAction *action = find<QAction>("m_actionQuery_properties");
        action->trigger();
        const QDialog *dialog = find<QDialog>("QueryPropertiesDialog");
        QVERIFY(dialog);
        closer.whenOpen = [](QWidget *open) {
            open->findChild<QSpinBox *>("m_firstBlockSizeSpinBox")->setValue(7);
        };
        action->trigger();
        QCOMPARE(find<QDialog>("QueryPropertiesDialog"), dialog);
        // What it held is still there after Cancel.
        int value = -1;
        closer.whenOpen = [&](QWidget *open) {
            value = open->findChild<QSpinBox *>("m_firstBlockSizeSpinBox")->value();
        };
        action->trigger();
        QCOMPARE(value, 7);
    }

    void theSelectedNamesAreThoseOfTheCheckedBoxes()
    {
        chooseSources({true, false, true}, ModalCloser::Accept);
        LogRecorder log;
        QCOMPARE(m_console->window()->getSelectedSources(), QStringList({"first", "third"}));
        QVERIFY(log.contains("KelvoMainWindow::getSelectedSources"));
    }

    void theTermOfTheLastSearchIsForgotten()
    {
        ModalCloser closer(ModalCloser::Reject);
        closer.whenOpen = [](QWidget *dialog) {
            dialog->findChild<QLineEdit *>("m_searchTermEdit")->setText("mine");
            dialog->findChild<QComboBox *>("m_searchChoiseCombo")->setCurrentIndex(4);
        };
        m_controller->search();
        QString term;
        int item = -1;
        m_console->window()->getSearchConditions(term, item);
        QCOMPARE(term, QStringLiteral("mine"));
        QCOMPARE(item, 4);
        closer.whenOpen = nullptr;
        m_controller->search();
        m_console->window()->getSearchConditions(term, item);
        QVERIFY(!term.isEmpty());
        QVERIFY(term != QStringLiteral("mine"));
        QCOMPARE(item, 2);
    }

private:
    std::unique_ptr<RecordingSource> m_first;
    std::unique_ptr<RecordingSource> m_second;
    std::unique_ptr<RecordingSource> m_third;
    std::unique_ptr<ConsoleFixture> m_console;
    KelvoSourceController *m_controller = nullptr;
    QList<QPointer<QAbstractItemModel>> m_models;
};

KELVO_WIDGET_TEST(SourceControllerTest)
#include "SourceControllerTest.moc"
