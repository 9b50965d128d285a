// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "FakePlaylist.h"
#include "FatalCall.h"
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoPlaylistController.h"
#include "KelvoShared.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "RecordingRenderer.h"
#include "TestGroup.h"
#include "TestRegistry.h"

#include <QComboBox>
#include <QListView>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

// The linker gives the program this list of the registry in place of its own, which never holds a null.
QList<KelvoPlaylist *> registeredPlaylists(const KelvoRegistry *) asm(
    "__real__ZNK13KelvoRegistry12allPlaylistsEv");
QList<KelvoPlaylist *> listedPlaylists(const KelvoRegistry *) asm(
    "__wrap__ZNK13KelvoRegistry12allPlaylistsEv");

namespace {
bool isNullListed = false;

const char *const playlistBoxes[]
    = {"m_music_playlistCombo", "m_browse_playlistCombo", "m_query_playlistCombo"};

/// The three boxes list these, show the same one, and that one is current.
void compareBoxes(const ConsoleFixture &console, const QStringList &uuids, bool eachEntry)
{
    const int current = console.find<QComboBox>(playlistBoxes[0])->currentIndex();
    for (const char *name : playlistBoxes) {
        const auto *box = console.find<QComboBox>(name);
        QCOMPARE(box->count(), uuids.size());
        QCOMPARE(box->currentIndex(), current);
        for (int index = eachEntry ? 0 : std::max(0, box->count() - 1); index < box->count(); ++index)
            QCOMPARE(box->itemData(index, Qt::UserRole).toString(), uuids.at(index));
    }
    const KelvoPlaylist *playlist = console.application()->playlists()->currentPlaylist();
    QCOMPARE(playlist ? playlist->uuid() : QString(), uuids.value(current));
}
} // namespace

QList<KelvoPlaylist *> listedPlaylists(const KelvoRegistry *registry)
{
    QList<KelvoPlaylist *> list = registeredPlaylists(registry);
    if (isNullListed)
        list.append(nullptr);
    return list;
}

/// How playlists come, go and become current, and how new ones are published.
class PlaylistControllerTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup()
    {
        const QList<KelvoPlaylist *> playlists = registry()->allPlaylists();
        for (const KelvoPlaylist *playlist : playlists)
            KelvoShared::instance()->unPublishPlaylist(playlist->uuid());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void startWithoutPlaylists()
    {
        RecordingRenderer renderer("r1", "one");
        registry()->addRenderer(&renderer);
        LogRecorder log;
        const ConsoleFixture console;
        QVERIFY(log.containsInOrder({"KelvoPlaylistController::KelvoPlaylistController",
            "KelvoPlaylistController::initPlaylists", "No current playlist set",
            "KelvoPlaylistController::showCurrentPlaylist", "KelvoMainWindow::connectPlaylistSignals"}));
        QCOMPARE(console.application()->playlists()->currentPlaylist(), nullptr);
        QCOMPARE(console.find<QListView>("m_music_playlistView")->model(), nullptr);
        QCOMPARE(renderer.calls().filter("assignPlaylist").size(), 0);
    }

    void firstPlaylistAtStartIsCurrent()
    {
        RecordingRenderer renderer("r1", "one");
        FakePlaylist first("p1", "list one", {"a"});
        FakePlaylist second("p2", "list two");
        registry()->addRenderer(&renderer);
        registry()->addPlaylist(&first);
        registry()->addPlaylist(&second);
        LogRecorder log;
        const ConsoleFixture console;
        QVERIFY(log.containsInOrder({"KelvoPlaylistController::playlistAdded \"p1\" \"list one\"",
            "KelvoPlaylistController::playlistAdded \"p2\" \"list two\"",
            "Playlist (id= \"p1\" ) set as current", "KelvoPlaylistController::showCurrentPlaylist"}));
        QCOMPARE(console.application()->playlists()->currentPlaylist(), &first);
        QCOMPARE(console.find<QListView>("m_music_playlistView")->model(), first.itemModel());
        QCOMPARE(renderer.assigned(), &first);
        for (const char *name :
            {"m_music_playlistCombo", "m_browse_playlistCombo", "m_query_playlistCombo"}) {
            QCOMPARE(console.find<QComboBox>(name)->count(), 2);
            QCOMPARE(
                console.find<QComboBox>(name)->itemData(1, Qt::UserRole).toString(), QStringLiteral("p2"));
        }
    }

    void nullInTheListAtStartIsFatal()
    {
        FakePlaylist first("p1", "list one", {"a"});
        registry()->addPlaylist(&first);
        const ConsoleFixture console;
        const auto start = [&console] {
            KelvoPlaylistController(console.application(), console.window(), KelvoShared::instance());
        };
        QCOMPARE(fatalMessage(start), QString());
        const QString message = fatalMessage([&start] {
            isNullListed = true;
            start();
        });
        QVERIFY2(isAssertion(message, "playlists.at(i)", "src/KelvoPlaylistController"), qPrintable(message));
    }

    void startWithAPlaylistAndNoRenderer()
    {
        FakePlaylist first("p1", "list one", {"a"});
        registry()->addPlaylist(&first);
        const ConsoleFixture console;
        QCOMPARE(console.application()->playlists()->currentPlaylist(), &first);
    }

    void modesAreShown()
    {
        FakePlaylist first("p1", "list one");
        first.shuffle();
        first.setRepeatMode(KelvoPlaylist::RepeatOne);
        registry()->addPlaylist(&first);
        const ConsoleFixture console;
        QVERIFY(console.find<QAction>("m_actionShuffle")->isChecked());
        QCOMPARE(console.find<QAction>("m_actionRepeat")->text(), QStringLiteral("Repeat one"));
    }

    void unknownPlaylistIsNotListed()
    {
        const ConsoleFixture console;
        LogRecorder log;
        console.application()->playlists()->playlistAdded("unknown", "name");
        QVERIFY(log.contains(
            "Not able to connect to playlist  \"unknown\" ,  \"name\"  contentsChanged signal."));
        QCOMPARE(console.find<QComboBox>("m_music_playlistCombo")->count(), 0);
    }

    void choosingAnotherPlaylist()
    {
        RecordingRenderer renderer("r1", "one");
        FakePlaylist first("p1", "list one");
        FakePlaylist second("p2", "list two", {"a", "b"});
        registry()->addRenderer(&renderer);
        registry()->addPlaylist(&first);
        registry()->addPlaylist(&second);
        const ConsoleFixture console;
        LogRecorder log;
        console.find<QComboBox>("m_browse_playlistCombo")->setCurrentIndex(1);
        QVERIFY(log.containsInOrder({"KelvoPlaylistController::playlistChanged \"p2\"",
            "Playlist (id= \"p2\" ) set as current", "KelvoPlaylistController::showCurrentPlaylist"}));
        QCOMPARE(console.application()->playlists()->currentPlaylist(), &second);
        QCOMPARE(console.find<QListView>("m_music_playlistView")->model(), second.itemModel());
        QCOMPARE(renderer.assigned(), &second);
    }

    void unknownUuidLeavesNoPlaylistButTheDisplay()
    {
        FakePlaylist first("p1", "list one", {"a"});
        registry()->addPlaylist(&first);
        const ConsoleFixture console;
        KelvoPlaylistController *controller = console.application()->playlists();
        LogRecorder log;
        controller->playlistChanged("unknown");
        QCOMPARE(log.lines(),
            QStringList({"KelvoPlaylistController::playlistChanged \"unknown\"", "No current playlist set"}));
        QCOMPARE(console.application()->playlists()->currentPlaylist(), nullptr);
        QCOMPARE(console.find<QListView>("m_music_playlistView")->model(), first.itemModel());
    }

    void removalItselfLeavesTheCurrentPlaylist()
    {
        FakePlaylist first("p1", "list one");
        FakePlaylist second("p2", "list two");
        registry()->addPlaylist(&first);
        registry()->addPlaylist(&second);
        const ConsoleFixture console;
        LogRecorder log;
        {
            // Only the boxes tell that another playlist is current.
            const QSignalBlocker blocker(console.window());
            console.application()->playlists()->playlistRemoved("p1", "list one");
        }
        QCOMPARE(console.application()->playlists()->currentPlaylist(), &first);
        QVERIFY(log.contains("KelvoPlaylistController::playlistRemoved \"p1\""));
        QCOMPARE(console.find<QComboBox>("m_query_playlistCombo")->count(), 1);
    }

    void removingAnotherPlaylistKeepsTheChoice_data()
    {
        QTest::addColumn<int>("current");
        QTest::addColumn<QString>("removed");
        QTest::addColumn<QString>("stays");
        QTest::newRow("an earlier one") << 2 << "p1"
                                        << "p3";
        QTest::newRow("a later one") << 0 << "p3"
                                     << "p1";
        QTest::newRow("the last while current") << 2 << "p3"
                                                << "p2";
        QTest::newRow("the first while current") << 0 << "p1"
                                                 << "p2";
    }

    void removingAnotherPlaylistKeepsTheChoice()
    {
        QFETCH(int, current);
        QFETCH(QString, removed);
        QFETCH(QString, stays);
        FakePlaylist first("p1", "list one");
        FakePlaylist second("p2", "list two");
        FakePlaylist third("p3", "list three");
        for (FakePlaylist *playlist : {&first, &second, &third})
            registry()->addPlaylist(playlist);
        const ConsoleFixture console;
        console.find<QComboBox>("m_music_playlistCombo")->setCurrentIndex(current);
        registry()->removePlaylist(registry()->findPlaylistByUuid(removed));
        QCOMPARE(console.application()->playlists()->currentPlaylist()->uuid(), stays);
        for (const char *name : {"m_music_playlistCombo", "m_browse_playlistCombo", "m_query_playlistCombo"})
            QCOMPARE(console.find<QComboBox>(name)->currentData().toString(), stays);
    }

    void theFirstPlaylistAfterAllHaveGoneIsCurrent()
    {
        const ConsoleFixture console;
        for (int round = 0; round < 3; ++round) {
            FakePlaylist only("p1", "list one", {"a"});
            QSignalSpy chosen(console.window(), SIGNAL(currentPlaylistChanged(QString)));
            registry()->addPlaylist(&only);
            QCOMPARE(chosen, QList<QVariantList>(3, {"p1"})); // by each of the boxes
            compareBoxes(console, {"p1"}, true);
            QCOMPARE(console.find<QComboBox>(playlistBoxes[0])->currentIndex(), 0);
            registry()->removePlaylist(&only);
            compareBoxes(console, {}, true);
        }
    }

    void aThousandPlaylistsComeAndGo()
    {
        const ConsoleFixture console;
        std::vector<std::unique_ptr<FakePlaylist>> present;
        QStringList uuids; // as they came
        QRandomGenerator random(20);
        for (int event = 0, made = 0; made < 1000 || !present.empty(); ++event) {
            // Every hundred events they all go.
            const bool comes
                = made < 1000 && (present.empty() || (random.bounded(3) > 0 && event % 200 < 100));
            if (comes) {
                const QString number = QString::number(made++);
                present.push_back(std::make_unique<FakePlaylist>("uuid-" + number, "name " + number));
                uuids.append(present.back()->uuid());
                registry()->addPlaylist(present.back().get());
            } else {
                const auto place = std::ptrdiff_t(random.bounded(quint32(present.size())));
                uuids.removeAt(place);
                registry()->removePlaylist(present[size_t(place)].get());
                present.erase(present.begin() + place);
            }
            // Now and then the user picks one, in any of the boxes.
            if (event % 7 == 0 && !present.empty()) {
                auto *box = console.find<QComboBox>(playlistBoxes[event % 3]);
                box->setCurrentIndex(int(random.bounded(quint32(present.size()))));
            }
            compareBoxes(console, uuids, event % 10 == 0);
            if (QTest::currentTestFailed())
                return;
        }
    }

    void removingAllPlaylists()
    {
        const ConsoleFixture console;
        {
            FakePlaylist first("p1", "list one", {"a"});
            FakePlaylist second("p2", "list two");
            registry()->addPlaylist(&first);
            registry()->addPlaylist(&second);
            QCOMPARE(console.application()->playlists()->currentPlaylist(), &first);
            registry()->removePlaylist(&first);
            registry()->removePlaylist(&second);
        }
        QCOMPARE(console.application()->playlists()->currentPlaylist(), nullptr);
        QCOMPARE(console.find<QComboBox>("m_music_playlistCombo")->count(), 0);
    }

    void destroyedPlaylistIsNotCurrentAnyMore()
    {
        auto first = std::make_unique<FakePlaylist>("p1", "list one", QStringList{"a"});
        registry()->addPlaylist(first.get());
        const ConsoleFixture console;
        first.reset();
        QCOMPARE(console.application()->playlists()->currentPlaylist(), nullptr);
        console.application()->playlists()->clearPlaylist();
        console.application()->playlists()->showCurrentPlaylist();
    }

    void contentsOfTheCurrentPlaylistAreShownAgain()
    {
        FakePlaylist first("p1", "list one", {"a", "b", "c"});
        registry()->addPlaylist(&first);
        const ConsoleFixture console;
        auto *view = console.find<QListView>("m_music_playlistView");
        view->setCurrentIndex(first.itemModel()->index(1, 1));
        LogRecorder log;
        Q_EMIT first.contentsChanged(0, 0, 1);
        QVERIFY(log.containsInOrder({"KelvoPlaylistController::playlistContentsChanged",
            "KelvoPlaylistController::showCurrentPlaylist", "KelvoMainWindow::int getCurrentPlaylistIndex",
            "KelvoMainWindow::clearPlaylist", "KelvoMainWindow::showPlaylist",
            "KelvoMainWindow::updateCurrentPlaylistIndex (index= 1 )"}));
        QCOMPARE(view->currentIndex().row(), 1); // the selected row survives
    }

    void contentsOfOtherPlaylistsAreNotShown()
    {
        FakePlaylist first("p1", "list one");
        FakePlaylist second("p2", "list two");
        registry()->addPlaylist(&first);
        registry()->addPlaylist(&second);
        const ConsoleFixture console;
        LogRecorder log;
        Q_EMIT second.contentsChanged(0, 0, 1);
        QCOMPARE(log.lines(), QStringList("KelvoPlaylistController::playlistContentsChanged"));
    }

    void refreshWithoutASelectedRow()
    {
        FakePlaylist first("p1", "list one", {"a"});
        registry()->addPlaylist(&first);
        const ConsoleFixture console;
        LogRecorder log;
        console.application()->playlists()->showCurrentPlaylist();
        QCOMPARE(log.lines().filter("updateCurrentPlaylistIndex").size(), 0);
    }

    void emptyNameCreatesNothing()
    {
        const ConsoleFixture console;
        KelvoPlaylistController *controller = console.application()->playlists();
        LogRecorder log;
        controller->createPlaylist("id", QString(), nullptr);
        QCOMPARE(
            log.lines(), QStringList("KelvoPlaylistController::createPlaylist (id= \"id\"  name= \"\" )"));
        QCOMPARE(registry()->allPlaylists().size(), 0);
    }

    void createdPlaylistHasAModelOfItsOwn()
    {
        const ConsoleFixture console;
        FakePlaylist first("p1", "list one");
        registry()->addPlaylist(&first);
        console.application()->playlists()->createPlaylist("new", "mine", nullptr);
        auto *created = qobject_cast<KelvoGeneralSourcePlaylist *>(registry()->findPlaylistByUuid("new"));
        QVERIFY(created);
        QCOMPARE(created->name(), QStringLiteral("mine"));
        QCOMPARE(created->sourceUuid(), QStringLiteral("KelvoTrackerSource"));
        QVERIFY(qobject_cast<QStandardItemModel *>(created->underlyingModel()));
        QCOMPARE(created->underlyingModel()->parent(), created);
        QCOMPARE(console.find<QComboBox>("m_music_playlistCombo")->itemText(1), QStringLiteral("mine"));
        QCOMPARE(console.application()->playlists()->currentPlaylist(), &first); // not the new one
    }

    void createdPlaylistOverAGivenModel()
    {
        const ConsoleFixture console;
        QStandardItemModel model(2, 4);
        console.application()->playlists()->createPlaylist("new", "mine", &model);
        const auto *created
            = qobject_cast<KelvoGeneralSourcePlaylist *>(registry()->findPlaylistByUuid("new"));
        QCOMPARE(created->underlyingModel(), &model);
        QCOMPARE(created->count(), 2);
    }

    void refusedPlaylistIsDeleted()
    {
        const ConsoleFixture console;
        auto *model = new QStandardItemModel(1, 4);
        console.application()->playlists()->createPlaylist("same", "first", nullptr);
        console.application()->playlists()->createPlaylist("same", "second", model);
        QCOMPARE(registry()->allPlaylists().size(), 1);
        QCOMPARE(console.find<QComboBox>("m_music_playlistCombo")->count(), 1);
        delete model; // a leak of the refused playlist would be reported at exit
    }

    void destructorOnlyLogs()
    {
        auto console = std::make_unique<ConsoleFixture>();
        LogRecorder log;
        console.reset();
        QCOMPARE(log.count("KelvoPlaylistController::~KelvoPlaylistController"), 1);
    }
};

KELVO_WIDGET_TEST(PlaylistControllerTest)
#include "PlaylistControllerTest.moc"
