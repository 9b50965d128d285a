// SPDX-License-Identifier: MIT
#include "LogRecorder.h"
#include "TestGroup.h"
#include "TrackerModelCase.h"
#include "index/StoreWriter.h"
#include "store/StoreSession.h"

#include <QLoggingCategory>
#include <QPointer>

/// The rest of a result, behind its first block: when nobody asks for it, when the store changes, when it is replaced.
class TrackerRestTest : public TrackerModelCase
{
    Q_OBJECT

    /// Cursors that were closed because nobody wanted rows of them.
    static qsizetype closedCursors(const LogRecorder &log)
    {
        return log.lines().filter("its cursor is closed").size();
    }

    bool remove(int first, int count)
    {
        StoreError error;
        std::vector<KnownFile> files;
        for (int i = first; i < first + count; ++i)
            files.push_back({{}, song(i).stamp, song(i).number, MediaKind::Song});
        const StoreSession::Entry entry = store().session()->enter([] {}, &error);
        return entry && StoreWriter(entry.connection()).remove(files, &error);
    }

    bool insert(const QString &title)
    {
        std::vector<MediaItem> items;
        for (int i = 0; i < SongCount; ++i) {
            items.push_back(song(1000 + i));
            items.back().title = title + QString::number(i);
        }
        return writeSongs(items);
    }

    bool changeStore(const QString &change)
    {
        if (change == "inserted before")
            return insert("A ");
        if (change == "inserted inside")
            return insert(song(50).title + ' ');
        if (change == "inserted behind")
            return insert("Z ");
        if (change == "removed before")
            return remove(0, 10);
        if (change == "removed behind")
            return remove(50, 20);
        if (change == "all removed")
            return remove(0, SongCount);
        if (change == "renamed") {
            MediaItem last = song(SongCount - 1);
            last.isNew = false;
            last.title = "A";
            return writeSongs({last});
        }
        return true;
    }

    bool rebuildStore(int count)
    {
        std::vector<MediaItem> items;
        for (int i = 0; i < count; ++i)
            items.push_back(song(i));
        return replaceStore() && writeSongs(items);
    }

private Q_SLOTS:
    void initTestCase()
    {
        TrackerModelCase::initTestCase();
        QLoggingCategory::setFilterRules(QStringLiteral("kelvo.debug=true")); // see closedCursors()
    }

    void closesACursorThatNobodyWantsRowsOf()
    {
        QVERIFY(fill());
        const LogRecorder log;
        const auto watched = startImpatient(Type::AllSongs, 10, 50);
        QVERIFY(watched->inserted.wait());
        QTRY_COMPARE(closedCursors(log), 1);
        QCOMPARE(watched->blocks(), QList<int>{10}); // and hands over nothing that was not asked for
        QCOMPARE(watched->completed.count(), 0);
    }

    void keepsACursorOpenForAWhile()
    {
        QVERIFY(fill());
        const LogRecorder log;
        const auto watched = start(Type::AllSongs, 10, 50);
        QVERIFY(watched->inserted.wait());
        watched->model->fetchRest();
        QVERIFY(watched->completed.wait());
        QCOMPARE(closedCursors(log), 0);
    }

    void fetchesTheRestOfItsFirstAnswer_data()
    {
        QTest::addColumn<bool>("isCursorClosed");
        QTest::addColumn<QString>("change");
        for (const bool closed : {true, false}) {
            for (const char *change : {"nothing", "inserted before", "inserted inside", "inserted behind",
                     "removed before", "removed behind", "all removed", "renamed"})
                QTest::addRow("%s, cursor %s", change, closed ? "closed" : "open") << closed << change;
        }
    }

    void fetchesTheRestOfItsFirstAnswer()
    {
        QFETCH(bool, isCursorClosed);
        QFETCH(QString, change);
        QVERIFY(fill());
        const LogRecorder log;
        const auto watched
            = isCursorClosed ? startImpatient(Type::AllSongs, 10, 50) : start(Type::AllSongs, 10, 50);
        QVERIFY(watched->inserted.wait());
        if (isCursorClosed)
            QTRY_COMPARE(closedCursors(log), 1);
        QVERIFY(changeStore(change));
        watched->model->fetchRest();
        QVERIFY(watched->completed.wait());
        QCOMPARE(watched->failed.count(), 0);
        QCOMPARE(watched->blocks(), QList<int>({10, 50, 40}));
        QStringList expected;
        for (int i = 0; i < SongCount; ++i)
            expected.append(song(i).title);
        QCOMPARE(texts(*watched->model, "songTitle"), expected);
        // Completed for good.
        watched->model->fetchRest();
        QVERIFY(watched->completed.wait());
        QCOMPARE(watched->model->rowCount(), SongCount);
    }

    void fetchesTheRestWhileItsCursorIsBeingClosed()
    {
        constexpr int count = 1000;
        QVERIFY(fill(count));
        for (int round = 0; round < 10; ++round) {
            const auto watched = startImpatient(Type::AllSongs, 10, 100);
            QVERIFY(watched->inserted.wait());
            QTest::qSleep(round); // before, while and after the rest is read
            watched->model->fetchRest();
            watched->model->fetchRest();
            QVERIFY(watched->completed.wait());
            QCOMPARE(watched->model->rowCount(), count);
            QCOMPARE(watched->completed.count(), 1);
        }
    }

    void hasItsRestWhenTheStoreIsClosedAfterItsCursor()
    {
        QVERIFY(fill());
        const LogRecorder log;
        const auto watched = startImpatient(Type::AllSongs, 10, 50);
        QVERIFY(watched->inserted.wait());
        QTRY_COMPARE(closedCursors(log), 1);
        closeStore();
        watched->model->fetchRest();
        QVERIFY(watched->completed.wait());
        QCOMPARE(watched->model->rowCount(), SongCount);
        QCOMPARE(watched->failed.count(), 0);
    }

    // The rows come anew from the top, and what was shown goes first: as changes that views and labels follow.
    void isQueriedAnewInAnotherStore()
    {
        QVERIFY(fill());
        const auto watched = start(Type::AllSongs, 10, 50);
        QVERIFY(watched->inserted.wait());
        const int removedSongs = 30;
        QVERIFY(rebuildStore(SongCount - removedSongs));
        QSignalSpy removed(watched->model.get(), &QAbstractItemModel::rowsRemoved);
        QCOMPARE(watched->model->rowCount(), 10);
        QCOMPARE(watched->failed.count(), 0);
        watched->model->fetchRest();
        QVERIFY(watched->failed.wait());
        QCOMPARE(watched->completed.count(), 1);
        QCOMPARE(removed.count(), 1);
        QCOMPARE(removed.first().mid(1), QVariantList({0, 9}));
        QStringList expected;
        for (int i = 0; i < SongCount - removedSongs; ++i)
            expected.append(song(i).title);
        QCOMPARE(texts(*watched->model, "songTitle"), expected);
        const QString told = watched->failed.first().first().toString();
        QVERIFY2(told.contains("deleted") || told.contains("queried anew"), qPrintable(told));
    }

    // An id means another album there, or none.
    void isNotQueriedAnewForAnIdOfTheOldStore()
    {
        QVERIFY(fill());
        const int album = result(Type::AllAlbums)->index(0, 0).data().toInt();
        const auto watched = start(Type::SongsOfAlbum, 10, 50, album);
        QVERIFY(watched->inserted.wait());
        QVERIFY(rebuildStore(SongCount));
        watched->model->fetchRest();
        QVERIFY(watched->failed.wait());
        QCOMPARE(watched->completed.count(), 0);
        QCOMPARE(watched->model->rowCount(), 10);
    }

    // Who is told of an error may begin the next query at once: nothing of this one comes after it.
    void tellsOfARebuiltStoreAtItsEnd_data()
    {
        QTest::addColumn<int>("firstBlock");
        QTest::newRow("all rows at once") << 0;
        QTest::newRow("rest on demand") << 10;
    }

    void tellsOfARebuiltStoreAtItsEnd()
    {
        QFETCH(int, firstBlock);
        QVERIFY(fill());
        QVERIFY(rebuildStore(SongCount));
        const auto watched = start(Type::AllSongs, firstBlock, 50);
        QStringList told;
        connect(
            watched->model.get(), &KelvoTrackerModel::rowsInserted, this, [&told] { told.append("rows"); });
        connect(
            watched->model.get(), &KelvoTrackerModel::completed, this, [&told] { told.append("completed"); });
        connect(watched->model.get(), &KelvoTrackerModel::error, this, [&told] { told.append("error"); });
        if (firstBlock) {
            QVERIFY(watched->inserted.wait());
            QCOMPARE(watched->failed.count(), 0);
            watched->model->fetchRest();
        }
        QTRY_COMPARE(watched->failed.count(), 1);
        QCOMPARE(told.mid(told.size() - 2), QStringList({"completed", "error"}));
        QCOMPARE(told.count("completed"), 1);
        QCOMPARE(watched->model->rowCount(), SongCount);
    }

    void leavesTheNewsOfARebuiltStoreToTheNextQuery()
    {
        QVERIFY(fill());
        QVERIFY(rebuildStore(SongCount));
        {
            const auto untold = start(Type::AllSongs, 10, 50);
            QVERIFY(untold->inserted.wait());
        }
        const auto watched = start(Type::AllSongs, 0, 0);
        QVERIFY(watched->failed.wait());
        QVERIFY(watched->failed.first().first().toString().contains("deleted"));
    }

    void maySurviveItsEndInWhatFollowsItsCompletion()
    {
        QVERIFY(fill());
        QVERIFY(rebuildStore(SongCount));
        auto watched = start(Type::AllSongs, 0, 0);
        QPointer<KelvoTrackerModel> model = watched->model.get();
        connect(model, &KelvoTrackerModel::completed, this, [&watched] { watched.reset(); });
        QTRY_VERIFY(!model);
    }
};

KELVO_TEST(TrackerRestTest)
#include "TrackerRestTest.moc"
