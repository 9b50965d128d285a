// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "PlaylistFixture.h"
#include "TestGroup.h"

#include <QLocale>
#include <QSignalSpy>
#include <QTest>

#include <limits>

namespace {
using Changes = QList<ContentsChange>;
constexpr uint minusOne = uint(-1);
} // namespace

/// Sorting, shuffling and removing.
class PlaylistEditingTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { QLocale::setDefault(QLocale::system()); }

    void startsEmptyAndNotShuffled()
    {
        PlaylistFixture list;
        QCOMPARE(list->uuid(), "playlist-id");
        QCOMPARE(list->name(), "pl1");
        QCOMPARE(list->sourceUuid(), "KelvoTrackerSource");
        QCOMPARE(list->count(), 0);
        QCOMPARE(list->repeatMode(), int(KelvoPlaylist::RepeatOff));
        QVERIFY(!list->isShuffled());
        QVERIFY(list->isWritable());
        QVERIFY(list->mediaInfoAt(0).isNull());
        QCOMPARE(list->itemModel()->rowCount(), 0);
    }

    void takesKnownRepeatModesOnly()
    {
        PlaylistFixture list;
        QSignalSpy changed(&*list, &KelvoPlaylist::repeatModeChanged);
        list->setRepeatMode(KelvoPlaylist::RepeatAll);
        list->setRepeatMode(KelvoPlaylist::RepeatAll);
        QCOMPARE(changed.count(), 1);
        LogRecorder log;
        list->setRepeatMode(3);
        list->setRepeatMode(-1);
        QCOMPARE(list->repeatMode(), int(KelvoPlaylist::RepeatAll));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(log.warnings(),
            QStringList(
                {"Playlist \"pl1\" knows no repeat mode 3", "Playlist \"pl1\" knows no repeat mode -1"}));
    }

    void sortsTitlesWithoutCaseAndByTheLocale()
    {
        QLocale::setDefault(QLocale("de_DE"));
        const auto model = songs({"zebra", "Banane", "äpfel", "apfel", "Apfelmus", "öl"});
        PlaylistFixture list(model.get());
        list->sort("title", 0);
        QCOMPARE(list.titles(), QStringList({"apfel", "äpfel", "Apfelmus", "Banane", "öl", "zebra"}));
        list->sort("title", 1);
        QCOMPARE(list.titles(), QStringList({"zebra", "öl", "Banane", "Apfelmus", "äpfel", "apfel"}));
        QLocale::setDefault(QLocale("sv_SE"));
        list->sort("title", 0);
        QCOMPARE(list.titles(), QStringList({"apfel", "Apfelmus", "Banane", "zebra", "äpfel", "öl"}));
        QCOMPARE(list.takeChanges(), Changes({{0, 6, 6}, {0, 6, 6}, {0, 6, 6}}));
    }

    void sortsTitlesWithoutCaseInTheCLocale()
    {
        QLocale::setDefault(QLocale::c());
        const auto model = songs({"Zulu", "alpha", "Émile", "Alpha", "foxtrot"});
        PlaylistFixture list(model.get());
        const QString firstAlpha = list->mediaInfoAt(1).uuid();
        list->sort("title", 0);
        QCOMPARE(list.titles(), QStringList({"alpha", "Alpha", "Émile", "foxtrot", "Zulu"}));
        QCOMPARE(list->mediaInfoAt(0).uuid(), firstAlpha);
    }

    void sortingIsStableInBothDirections()
    {
        const auto model = songs({"b:7", "a:7", "c:3", "B:7", "A:3"});
        PlaylistFixture list(model.get());
        list->sort("duration", 4);
        QCOMPARE(list.titles(), QStringList({"c", "A", "b", "a", "B"}));
        list->sort("title", 0);
        QCOMPARE(list.titles(), QStringList({"A", "a", "b", "B", "c"}));
        list->sort("title", 1);
        QCOMPARE(list.titles(), QStringList({"c", "b", "B", "A", "a"}));
        list->sort("duration", 5);
        QCOMPARE(list.titles(), QStringList({"b", "B", "a", "c", "A"}));
    }

    void unknownDurationsComeLastInBothDirections()
    {
        const auto model = songs({"x", "long:300", "y:?", "short:20", "zero:0"});
        PlaylistFixture list(model.get());
        list->sort("duration", 4);
        QCOMPARE(list.titles(), QStringList({"zero", "short", "long", "x", "y"}));
        list->sort("duration", 5);
        QCOMPARE(list.titles(), QStringList({"long", "short", "zero", "x", "y"}));
    }

    void refusesOtherSortings_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("order");
        QTest::newRow("title by a duration order") << "title" << 4;
        QTest::newRow("duration by a title order") << "duration" << 0;
        QTest::newRow("no such order") << "title" << 2;
        QTest::newRow("no such key") << "artist" << 0;
        QTest::newRow("no key") << "" << 0;
    }
    void refusesOtherSortings()
    {
        QFETCH(QString, key);
        QFETCH(int, order);
        const auto model = songs({"b:1", "a:2"});
        PlaylistFixture list(model.get());
        list->shuffle();
        const QStringList before = list.titles();
        list.takeChanges();
        LogRecorder log;
        list->sort(key, order);
        QCOMPARE(list.titles(), before);
        QCOMPARE(list.takeChanges(), Changes());
        QVERIFY(list->isShuffled());
        QCOMPARE(log.warnings(),
            QStringList(
                QString("Playlist \"pl1\" cannot be sorted by \"%1\" in order %2").arg(key).arg(order)));
    }

    void sortingEndsShuffling()
    {
        const auto model = songs({"c", "a", "b"});
        PlaylistFixture list(model.get());
        list->shuffle();
        list->sort("title", 0);
        QVERIFY(!list->isShuffled());
        list.takeChanges();
        list->unshuffle();
        QCOMPARE(list.titles(), QStringList({"a", "b", "c"}));
        QCOMPARE(list.takeChanges(), Changes());
    }

    void anEmptyListCanBeSortedAndShuffled()
    {
        PlaylistFixture list;
        LogRecorder log;
        list->sort("title", 0);
        list->sort("duration", 5);
        list->shuffle();
        QVERIFY(list->isShuffled());
        list->unshuffle();
        QVERIFY(!list->isShuffled());
        list->clear();
        QCOMPARE(list.takeChanges(), Changes());
        QCOMPARE(log.warnings(), QStringList());
    }

    void shufflesToAnotherOrderAndBack()
    {
        const auto model = songs({"a", "b"});
        for (int round = 0; round < 20; ++round) {
            PlaylistFixture list(model.get());
            list->shuffle();
            QVERIFY(list->isShuffled());
            QCOMPARE(list.titles(), QStringList({"b", "a"}));
            list->unshuffle();
            QVERIFY(!list->isShuffled());
            QCOMPARE(list.titles(), QStringList({"a", "b"}));
            QCOMPARE(list.takeChanges(), Changes({{0, 2, 2}, {0, 2, 2}}));
        }
    }

    void shufflingTwiceRestoresTheOrderBeforeTheFirst()
    {
        const auto model = songs({"a", "b", "c", "d", "e", "f"});
        PlaylistFixture list(model.get());
        list->sort("title", 1);
        const QStringList before = list.titles();
        list->shuffle();
        const QStringList once = list.titles();
        list->shuffle();
        QVERIFY(list.titles() != once);
        QCOMPARE(sortedCopy(list.titles()), sortedCopy(before));
        list->unshuffle();
        QCOMPARE(list.titles(), before);
    }

    void unshufflingKeepsWhatWentAndCame()
    {
        const auto model = songs({"a", "b", "c", "d", "e"});
        PlaylistFixture list(model.get());
        list->shuffle();
        list->removeItem(uint(list.titles().indexOf("b")));
        model->appendRow(song("late"));
        model->insertRow(0, song("later"));
        model->removeRow(4); // d
        QCOMPARE(list.titles().mid(3), QStringList({"late", "later"}));
        list->unshuffle();
        QCOMPARE(list.titles(), QStringList({"a", "c", "e", "late", "later"}));
        // An order of its own by now: it does not jump back to that of the model.
        model->insertRow(1, song("latest"));
        QCOMPARE(list.titles(), QStringList({"a", "c", "e", "late", "later", "latest"}));
    }

    void anUnshuffledListFollowsTheModelsOrderAgain()
    {
        const auto model = songs({"a", "b", "c"});
        PlaylistFixture list(model.get());
        list->shuffle();
        list->unshuffle();
        model->insertRow(1, song("new"));
        QCOMPARE(list.titles(), QStringList({"a", "new", "b", "c"}));
    }

    void indexesAndSelectionsFollowTheirItems()
    {
        const auto model = songs({"d:1", "b:4", "a:3", "c:2", "e"});
        PlaylistFixture list(model.get());
        list.markAll();
        list->sort("title", 0);
        list.checkMarks();
        list->shuffle();
        list.checkMarks();
        list->removeItems(1, 2);
        list.checkMarks();
        list->unshuffle();
        list.checkMarks();
        list->sort("duration", 5);
        list.checkMarks();
        list->clear();
        list.checkMarks();
    }

    void removesOneItem()
    {
        const auto model = songs({"a", "b", "c"});
        PlaylistFixture list(model.get());
        const QStringList before = list.uuids();
        list->removeItem(1);
        QCOMPARE(list.uuids(), QStringList({before[0], before[2]}));
        QCOMPARE(list->indexOf(before[1]), -1);
        QCOMPARE(list.takeChanges(), Changes({{1, 1, 0}}));
        QCOMPARE(model->rowCount(), 3);
    }

    void removingOutsideTheListOnlyWarns_data()
    {
        QTest::addColumn<uint>("index");
        QTest::addColumn<QString>("shown");
        QTest::newRow("-1") << minusOne << "-1";
        QTest::newRow("past the end") << 3U << "3";
        QTest::newRow("largest int") << uint(std::numeric_limits<int>::max()) << "2147483647";
    }
    void removingOutsideTheListOnlyWarns()
    {
        QFETCH(uint, index);
        QFETCH(QString, shown);
        const auto model = songs({"a", "b", "c"});
        PlaylistFixture list(model.get());
        LogRecorder log;
        list->removeItem(index);
        list->removeItems(index, index);
        list->removeItems(index, minusOne);
        QCOMPARE(list.titles(), QStringList({"a", "b", "c"}));
        QCOMPARE(list.takeChanges(), Changes());
        QCOMPARE(log.warnings(),
            QStringList({QString("Playlist \"pl1\" has no item %1 to remove, only 3 items").arg(shown),
                QString("Playlist \"pl1\" has no items %1 to %1 to remove, only 3 items").arg(shown),
                QString("Playlist \"pl1\" has no items %1 to -1 to remove, only 3 items").arg(shown)}));
    }

    void removesRanges_data()
    {
        QTest::addColumn<uint>("from");
        QTest::addColumn<uint>("to");
        QTest::addColumn<QStringList>("left");
        QTest::newRow("middle") << 1U << 3U << QStringList({"a", "e"});
        QTest::newRow("one") << 2U << 2U << QStringList({"a", "b", "d", "e"});
        QTest::newRow("all") << 0U << 4U << QStringList();
        QTest::newRow("to past the end") << 3U << 99U << QStringList({"a", "b", "c"});
        QTest::newRow("to the largest number") << 0U << minusOne << QStringList();
    }
    void removesRanges()
    {
        QFETCH(uint, from);
        QFETCH(uint, to);
        QFETCH(QStringList, left);
        const auto model = songs({"a", "b", "c", "d", "e"});
        PlaylistFixture list(model.get());
        LogRecorder log;
        list->removeItems(from, to);
        QCOMPARE(list.titles(), left);
        QCOMPARE(list.takeChanges(), Changes({{from, uint(5 - left.size()), 0}}));
        QCOMPARE(log.warnings(), QStringList());
    }

    void aRangeThatEndsBeforeItStartsOnlyWarns()
    {
        const auto model = songs({"a", "b", "c"});
        PlaylistFixture list(model.get());
        LogRecorder log;
        list->removeItems(2, 1);
        QCOMPARE(list->count(), 3);
        QCOMPARE(list.takeChanges(), Changes());
        QCOMPARE(log.warnings(), QStringList("Playlist \"pl1\" has no items 2 to 1 to remove, only 3 items"));
    }

    void clearsTheListAndLeavesTheModel()
    {
        const auto model = songs({"a", "b", "c"});
        PlaylistFixture list(model.get());
        list->shuffle();
        list.takeChanges();
        list->clear();
        QCOMPARE(list->count(), 0);
        QVERIFY(!list->isShuffled());
        QCOMPARE(list.takeChanges(), Changes({{0, 3, 0}}));
        list->clear();
        QCOMPARE(list.takeChanges(), Changes());
        QCOMPARE(model->rowCount(), 3);
        QCOMPARE(model->item(0, 1)->text(), "a");
        model->appendRow(song("d"));
        QCOMPARE(list.titles(), QStringList({"d"}));
    }

    void everyItemHasAUuidOfItsOwnThatIsNeverUsedAgain()
    {
        const auto model = songs({"same", "same", "same"});
        PlaylistFixture list(model.get());
        QSet<QString> seen;
        int expected = 0;
        for (int round = 0; round < 5; ++round) {
            for (const QString &uuid : list.uuids()) {
                QCOMPARE(QUuid(uuid).toString(QUuid::WithoutBraces), uuid);
                seen.insert(uuid);
            }
            expected += 3;
            QCOMPARE(seen.size(), expected);
            if (round % 2 == 0)
                list->clear();
            else
                list->removeItems(0, 1);
            if (round % 2 == 1)
                list->removeItem(0);
            for (int i = 0; i < 3; ++i)
                model->appendRow(song("same"));
        }
        for (const QString &uuid : list.uuids())
            seen.insert(uuid);
        // With an item left, the places of removed ones are used again, their uuids are not.
        for (int round = 0; round < 50; ++round) {
            list->removeItem(1);
            model->appendRow(song("same"));
            seen.insert(list->mediaInfoAt(2).uuid());
        }
        QCOMPARE(seen.size(), expected + 50 + 3);
    }

    void indexOfKnowsOnlyItsOwnItems()
    {
        const auto model = songs({"a", "b"});
        PlaylistFixture list(model.get());
        PlaylistFixture other(model.get());
        QCOMPARE(list->indexOf(list->mediaInfoAt(1).uuid()), 1);
        QCOMPARE(list->indexOf(other->mediaInfoAt(1).uuid()), -1);
        QCOMPARE(list->indexOf(QString()), -1);
        QCOMPARE(list->indexOf("id-a"), -1);
        QCOMPARE(list->indexOf("00000000-0000-0000-0000-000000000000"), -1);
    }

    void uuidsStayThroughEveryEdit()
    {
        const auto model = songs({"b:2", "c:1", "a:3"});
        PlaylistFixture list(model.get());
        const QString a = list->mediaInfoAt(2).uuid();
        list->sort("title", 0);
        QCOMPARE(list->indexOf(a), 0);
        list->shuffle();
        QCOMPARE(list->mediaInfoAt(uint(list->indexOf(a))).title(), "a");
        list->unshuffle();
        list->sort("duration", 4);
        QCOMPARE(list->indexOf(a), 2);
        list->removeItem(0);
        QCOMPARE(list->indexOf(a), 1);
        model->item(2, 1)->setText("renamed");
        QCOMPARE(list->mediaInfoAt(1).uuid(), a);
        QCOMPARE(list->mediaInfoAt(1).title(), "renamed");
    }

    void mediaInfoOutsideTheListIsNull()
    {
        const auto model = songs({"a"});
        PlaylistFixture list(model.get());
        QVERIFY(!list->mediaInfoAt(0).isNull());
        QVERIFY(list->mediaInfoAt(1).isNull());
        QVERIFY(list->mediaInfoAt(minusOne).isNull());
    }

    void aReceiverMayEditTheListWhileItIsTold()
    {
        const auto model = songs({"a", "b", "c", "d", "e", "f", "g", "h"});
        PlaylistFixture list(model.get());
        list->sort("title", 1);
        // Removing rows of the model takes several runs out of a sorted list; the receiver removes more.
        bool reacted = false;
        connect(&*list, &KelvoPlaylist::contentsChanged, this, [&](uint, uint, uint added) {
            if (added > 0 || std::exchange(reacted, true))
                return;
            list->removeItem(uint(list.titles().indexOf("d")));
            list->sort("title", 0);
        });
        model->insertRow(4, song("z"));
        model->removeRows(2, 4); // c d z e
        QVERIFY(reacted);
        QCOMPARE(sortedCopy(list.titles()), QStringList({"a", "b", "f", "g", "h"}));
    }
};

KELVO_TEST(PlaylistEditingTest)
#include "PlaylistEditingTest.moc"
