// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "FakePlaylist.h"
#include "FatalCall.h"
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoPlaylistController.h"
#include "KelvoShared.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"
#include "TestRegistry.h"

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QStandardItemModel>
#include <QStringListModel>
#include <QTest>
#include <QTextEdit>

namespace {
const char *const wrongType
    = "void KelvoPlaylistController::addToPlaylist(const QAbstractItemModel&, int, int) "
      "playlist is not KelvoGeneralSourcePlaylist or underlying model is not QStandardItemModel";
} // namespace

using Command = std::function<void(KelvoPlaylistController &)>;
Q_DECLARE_METATYPE(Command)

/// The commands of the Playlists menu.
class PlaylistEditingTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_playlist = std::make_unique<FakePlaylist>("p1", "list", QStringList{"a", "b", "c", "d", "e", "f"});
        registry()->addPlaylist(m_playlist.get());
        m_console = std::make_unique<ConsoleFixture>();
        m_controller = m_console->application()->playlists();
    }

    void cleanup()
    {
        m_console.reset();
        m_playlist.reset();
        const QList<KelvoPlaylist *> playlists = registry()->allPlaylists();
        for (const KelvoPlaylist *playlist : playlists)
            KelvoShared::instance()->unPublishPlaylist(playlist->uuid());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    static void commandsOnAPlaylist()
    {
        QTest::addColumn<Command>("command");
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("calls");
        using C = KelvoPlaylistController;
        const auto row
            = [](const char *name, const Command &command, const char *line, const QStringList &calls) {
                  QTest::newRow(name) << command << QString::fromLatin1(line) << calls;
              };
        row("clear", &C::clearPlaylist, "KelvoPlaylistController::clearPlaylist", {"clear()"});
        row("remove current", &C::removeCurrentItem, "KelvoPlaylistController::removeCurrentItem",
            {"removeItem(-1)"}); // passed on unchecked
        row("remove several of nothing", &C::removeSeveralItems,
            "KelvoPlaylistController::removeSeveralItems", {});
        row("shuffle", &C::shufflePlaylist, "KelvoPlaylistController::shufflePlaylist", {"shuffle()"});
        row("repeat", &C::repeatPlaylist, "KelvoPlaylistController::repeatPlaylist", {"setRepeatMode(0)"});
        row("A-Z", &C::sortPlaylistAtoZ, "", {"sort(title,0)"});
        row("Z-A", &C::sortPlaylistZtoA, "", {"sort(title,1)"});
        row("short first", &C::sortPlaylistShortToLong, "", {"sort(duration,4)"});
        row("long first", &C::sortPlaylistLongToShort, "", {"sort(duration,5)"});
        row("uris", &C::invokeGetPlaylistUris, "KelvoPlaylistController::invokeGetPlaylistUris", {});
        row("load", &C::showLoadPlaylistDialog, "KelvoPlaylistController::showLoadPlaylistDialog", {});
        row("delete from tracker", &C::deletePersistentPlaylist,
            "void KelvoPlaylistController::deletePersistentPlaylist()", {});
    }

    void command_data()
    {
        commandsOnAPlaylist();
        QTest::newRow("from results") << Command(&KelvoPlaylistController::createNewModelPlaylist)
                                      << "KelvoPlaylistController::createNewModelPlaylist" << QStringList();
    }

    void command()
    {
        QFETCH(Command, command);
        QFETCH(QString, line);
        QFETCH(QStringList, calls);
        LogRecorder log;
        command(*m_controller);
        QCOMPARE(log.lines().mid(0, 1).join(QString()), line);
        QCOMPARE(m_playlist->takeCalls(), calls);
    }

    void withoutAPlaylistOnlyTheLogLine_data() { commandsOnAPlaylist(); }

    void withoutAPlaylistOnlyTheLogLine()
    {
        QFETCH(Command, command);
        QFETCH(QString, line);
        m_controller->playlistChanged("unknown");
        m_playlist->takeCalls();
        LogRecorder log;
        const ModalCloser closer;
        command(*m_controller);
        QCOMPARE(log.lines(), line.isEmpty() ? QStringList() : QStringList(line));
        QCOMPARE(m_playlist->takeCalls(), QStringList());
        QCOMPARE(closer.seen(), QStringList());
    }

    void deleteWithdrawsAPublishedPlaylist()
    {
        m_controller->createPlaylist("mine", "my list", nullptr);
        m_console->find<QComboBox>("m_music_playlistCombo")->setCurrentIndex(1);
        LogRecorder log;
        m_controller->deletePlaylist();
        QVERIFY(log.containsInOrder(
            {"KelvoPlaylistController::deletePlaylist", "Deleting current playlist, id= \"mine\""}));
        QCOMPARE(registry()->findPlaylistByUuid("mine"), nullptr);
        QCOMPARE(m_console->find<QComboBox>("m_music_playlistCombo")->count(), 1);
    }

    void deleteOfAForeignPlaylistChangesNothing()
    {
        m_controller->deletePlaylist();
        QCOMPARE(registry()->allPlaylists().size(), 1);
    }

    void removeCurrentItemTakesTheSelectedRow()
    {
        view()->setCurrentIndex(m_playlist->itemModel()->index(3, 1));
        m_controller->removeCurrentItem();
        QCOMPARE(m_playlist->takeCalls(), QStringList("removeItem(3)"));
    }

    void rowsSelectedBackwardsAreRemovedForwards()
    {
        auto *selection = view()->selectionModel();
        for (int row : {5, 4, 3, 2})
            selection->select(m_playlist->itemModel()->index(row, 1), QItemSelectionModel::Select);
        m_controller->removeSeveralItems();
        QCOMPARE(m_playlist->takeCalls(), QStringList("removeItems(2,5)"));
    }

    void shuffleIsAToggle()
    {
        const auto *action = m_console->find<QAction>("m_actionShuffle");
        m_controller->shufflePlaylist();
        QVERIFY(action->isChecked());
        m_controller->shufflePlaylist();
        QVERIFY(!action->isChecked());
        QCOMPARE(m_playlist->takeCalls(), QStringList({"shuffle()", "unshuffle()"}));
    }

    void repeatThreeTimesReturnsToTheStart()
    {
        const auto *action = m_console->find<QAction>("m_actionRepeat");
        QStringList texts(action->text());
        for (int i = 0; i < 3; ++i) {
            m_controller->repeatPlaylist();
            texts.append(action->text());
        }
        QCOMPARE(texts, QStringList({"Repeat off", "Repeat all", "Repeat one", "Repeat off"}));
        QCOMPARE(m_playlist->takeCalls(),
            QStringList({"setRepeatMode(0)", "setRepeatMode(2)", "setRepeatMode(1)"}));
    }

    void unknownRepeatModeIsPassedOn()
    {
        m_playlist->setRepeatMode(7);
        m_playlist->takeCalls();
        m_controller->repeatPlaylist();
        QCOMPARE(m_playlist->takeCalls(), QStringList("setRepeatMode(7)"));
        QCOMPARE(m_console->find<QAction>("m_actionRepeat")->text(), QString());
    }

    void repeatNamesAreLogged()
    {
        LogRecorder log;
        QCOMPARE(m_controller->showRepeatActionName(0), QStringLiteral("Repeat all"));
        QCOMPARE(m_controller->showRepeatActionName(1), QStringLiteral("Repeat off"));
        QCOMPARE(m_controller->showRepeatActionName(2), QStringLiteral("Repeat one"));
        QCOMPARE(m_controller->showRepeatActionName(3), QString());
        QCOMPARE(m_controller->showRepeatActionName(-1), QString());
        QCOMPARE(log.count("KelvoPlaylistController::showRepeatActionName()"), 5);
    }

    void sortRefreshesTheShuffleMark()
    {
        m_controller->shufflePlaylist();
        m_controller->sortPlaylistAtoZ(); // the fake is not shuffled any more
        QVERIFY(!m_console->find<QAction>("m_actionShuffle")->isChecked());
    }

    void emptyPlaylistIsSortedToo()
    {
        FakePlaylist empty("p2", "empty");
        registry()->addPlaylist(&empty);
        m_console->find<QComboBox>("m_music_playlistCombo")->setCurrentIndex(1);
        m_console->window()->showShuffled(true);
        m_controller->sortPlaylistZtoA();
        QCOMPARE(empty.takeCalls(), QStringList("sort(title,1)"));
        QVERIFY(!m_console->find<QAction>("m_actionShuffle")->isChecked());
    }

    void createEmptyProposesAName()
    {
        QString proposed;
        ModalCloser closer;
        closer.whenOpen = [&](QWidget *dialog) {
            proposed = dialog->findChild<QLineEdit *>("m_nameEdit")->text();
        };
        m_controller->createNewEmptyPlaylist();
        QCOMPARE(closer.seen(), QStringList("Create new playlist"));
        QCOMPARE(proposed, QStringLiteral("pl2"));
        QCOMPARE(registry()->allPlaylists().last()->name(), QStringLiteral("pl2"));
        QCOMPARE(m_controller->currentPlaylist(), m_playlist.get());
    }

    void createEmptyTakesTheNameOfTheDialog()
    {
        ModalCloser closer;
        closer.whenOpen = [](QWidget *dialog) {
            dialog->findChild<QLineEdit *>("m_nameEdit")->setText("Mine");
        };
        m_controller->createNewEmptyPlaylist();
        QCOMPARE(registry()->allPlaylists().last()->name(), QStringLiteral("Mine"));
    }

    void oddNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("10,000 characters") << QString(10'000, u'w');
        QTest::newRow("line breaks") << QStringLiteral("one\ntwo\r\nthree\u2028four");
        QTest::newRow("right to left")
            << QString::fromUtf8("\xd8\xb4\xd8\xb9\xd8\xb1 \xe2\x80\xaemixed\xe2\x80\xac 123");
        QTest::newRow("blanks only") << QStringLiteral("   ");
        QTest::newRow("NUL") << QString(QChar(0));
        QTest::newRow("half a pair") << QString(QChar(0xd83d));
        QTest::newRow("mark-up") << QStringLiteral("<b>&amp;%1</b>");
    }

    void oddNames()
    {
        QFETCH(QString, name);
        m_console->window()->show();
        QCoreApplication::processEvents();
        const int width = m_console->window()->minimumSizeHint().width();
        m_controller->createPlaylist("odd", name, nullptr);
        m_controller->playlistChanged("odd");
        for (const char *box : {"m_music_playlistCombo", "m_browse_playlistCombo", "m_query_playlistCombo"}) {
            auto *combo = m_console->find<QComboBox>(box);
            QCOMPARE(combo->itemText(1), name);
            QCOMPARE(combo->itemData(1, Qt::UserRole).toString(), QStringLiteral("odd"));
            combo->setCurrentIndex(1);
            combo->grab(); // painted as well
        }
        QCOMPARE(m_controller->currentPlaylist()->name(), name);
        QCOMPARE(m_console->window()->minimumSizeHint().width(), width); // no name pulls the window apart
        m_controller->deletePlaylist();
        QCOMPARE(m_console->find<QComboBox>("m_music_playlistCombo")->count(), 1);
    }

    void longNamesComeThroughTheDialog()
    {
        const QString name(10'000, u'w');
        ModalCloser closer;
        closer.whenOpen = [&name](QWidget *dialog) {
            dialog->findChild<QLineEdit *>("m_nameEdit")->setText(name);
        };
        m_controller->createNewEmptyPlaylist();
        QCOMPARE(registry()->allPlaylists().last()->name(), name);
    }

    void createEmptyWithAnEmptiedNameCreatesNothing()
    {
        ModalCloser closer;
        closer.whenOpen = [](QWidget *dialog) {
            dialog->findChild<QLineEdit *>("m_nameEdit")->clear();
        };
        m_controller->createNewEmptyPlaylist();
        QCOMPARE(registry()->allPlaylists().size(), 1);
    }

    void createEmptyCancelled()
    {
        const ModalCloser closer(ModalCloser::Reject);
        m_controller->createNewEmptyPlaylist();
        QCOMPARE(closer.seen(), QStringList("Create new playlist"));
        QCOMPARE(registry()->allPlaylists().size(), 1);
    }

    void resultsThatWereNotAskedForMakeAnEmptyPlaylist()
    {
        LogRecorder log;
        m_controller->createNewModelPlaylist();
        QVERIFY(log.containsInOrder({"KelvoPlaylistController::createNewModelPlaylist",
            "KelvoSourceController::playableItemsInQueryModel",
            "Showing create playlist dialog disabled until VKB works!",
            "KelvoSourceController::queryModel"}));
        QCOMPARE(registry()->allPlaylists().size(), 2);
        QCOMPARE(registry()->allPlaylists().last()->name(), QStringLiteral("pl2"));
        QCOMPARE(registry()->allPlaylists().last()->count(), 0);
    }

    void addCopiesAllColumnsAsTexts()
    {
        m_controller->createPlaylist("mine", "my list", nullptr);
        m_console->find<QComboBox>("m_music_playlistCombo")->setCurrentIndex(1);
        QStandardItemModel results(4, 5);
        for (int row = 0; row < 4; ++row) {
            for (int column = 0; column < 5; ++column)
                results.setData(results.index(row, column), row * 10 + column, Qt::DisplayRole);
        }
        LogRecorder log;
        m_controller->addToPlaylist(results, 1, 2);
        QCOMPARE(log.lines().first(), QStringLiteral("KelvoPlaylistController::addToPlaylist 1 2"));
        const auto *mine = qobject_cast<KelvoGeneralSourcePlaylist *>(m_controller->currentPlaylist());
        const auto *model = qobject_cast<QStandardItemModel *>(mine->underlyingModel());
        QCOMPARE(model->rowCount(), 2);
        QCOMPARE(model->columnCount(), 5);
        QCOMPARE(model->item(1, 4)->data(Qt::DisplayRole), QVariant(QStringLiteral("24")));
        QCOMPARE(mine->count(), 2);
        QCOMPARE(log.count("KelvoPlaylistController::showCurrentPlaylist"), 2); // once for each row
        const auto *view = m_console->find<QListView>("m_music_playlistView");
        QCOMPARE(view->model()->rowCount(), 2);
        QCOMPARE(view->modelColumn(), 1);
        m_console->window()->clearPlaylist();
        QVERIFY(!view->model());
    }

    void addOfManyRowsLeavesTheWindowAlive()
    {
        m_controller->createPlaylist("mine", "my list", nullptr);
        m_console->find<QComboBox>("m_music_playlistCombo")->setCurrentIndex(1);
        const QStandardItemModel results(10'000, 5);
        LogRecorder log;
        m_controller->addToPlaylist(results, 0, 9'999);
        QVERIFY(m_controller->currentPlaylist()->count() < 10'000);
        QTRY_COMPARE(m_controller->currentPlaylist()->count(), 10'000);
        QCOMPARE(log.count("KelvoPlaylistController::showCurrentPlaylist"), 10'000);
        QCOMPARE(m_console->find<QListView>("m_music_playlistView")->model()->rowCount(), 10'000);
    }

    void commandsWaitForAllRows_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<int>("left");
        QTest::newRow("clear") << QByteArray("clearPlaylist") << 0;
        QTest::newRow("remove current") << QByteArray("removeCurrentItem") << 9'999;
        QTest::newRow("remove several") << QByteArray("removeSeveralItems") << 9'990;
        QTest::newRow("shuffle") << QByteArray("shufflePlaylist") << 10'000;
        QTest::newRow("sort") << QByteArray("sortPlaylistAtoZ") << 10'000;
    }

    void commandsWaitForAllRows()
    {
        QFETCH(QByteArray, command);
        QFETCH(int, left);
        m_controller->createPlaylist("mine", "my list", nullptr);
        m_console->find<QComboBox>("m_music_playlistCombo")->setCurrentIndex(1);
        const QStandardItemModel results(10'000, 2);
        m_controller->addToPlaylist(results, 0, 9'999);
        auto *view = m_console->find<QListView>("m_music_playlistView");
        view->setCurrentIndex(view->model()->index(0, 1));
        view->selectionModel()->select(
            {view->model()->index(0, 1), view->model()->index(9, 1)}, QItemSelectionModel::ClearAndSelect);
        QVERIFY(QMetaObject::invokeMethod(m_controller, command));
        QCOMPARE(m_controller->currentPlaylist()->count(), left);
        QCoreApplication::processEvents();
        QCOMPARE(m_controller->currentPlaylist()->count(), left);
    }

    void addOfAnEmptyRangeAddsNothing()
    {
        m_controller->createPlaylist("mine", "my list", nullptr);
        m_console->find<QComboBox>("m_music_playlistCombo")->setCurrentIndex(1);
        m_controller->addToPlaylist(QStandardItemModel(0, 4), 0, -1);
        QCOMPARE(m_controller->currentPlaylist()->count(), 0);
    }

    void addToOtherKindsIsRefused_data()
    {
        QTest::addColumn<QString>("uuid");
        QTest::newRow("not model-backed") << "p1";
        QTest::newRow("over a query result") << "query";
        QTest::newRow("none current") << "unknown";
    }

    void addToOtherKindsIsRefused()
    {
        QFETCH(QString, uuid);
        QStringListModel query({"a"});
        m_controller->createPlaylist("query", "results", &query);
        m_controller->playlistChanged(uuid);
        LogRecorder log;
        m_controller->addToPlaylist(QStandardItemModel(2, 4), 0, 1);
        QVERIFY(log.warnings().contains(QLatin1String(wrongType)));
        QVERIFY(m_console->find<QDialog>("RendererErrorLogDialog")->isVisible());
        QCOMPARE(m_console->find<QTextEdit>("m_errorLogField")->toPlainText(),
            QStringLiteral("Code 0, Playlist or its model has wrong type."));
        QCOMPARE(query.rowCount(), 1);
        QCOMPARE(m_playlist->takeCalls(), QStringList());
    }

    void uriAnswersFillTheDialog()
    {
        QVERIFY(QMetaObject::invokeMethod(m_controller, "getUriCallback", Q_ARG(uint, 1),
            Q_ARG(QStringList, QStringList("key")),
            Q_ARG(QStringList, QStringList({"file:///a", "file:///b"}))));
        const auto *list
            = m_console->find<QDialog>("PlayUriDialog")->findChild<QListWidget *>("m_playlistView");
        QCOMPARE(list->count(), 1);
        QCOMPARE(list->item(0)->text(), QStringLiteral("file:///a"));
    }

    void uriAnswersWithoutAValueAreFatal()
    {
        const QString message = fatalMessage([this] {
            QMetaObject::invokeMethod(m_controller, "getUriCallback", Q_ARG(uint, 1),
                Q_ARG(QStringList, QStringList("key")), Q_ARG(QStringList, QStringList()));
        });
        QVERIFY2(isAssertion(message, "!metaValues.isEmpty()", "src/KelvoPlaylistController"),
            qPrintable(message));
    }

    void uriErrorsAreWarned()
    {
        LogRecorder log;
        QVERIFY(QMetaObject::invokeMethod(
            m_controller, "getUriErrorCallback", Q_ARG(uint, 1), Q_ARG(QString, QStringLiteral("broken"))));
        QCOMPARE(
            log.warnings(), QStringList("KelvoPlaylistController::getUriErrorCallback error \"broken\""));
    }

private:
    QListView *view() const { return m_console->find<QListView>("m_music_playlistView"); }

    std::unique_ptr<FakePlaylist> m_playlist;
    std::unique_ptr<ConsoleFixture> m_console;
    KelvoPlaylistController *m_controller = nullptr;
};

KELVO_WIDGET_TEST(PlaylistEditingTest)
#include "PlaylistEditingTest.moc"
