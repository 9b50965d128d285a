// SPDX-License-Identifier: MIT
#include "KelvoGeneralSourcePlaylist.h"
#include "KelvoPlayQueue.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

#include <memory>

namespace {
struct List
{
    explicit List(const QStringList &titles)
        : playlist(std::make_unique<KelvoGeneralSourcePlaylist>("id", "name", "source"))
    {
        for (const QString &title : titles)
            append(title);
        playlist->setUnderlyingModel(&model);
    }
    void append(const QString &title) { model.appendRow({new QStandardItem("0"), new QStandardItem(title)}); }

    QStandardItemModel model;
    std::unique_ptr<KelvoGeneralSourcePlaylist> playlist;
};

/// A queue on a list of a, b, c, d, e, with its signals recorded.
struct Queue
{
    explicit Queue(int current = 0, const QStringList &titles = {"a", "b", "c", "d", "e"})
        : list(titles)
        , moved(&queue, &KelvoPlayQueue::indexMoved)
        , removed(&queue, &KelvoPlayQueue::currentRemoved)
    {
        queue.setPlaylist(list.playlist.get());
        if (current > 0)
            queue.setIndex(current);
    }
    QString title() const { return queue.current().title(); }
    KelvoPlaylist *operator->() const { return list.playlist.get(); }

    List list;
    KelvoPlayQueue queue;
    QSignalSpy moved;
    QSignalSpy removed;
};

using Arguments = QList<QVariantList>;
Arguments taken(QSignalSpy &spy)
{
    return std::exchange(static_cast<Arguments &>(spy), {});
}
} // namespace

class PlayQueueTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void hasNoItemWithoutAPlaylist()
    {
        KelvoPlayQueue queue;
        QVERIFY(!queue.playlist());
        QCOMPARE(queue.count(), 0);
        QCOMPARE(queue.index(), -1);
        QVERIFY(queue.current().isNull());
        QVERIFY(!queue.setIndex(0));
        QCOMPARE(queue.nextIndex(), -1);
        QCOMPARE(queue.previousIndex(), -1);
        QCOMPARE(queue.followingIndex(), -1);
    }

    void hasNoItemInAnEmptyPlaylist()
    {
        Queue q(0, {});
        q->setRepeatMode(KelvoPlaylist::RepeatAll);
        QCOMPARE(q.queue.index(), -1);
        QVERIFY(q.queue.current().isNull());
        QCOMPARE(q.queue.nextIndex(), -1);
        QCOMPARE(q.queue.previousIndex(), -1);
        QCOMPARE(q.queue.followingIndex(), -1);
        q->setRepeatMode(KelvoPlaylist::RepeatOne);
        QCOMPARE(q.queue.followingIndex(), -1);
    }

    void startsAtTheFirstItem()
    {
        Queue q;
        QCOMPARE(q.queue.playlist(), q.list.playlist.get());
        QCOMPARE(q.queue.count(), 5);
        QCOMPARE(q.queue.index(), 0);
        QCOMPARE(q.title(), "a");
        QCOMPARE(taken(q.moved), Arguments());
    }

    void theSamePlaylistAgainChangesNothing()
    {
        Queue q(3);
        q.queue.setPlaylist(q.list.playlist.get());
        QCOMPARE(q.queue.index(), 3);
        q->removeItem(0);
        QCOMPARE(q.moved.count(), 1);
    }

    void anotherPlaylistStartsAtItsFirstItem()
    {
        Queue q(3);
        List other({"x", "y"});
        q.queue.setPlaylist(other.playlist.get());
        QCOMPARE(q.queue.index(), 0);
        QCOMPARE(q.title(), "x");
        q->clear();
        QCOMPARE(q.queue.index(), 0);
        q.list.playlist.reset();
        QCOMPARE(q.title(), "x");
        q.queue.setPlaylist(nullptr);
        QCOMPARE(q.queue.index(), -1);
        QCOMPARE(q.queue.count(), 0);
        QCOMPARE(taken(q.removed), Arguments());
        QCOMPARE(taken(q.moved), Arguments());
    }

    void setsOnlyIndexesOfTheList()
    {
        Queue q(2);
        for (int index : {-1, 5, 1000, -1000}) {
            QVERIFY(!q.queue.setIndex(index));
            QCOMPARE(q.queue.index(), 2);
        }
        QVERIFY(q.queue.setIndex(4));
        QCOMPARE(q.title(), "e");
        QCOMPARE(taken(q.moved), Arguments());
    }

    void leadsOn_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("at");
        QTest::addColumn<int>("next");
        QTest::addColumn<int>("previous");
        QTest::addColumn<int>("following");
        QTest::newRow("off, first") << 1 << 0 << 1 << 0 << 1;
        QTest::newRow("off, middle") << 1 << 2 << 3 << 1 << 3;
        QTest::newRow("off, last") << 1 << 4 << -1 << 3 << -1;
        QTest::newRow("all, first") << 0 << 0 << 1 << 4 << 1;
        QTest::newRow("all, middle") << 0 << 2 << 3 << 1 << 3;
        QTest::newRow("all, last") << 0 << 4 << 0 << 3 << 0;
        QTest::newRow("one, first") << 2 << 0 << 1 << 0 << 0;
        QTest::newRow("one, middle") << 2 << 2 << 3 << 1 << 2;
        QTest::newRow("one, last") << 2 << 4 << -1 << 3 << 4;
    }
    void leadsOn()
    {
        QFETCH(int, mode);
        QFETCH(int, at);
        QFETCH(int, next);
        QFETCH(int, previous);
        QFETCH(int, following);
        Queue q(at);
        q->setRepeatMode(mode);
        QCOMPARE(q.queue.nextIndex(), next);
        QCOMPARE(q.queue.previousIndex(), previous);
        QCOMPARE(q.queue.followingIndex(), following);
        QCOMPARE(q.queue.index(), at);
    }

    void aSingleItemFollowsItselfWithRepeatAll()
    {
        Queue q(0, {"only"});
        QCOMPARE(q.queue.followingIndex(), -1);
        q->setRepeatMode(KelvoPlaylist::RepeatAll);
        QCOMPARE(q.queue.followingIndex(), 0);
        QCOMPARE(q.queue.previousIndex(), 0);
    }

    void keepsTheCurrentItemWhenTheListIsSorted()
    {
        Queue q(1);
        q->sort("title", 1);
        QCOMPARE(q.title(), "b");
        QCOMPARE(q.queue.index(), 3);
        QCOMPARE(taken(q.moved), Arguments({{3}}));
        q->sort("title", 1);
        QCOMPARE(taken(q.moved), Arguments());
    }

    void keepsTheCurrentItemWhenTheListIsShuffled()
    {
        Queue q(1);
        for (int round = 0; round < 10; ++round) {
            q->shuffle();
            QCOMPARE(q.title(), "b");
            if (!q.moved.isEmpty())
                QCOMPARE(q.moved.last().first().toInt(), q.queue.index());
        }
        q->unshuffle();
        QCOMPARE(q.queue.index(), 1);
        QCOMPARE(taken(q.removed), Arguments());
    }

    void keepsTheCurrentItemWhenOthersComeAndGo()
    {
        Queue q(2);
        q->removeItem(4);
        QCOMPARE(taken(q.moved), Arguments());
        q->removeItems(0, 1);
        QCOMPARE(taken(q.moved), Arguments({{0}}));
        q.list.model.insertRow(0, {new QStandardItem("0"), new QStandardItem("new")});
        QCOMPARE(taken(q.moved), Arguments({{1}}));
        q.list.append("last");
        QCOMPARE(taken(q.moved), Arguments());
        QCOMPARE(q.title(), "c");
        QCOMPARE(taken(q.removed), Arguments());
    }

    void theItemThatTakesThePlaceBecomesCurrent_data()
    {
        QTest::addColumn<uint>("from");
        QTest::addColumn<uint>("to");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("title");
        QTest::newRow("itself") << 2U << 2U << 2 << "d";
        QTest::newRow("from before") << 0U << 2U << 0 << "d";
        QTest::newRow("around") << 1U << 3U << 1 << "e";
        QTest::newRow("to the end") << 2U << 4U << 1 << "b";
        QTest::newRow("all") << 0U << 4U << -1 << "";
    }
    void theItemThatTakesThePlaceBecomesCurrent()
    {
        QFETCH(uint, from);
        QFETCH(uint, to);
        QFETCH(int, index);
        QFETCH(QString, title);
        Queue q(2);
        q->removeItems(from, to);
        QCOMPARE(q.queue.index(), index);
        QCOMPARE(q.title(), title);
        QCOMPARE(taken(q.removed), Arguments({{index}}));
        QCOMPARE(taken(q.moved), Arguments());
    }

    void theItemThatTakesThePlaceIsFoundInAShuffledListToo()
    {
        for (int round = 0; round < 20; ++round) {
            Queue q;
            q->shuffle();
            q.queue.setIndex(1);
            // What stays of the play order behind the current item.
            QStringList left;
            for (uint i = 2; i < 5; ++i)
                left.append(q->mediaInfoAt(i).title());
            const QString current = q.title();
            const int row = int(current.at(0).toLatin1() - 'a');
            const int other = row == 4 ? 3 : row + 1;
            left.removeOne(QString(QChar('a' + other)));
            q.list.model.removeRows(std::min(row, other), 2);
            QCOMPARE(q.title(), left.first());
            QCOMPARE(q.removed.count(), 1);
            QCOMPARE(q->mediaInfoAt(uint(q.queue.index())).title(), left.first());
        }
    }

    void clearingTheListLeavesNothing()
    {
        Queue q(2);
        q->clear();
        QCOMPARE(q.queue.index(), -1);
        QVERIFY(q.queue.current().isNull());
        QCOMPARE(taken(q.removed), Arguments({{-1}}));
        q->clear();
        QCOMPARE(taken(q.removed), Arguments());
    }

    void theFirstItemOfAnEmptyListBecomesCurrent()
    {
        Queue q(0, {});
        q.list.append("a");
        QCOMPARE(q.queue.index(), 0);
        QCOMPARE(q.title(), "a");
        QCOMPARE(taken(q.moved), Arguments({{0}}));
        q.list.append("b");
        QCOMPARE(taken(q.moved), Arguments());
    }

    void anotherModelReplacesTheCurrentItem()
    {
        Queue q(2);
        QStandardItemModel other;
        for (const char *title : {"v", "w", "x", "y"})
            other.appendRow({new QStandardItem("0"), new QStandardItem(title)});
        q.list.playlist->setUnderlyingModel(&other);
        QCOMPARE(q.title(), "x");
        QCOMPARE(taken(q.removed), Arguments({{2}}));
        q.list.playlist->setUnderlyingModel(nullptr);
        QCOMPARE(taken(q.removed), Arguments({{-1}}));
    }

    void changedDataLeavesTheCurrentItem()
    {
        Queue q(2);
        q.list.model.item(2, 1)->setText("renamed");
        QCOMPARE(q.title(), "renamed");
        QCOMPARE(q.queue.index(), 2);
        QCOMPARE(taken(q.moved), Arguments());
        QCOMPARE(taken(q.removed), Arguments());
    }

    void survivesItsPlaylist()
    {
        Queue q(2);
        q.list.playlist.reset();
        QCOMPARE(taken(q.removed), Arguments({{-1}}));
        QVERIFY(!q.queue.playlist());
        QCOMPARE(q.queue.index(), -1);
        QCOMPARE(q.queue.count(), 0);
        QVERIFY(q.queue.current().isNull());
        QVERIFY(!q.queue.setIndex(0));
        QCOMPARE(q.queue.nextIndex(), -1);
        QCOMPARE(q.queue.previousIndex(), -1);
        List other({"x"});
        q.queue.setPlaylist(other.playlist.get());
        QCOMPARE(q.title(), "x");
    }

    void anEmptyPlaylistGoesWithoutAWord()
    {
        Queue q(0, {});
        q.list.playlist.reset();
        QCOMPARE(taken(q.removed), Arguments());
        QVERIFY(!q.queue.playlist());
    }

    void severalQueuesFollowOnePlaylist()
    {
        Queue first(1);
        KelvoPlayQueue second;
        second.setPlaylist(first.list.playlist.get());
        second.setIndex(4);
        first->removeItem(0);
        QCOMPARE(first.queue.index(), 0);
        QCOMPARE(second.index(), 3);
        first.list.playlist.reset();
        QCOMPARE(first.queue.index(), -1);
        QCOMPARE(second.index(), -1);
    }

    void aQueueMayGoBeforeItsPlaylist()
    {
        List list({"a", "b"});
        {
            KelvoPlayQueue queue;
            queue.setPlaylist(list.playlist.get());
        }
        list.playlist->removeItem(0);
        QCOMPARE(list.playlist->count(), 1);
    }
};

KELVO_TEST(PlayQueueTest)
#include "PlayQueueTest.moc"
