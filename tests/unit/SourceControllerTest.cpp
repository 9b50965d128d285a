// SPDX-License-Identifier: MIT
#include "KelvoGeneralSourcePlaylist.h"
#include "SourceControllerCase.h"
#include "TestGroup.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QStandardItemModel>

// Queries, and what is done with their results.
class SourceControllerTest : public SourceControllerCase
{
    Q_OBJECT
private Q_SLOTS:
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

    void anAcceptedChoiceReplacesTheFormerOne()
    {
        chooseSources({true, false, true}, ModalCloser::Accept);
        chooseSources({false, true, false}, ModalCloser::Accept);
        QCOMPARE(chooseSources({}, ModalCloser::Reject), QList<bool>({false, true, false}));
    }

    /// The window tells the boxes as they stand, whatever the answer: dropping them is the controller's decision.
    void theWindowTellsTheBoxesOfACancelledDialogToo()
    {
        ModalCloser closer(ModalCloser::Reject);
        closer.whenOpen = [](QWidget *dialog) {
            const QList<QCheckBox *> boxes = dialog->findChildren<QCheckBox *>();
            boxes.at(0)->setChecked(false);
            boxes.at(2)->setChecked(true);
        };
        QList<bool> flags{true, true, false};
        QVERIFY(!m_console->window()->showSelectSourcesDialog(KelvoRegistry::instance()->sources(), flags));
        QCOMPARE(flags, QList<bool>({false, true, true}));
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
        QCOMPARE(shown()->rowCount(), SongCount);
        QCOMPARE(chooseSources({}, ModalCloser::Reject), QList<bool>({false, false, false}));
    }

    void chosenSourcesMakeNoDifference()
    {
        chooseSources({true, true, true}, ModalCloser::Accept);
        execute(AllSongs);
        QCOMPARE(shown()->rowCount(), SongCount);
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
        QTRY_COMPARE(shown()->rowCount(), SongCount);
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

    void extendingGivesNoWarning()
    {
        execute(AllArtists);
        select(0);
        LogRecorder log;
        click("m_query_extendButton");
        QTRY_COMPARE(caption(), QStringLiteral("Execute\nquery"));
        select(0);
        click("m_query_extendButton");
        QTRY_COMPARE(caption(), QStringLiteral("Execute\nquery"));
        m_models.append(m_controller->queryModel());
        QCOMPARE(log.count("KelvoSourceController::extendQuery"), 2);
        QCOMPARE(log.warnings(), QStringList());
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
        QCOMPARE(playlist->count(), SongCount);
        QCOMPARE(playlist->mediaInfoAt(2).title(), song(2).title);
        // Extending deletes the result; the playlist keeps its items.
        select(0);
        click("m_query_extendButton");
        m_models.append(m_controller->queryModel());
        QCOMPARE(playlist->count(), SongCount);
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
        QCOMPARE(playlist->count(), SongCount);
        QCOMPARE(find<QTextEdit>("m_errorLogField")->toPlainText(),
            QStringLiteral("Code 0, Playlist or its model has wrong type."));
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
};

KELVO_WIDGET_TEST(SourceControllerTest)
#include "SourceControllerTest.moc"
