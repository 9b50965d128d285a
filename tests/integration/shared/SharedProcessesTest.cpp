// SPDX-License-Identifier: MIT
#include "KelvoPlayQueue.h"
#include "KelvoShared.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "PeerProcess.h"
#include "SharedLists.h"
#include "TestGroup.h"
#include "TestRegistry.h"

#include <QAbstractItemModelTester>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

namespace {
QStringList titles(KelvoPlaylist *playlist)
{
    QStringList list;
    for (int index = 0; index < playlist->count(); ++index)
        list.append(playlist->mediaInfoAt(uint(index)).title());
    return list;
}

/// What a listener to contentsChanged() believes the number of items to be.
int countBySignals(const QSignalSpy &changes)
{
    int count = 0;
    for (const auto &change : changes)
        count += int(change.at(2).toUInt()) - int(change.at(1).toUInt());
    return count;
}
} // namespace

// This process and another one share their playlists; the service is started once for all functions.
class SharedProcessesTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        qputenv("KELVO_PLUGINS", "");
        QVERIFY(KelvoShared::instance()->initTracking(registry()));
    }

    void cleanup() { QTRY_VERIFY(registry()->allPlaylists().isEmpty()); }

    void showsThePlaylistOfAnotherProcess()
    {
        QSignalSpy added(registry(), &KelvoRegistry::playlistAdded);
        PeerProcess peer;
        QCOMPARE(peer.tell("publish first 3 Evening"), "published");
        QTRY_COMPARE(added.size(), 1);
        QCOMPARE(added.at(0).at(0).toString(), "first");
        QCOMPARE(added.at(0).at(1).toString(), "Evening" + peer.suffix());
        KelvoPlaylist *playlist = find("first");
        QVERIFY(playlist);
        QCOMPARE(playlist->name(), "Evening" + peer.suffix());
        QVERIFY(!playlist->isWritable());
        QCOMPARE(playlist->repeatMode(), int(KelvoPlaylist::RepeatOff));
        QVERIFY(!playlist->isShuffled());
    }

    void findsWhatWasSharedBefore()
    {
        // The peer meets the playlists of this process, which were there first, and both meet each other's later ones.
        QVERIFY(KelvoShared::instance()->publishPlaylist(SharedLists::make("early", "Early", 1)));
        PeerProcess peer;
        const QString suffix = QStringLiteral(" [pid %1]").arg(QCoreApplication::applicationPid());
        QTRY_COMPARE(peer.tell("names"), "Early" + suffix);
        peer.tell("publish theirs 1 Theirs");
        QTRY_VERIFY(find("theirs"));
        QVERIFY(KelvoShared::instance()->publishPlaylist(SharedLists::make("late", "Late", 1)));
        QTRY_COMPARE(peer.tell("names"), "Early" + suffix + "|Theirs|Late" + suffix);

        PeerProcess third;
        QTRY_COMPARE(third.tell("names").split(u'|').size(), 3);
        KelvoShared::instance()->unPublishPlaylist("early");
        KelvoShared::instance()->unPublishPlaylist("late");
        QTRY_COMPARE(third.tell("names"), "Theirs" + peer.suffix());
    }

    void givesTheItemsByTheColumnRule()
    {
        PeerProcess peer;
        peer.tell("publish columns 3 Columns");
        QTRY_VERIFY(find("columns"));
        QAbstractItemModel *model = find("columns")->itemModel();
        QAbstractItemModelTester tester(model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QTRY_COMPARE(model->rowCount(), 3);
        QCOMPARE(model->columnCount(), 4);
        const auto text = [model](int row, KelvoPlaylist::Column column) {
            return model->index(row, column).data();
        };
        QCOMPARE(text(2, KelvoPlaylist::TitleColumn), "Song 2");
        QCOMPARE(text(2, KelvoPlaylist::UriColumn), "file:///music/song%202.mp3");
        QCOMPARE(text(2, KelvoPlaylist::DurationColumn), 102);
        QCOMPARE(text(2, KelvoPlaylist::IdColumn), find("columns")->mediaInfoAt(2).uuid());
        const QStringList headers{"id", "title", "url", "duration"};
        for (int column = 0; column < 4; ++column)
            QCOMPARE(model->headerData(column, Qt::Horizontal).toString(), headers.at(column));
        QVERIFY(!model->index(2, 1).data(Qt::DecorationRole).isValid());
    }

    void readsNothingBeforeSomebodyAsks()
    {
        PeerProcess peer;
        peer.tell("publish lazy 2000 Lazy");
        QTRY_VERIFY(find("lazy"));
        QSignalSpy changes(find("lazy"), &KelvoPlaylist::contentsChanged);
        peer.tell("append lazy 1"); // several round trips, in which items would have come
        peer.tell("names");
        QVERIFY(changes.isEmpty());
        QCOMPARE(find("lazy")->count(), 0);
        QTRY_COMPARE(find("lazy")->count(), 2001);
        QVERIFY(changes.size() > 1); // page by page
        QCOMPARE(changes.first(), QVariantList({0U, 0U, 100U}));
        QCOMPARE(countBySignals(changes), 2001);
    }

    void streamsALongList()
    {
        PeerProcess peer;
        peer.tell("publish long 10000 Long");
        QTRY_VERIFY(find("long"));
        QAbstractItemModel *model = find("long")->itemModel();
        QAbstractItemModelTester tester(model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy changes(find("long"), &KelvoPlaylist::contentsChanged);
        QTRY_COMPARE_WITH_TIMEOUT(model->rowCount(), 10'000, 30'000);
        QCOMPARE(countBySignals(changes), 10'000);
        QCOMPARE(find("long")->mediaInfoAt(9'999).title(), "Song 9999");
        QVERIFY(find("long")->mediaInfoAt(10'000).isNull());
    }

    void sharesAnEmptyList()
    {
        PeerProcess peer;
        peer.tell("publish empty 0 Empty");
        QTRY_VERIFY(find("empty"));
        QCOMPARE(find("empty")->count(), 0);
        QCOMPARE(find("empty")->itemModel()->rowCount(), 0);
        peer.tell("append empty 2");
        QTRY_COMPARE(titles(find("empty")), QStringList({"Song 0", "Song 1"}));
    }

    void followsTheOriginal()
    {
        PeerProcess peer;
        peer.tell("publish edited 300 Edited");
        QTRY_VERIFY(find("edited"));
        KelvoPlaylist *playlist = find("edited");
        QAbstractItemModelTester tester(
            playlist->itemModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        QTRY_COMPARE(playlist->count(), 300);
        QSignalSpy changes(playlist, &KelvoPlaylist::contentsChanged);

        peer.tell("append edited 2");
        QTRY_COMPARE(changes.size(), 1);
        QCOMPARE(changes.takeFirst(), QVariantList({300U, 0U, 2U}));

        peer.tell("remove edited 10 19");
        QTRY_COMPARE(changes.size(), 1);
        QCOMPARE(changes.takeFirst(), QVariantList({10U, 10U, 0U}));
        QCOMPARE(playlist->mediaInfoAt(10).title(), "Song 20");

        peer.tell("reverse edited");
        QTRY_COMPARE(changes.size(), 1);
        QCOMPARE(changes.takeFirst(), QVariantList({0U, 292U, 292U}));
        QCOMPARE(playlist->mediaInfoAt(0).title(), "Song 301");

        peer.tell("rework edited 50 60 5");
        QTRY_COMPARE(changes.size(), 1);
        QCOMPARE(playlist->count(), 286);
        QCOMPARE(titles(playlist).mid(0, 3), QStringList({"Song 0", "Song 1", "Song 2"}));

        peer.tell("remove edited 0 285");
        QTRY_COMPARE(playlist->count(), 0);
    }

    void keepsTheRowsInViewWhileItReadsAgain()
    {
        PeerProcess peer;
        peer.tell("publish steady 3000 Steady");
        QTRY_VERIFY(find("steady"));
        KelvoPlaylist *playlist = find("steady");
        QTRY_COMPARE_WITH_TIMEOUT(playlist->count(), 3000, 30'000);
        const QPersistentModelIndex last = playlist->itemModel()->index(2999, 1);
        int fewest = playlist->count();
        QObject context;
        connect(playlist, &KelvoPlaylist::contentsChanged, &context,
            [&fewest, playlist] { fewest = std::min(fewest, playlist->count()); });
        peer.tell("remove steady 0 0");
        QTRY_COMPARE(playlist->count(), 2999);
        QCOMPARE(fewest, 2999);
        QCOMPARE(last.row(), 2998);
        QCOMPARE(last.data().toString(), "Song 2999");
    }

    void keepsItsRowsWhenTheirOrderChanges_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("row"); // of what was in row 30 of 100
        QTest::addColumn<int>("count");
        QTest::newRow("reordered") << "reverse moved" << 69 << 100;
        QTest::newRow("reordered, cut and longer") << "rework moved 0 9 5" << 74 << 95;
        QTest::newRow("only cut") << "remove moved 5 9" << 25 << 95;
        QTest::newRow("only longer") << "append moved 7" << 30 << 107;
    }

    /// A view that shows the list keeps its selected rows.
    void keepsItsRowsWhenTheirOrderChanges()
    {
        QFETCH(QString, command);
        QFETCH(int, row);
        QFETCH(int, count);
        PeerProcess peer;
        peer.tell("publish moved 100 Moved");
        QTRY_VERIFY(find("moved"));
        KelvoPlaylist *playlist = find("moved");
        const QAbstractItemModelTester tester(
            playlist->itemModel(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        QTRY_COMPARE(playlist->count(), 100);
        const QPersistentModelIndex selected = playlist->itemModel()->index(30, 1);
        const QSignalSpy changes(playlist, &KelvoPlaylist::contentsChanged);
        peer.tell(command);
        QTRY_COMPARE(changes.size(), 1);
        QCOMPARE(playlist->count(), count);
        QVERIFY(selected.isValid());
        QCOMPARE(selected.row(), row);
        QCOMPARE(selected.data().toString(), "Song 30");
        QCOMPARE(playlist->mediaInfoAt(uint(row)).title(), "Song 30");
    }

    void refusesToEdit_data()
    {
        using Edit = std::function<void(KelvoPlaylist *)>;
        QTest::addColumn<Edit>("edit");
        QTest::newRow("shuffle") << Edit([](KelvoPlaylist *list) { list->shuffle(); });
        QTest::newRow("unshuffle") << Edit([](KelvoPlaylist *list) { list->unshuffle(); });
        QTest::newRow("setRepeatMode")
            << Edit([](KelvoPlaylist *list) { list->setRepeatMode(KelvoPlaylist::RepeatAll); });
        QTest::newRow("sort") << Edit([](KelvoPlaylist *list) {
            list->sort(KelvoPlaylist::SortKeyTitle, KelvoPlaylist::TitleDescending);
        });
        QTest::newRow("removeItem") << Edit([](KelvoPlaylist *list) { list->removeItem(0); });
        QTest::newRow("removeItems") << Edit([](KelvoPlaylist *list) { list->removeItems(0, 1); });
        QTest::newRow("clear") << Edit([](KelvoPlaylist *list) { list->clear(); });
    }

    void refusesToEdit()
    {
        PeerProcess peer;
        peer.tell("publish fixed 3 Fixed");
        QTRY_VERIFY(find("fixed"));
        KelvoPlaylist *playlist = find("fixed");
        QTRY_COMPARE(playlist->count(), 3);
        QSignalSpy changes(playlist, &KelvoPlaylist::contentsChanged);
        QSignalSpy modes(playlist, &KelvoPlaylist::repeatModeChanged);
        QFETCH(std::function<void(KelvoPlaylist *)>, edit);
        LogRecorder log;
        edit(playlist);
        QCOMPARE(log.warnings().size(), 1);
        QVERIFY(log.warnings().first().startsWith(QTest::currentDataTag()));
        QVERIFY(log.warnings().first().contains("owned by another process"));
        QVERIFY(log.warnings().first().contains(playlist->name()));
        QVERIFY(changes.isEmpty());
        QVERIFY(modes.isEmpty());
        QCOMPARE(titles(playlist), QStringList({"Song 0", "Song 1", "Song 2"}));
        QVERIFY(!playlist->isShuffled());
        QCOMPARE(playlist->repeatMode(), int(KelvoPlaylist::RepeatOff));
    }

    void playsLikeALocalOne()
    {
        PeerProcess peer;
        peer.tell("publish played 250 Played");
        QTRY_VERIFY(find("played"));
        KelvoPlaylist *playlist = find("played");
        KelvoPlayQueue queue;
        queue.setPlaylist(playlist); // while nothing has arrived yet
        QTRY_COMPARE(queue.count(), 250);
        QCOMPARE(queue.index(), 0);
        const KelvoMediaInfo info = queue.current();
        QVERIFY(!info.isNull());
        QCOMPARE(info.url(), QUrl("file:///music/song%200.mp3"));
        QCOMPARE(info.title(), "Song 0");
        QCOMPARE(info.duration(), 100);
        QCOMPARE(info.mimeType(), "audio/mpeg");
        QVERIFY(queue.setIndex(200));
        QCOMPARE(queue.followingIndex(), 201);
        QCOMPARE(playlist->indexOf(queue.current().uuid()), 200);

        // The current item stays current when the owner edits its list.
        QSignalSpy moved(&queue, &KelvoPlayQueue::indexMoved);
        peer.tell("remove played 0 9");
        QTRY_COMPARE(moved.size(), 1);
        QCOMPARE(queue.index(), 190);
        QCOMPARE(queue.current().title(), "Song 200");
    }

    void losesTheCurrentItemWithItsProcess()
    {
        PeerProcess peer;
        peer.tell("publish gone 5 Gone");
        QTRY_VERIFY(find("gone"));
        KelvoPlayQueue queue;
        queue.setPlaylist(find("gone"));
        QTRY_COMPARE(queue.count(), 5);
        QSignalSpy removed(&queue, &KelvoPlayQueue::currentRemoved);
        peer.crash();
        QTRY_COMPARE(removed.size(), 1);
        QVERIFY(!queue.playlist());
    }

    void vanishesWithItsProcess_data()
    {
        QTest::addColumn<bool>("crash");
        QTest::newRow("orderly") << false;
        QTest::newRow("SIGKILL") << true;
    }

    void vanishesWithItsProcess()
    {
        QFETCH(bool, crash);
        PeerProcess peer;
        peer.tell("publish one 10 One");
        peer.tell("publish two 10 Two");
        const QString suffix = peer.suffix();
        QTRY_VERIFY(find("one") && find("two"));
        const QPointer<KelvoPlaylist> playlist = find("one");
        playlist->itemModel();
        QSignalSpy removed(registry(), &KelvoRegistry::playlistRemoved);
        bool stillValid = false;
        QObject context;
        connect(
            registry(), &KelvoRegistry::playlistRemoved, &context, [&] { stillValid = !playlist.isNull(); });
        LogRecorder log;
        if (crash)
            peer.crash();
        else
            peer.quit();
        QTRY_COMPARE(removed.size(), 2);
        QVERIFY(stillValid); // whoever hears of it may still look at it
        QTRY_VERIFY(!playlist);
        QCOMPARE(log.warnings(), QStringList());
    }

    void vanishesWhenItIsWithdrawn()
    {
        PeerProcess peer;
        peer.tell("publish keep 1 Keep");
        peer.tell("publish drop 1 Drop");
        QTRY_VERIFY(find("keep") && find("drop"));
        QSignalSpy removed(registry(), &KelvoRegistry::playlistRemoved);
        peer.tell("withdraw drop");
        QTRY_COMPARE(removed.size(), 1);
        QCOMPARE(removed.first(), QVariantList({"drop", "Drop" + peer.suffix()}));
        QVERIFY(find("keep"));
    }

    void vanishesInTheMiddleOfAPage()
    {
        PeerProcess peer;
        peer.tell("publish cut 20000 Cut");
        QTRY_VERIFY(find("cut"));
        LogRecorder log;
        QSignalSpy changes(find("cut"), &KelvoPlaylist::contentsChanged);
        find("cut")->itemModel();
        QTRY_VERIFY(!changes.isEmpty());
        peer.crash(); // a request is always under way until the list's end
        QTRY_VERIFY(!find("cut"));
        QCOMPARE(log.warnings(), QStringList());
    }

    void keepsIdsUnique()
    {
        PeerProcess peer;
        peer.tell("publish same 2 Theirs");
        QTRY_VERIFY(find("same"));
        KelvoGeneralSourcePlaylist twin("same", "Mine", "KelvoTrackerSource");
        QVERIFY(!KelvoShared::instance()->publishPlaylist(&twin));
        QCOMPARE(find("same")->name(), "Theirs" + peer.suffix());
    }

    void waitsForABusyProcess()
    {
        PeerProcess peer;
        peer.tell("publish busy 500 Busy");
        QTRY_VERIFY(find("busy"));
        LogRecorder log;
        peer.send("sleep 2000");
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(find("busy")->count(), 0);
        QVERIFY(timer.elapsed() < 500); // asking does not wait
        QTRY_COMPARE_WITH_TIMEOUT(find("busy")->count(), 500, 30'000);
        QCOMPARE(log.warnings(), QStringList());
    }

    void standsAThousandPlaylistsComingAndGoing()
    {
        PeerProcess peer;
        for (int round = 0; round < 3; ++round) {
            QSignalSpy added(registry(), &KelvoRegistry::playlistAdded);
            QSignalSpy removed(registry(), &KelvoRegistry::playlistRemoved);
            QCOMPARE(peer.tell("publish-many m 1000"), "published");
            QTRY_COMPARE_WITH_TIMEOUT(added.size(), 1000, 30'000);
            QCOMPARE(peer.tell("withdraw-many m 1000"), "withdrawn");
            QTRY_COMPARE_WITH_TIMEOUT(removed.size(), 1000, 30'000);
            QVERIFY(registry()->allPlaylists().isEmpty());
        }
        peer.tell("publish-many m 1000");
        QTRY_COMPARE_WITH_TIMEOUT(registry()->allPlaylists().size(), 1000, 30'000);
        peer.crash();
        QTRY_VERIFY(registry()->allPlaylists().isEmpty());
    }

    void readsAThousandPlaylistsAtOnce()
    {
        PeerProcess peer;
        peer.tell("publish-many m 1000");
        QTRY_COMPARE_WITH_TIMEOUT(registry()->allPlaylists().size(), 1000, 30'000);
        LogRecorder log;
        const auto playlists = registry()->allPlaylists();
        for (KelvoPlaylist *each : playlists)
            each->itemModel();
        const auto complete = [&playlists] {
            return std::all_of(
                playlists.begin(), playlists.end(), [](KelvoPlaylist *each) { return each->count() == 1; });
        };
        QTRY_VERIFY_WITH_TIMEOUT(complete(), 60'000); // more than the owner answers at a time
        QCOMPARE(log.warnings(), QStringList());
    }

    void meetsAThousandPlaylistsAtOnce()
    {
        PeerProcess peer;
        peer.freeze();
        peer.send("publish-many m 1000"); // published when its connection comes
        peer.thaw();
        QTRY_COMPARE_WITH_TIMEOUT(registry()->allPlaylists().size(), 1000, 30'000);
    }
};

KELVO_TEST(SharedProcessesTest)
#include "SharedProcessesTest.moc"
