// SPDX-License-Identifier: MIT
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "PlaylistFixture.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QSortFilterProxyModel>
#include <QTest>

namespace {
using Changes = QList<ContentsChange>;

/// A flat model that can move its rows, and forget to say what it does.
class MovableModel : public QAbstractTableModel
{
public:
    explicit MovableModel(const QStringList &titles)
        : m_titles(titles)
    {
    }
    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_titles.size());
    }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : 2; }
    QVariant data(const QModelIndex &index, int role) const override
    {
        return role == Qt::DisplayRole && index.column() == 1 ? m_titles.at(index.row()) : QVariant();
    }
    bool moveRows(
        const QModelIndex &from, int first, int count, const QModelIndex &to, int destination) override
    {
        if (!beginMoveRows(from, first, first + count - 1, to, destination))
            return false;
        QStringList moved = m_titles.mid(first, count);
        m_titles.remove(first, count);
        for (int i = 0, at = destination > first ? destination - count : destination; i < count; ++i)
            m_titles.insert(at + i, moved.at(i));
        endMoveRows();
        return true;
    }
    void growSilently(const QString &title) { m_titles.append(title); }
    void growInsideLayoutChange(const QString &title)
    {
        Q_EMIT layoutAboutToBeChanged();
        m_titles.append(title);
        Q_EMIT layoutChanged();
    }
    void append(const QString &title)
    {
        beginInsertRows({}, rowCount(), rowCount());
        m_titles.append(title);
        endInsertRows();
    }

private:
    QStringList m_titles;
};
} // namespace

/// How the playlist follows its underlying model.
class PlaylistFollowingTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void takesTheRowsOfItsModel()
    {
        const auto model = songs({"a:5", "b"});
        PlaylistFixture list;
        list->setUnderlyingModel(model.get());
        QCOMPARE(list->underlyingModel(), model.get());
        QCOMPARE(list.takeChanges(), Changes({{0, 0, 2}}));
        const KelvoMediaInfo info = list->mediaInfoAt(0);
        QCOMPARE(info.title(), "a");
        QCOMPARE(info.url(), QUrl("file:///a.ogg"));
        QCOMPARE(info.duration(), 5);
        QCOMPARE(info.artist(), "artist of a");
        QCOMPARE(list->mediaInfoAt(1).duration(), -1);
    }

    void appendedRowsComeAtTheEnd()
    {
        const auto model = songs({"b", "a"});
        PlaylistFixture list(model.get());
        model->appendRow(song("c"));
        list->sort("title", 1);
        model->appendRow(song("d"));
        list->shuffle();
        model->appendRow(song("e"));
        QCOMPARE(list.titles().last(), "e");
        QCOMPARE(list.takeChanges(), Changes({{2, 0, 1}, {0, 3, 3}, {3, 0, 1}, {0, 4, 4}, {4, 0, 1}}));
    }

    void insertedRowsComeAtTheirPlaceInAnUntouchedOrder()
    {
        const auto model = songs({"a", "b", "c", "d"});
        PlaylistFixture list(model.get());
        list->removeItems(0, 1);
        model->insertRow(1, song("x"));
        QCOMPARE(list.titles(), QStringList({"x", "c", "d"}));
        model->insertRow(4, song("y"));
        QCOMPARE(list.titles(), QStringList({"x", "c", "y", "d"}));
        model->insertRow(0, song("z"));
        QCOMPARE(list.titles(), QStringList({"z", "x", "c", "y", "d"}));
        QCOMPARE(list.takeChanges(), Changes({{0, 2, 0}, {0, 0, 1}, {2, 0, 1}, {0, 0, 1}}));
    }

    void insertedRowsComeLastInASortedOrShuffledOrder()
    {
        const auto model = songs({"b", "c"});
        PlaylistFixture list(model.get());
        list->sort("title", 0);
        model->insertRow(0, song("a"));
        QCOMPARE(list.titles(), QStringList({"b", "c", "a"}));
        list->shuffle();
        model->insertRow(0, song("0"));
        QCOMPARE(list.titles().last(), "0");
    }

    void removedRowsGo()
    {
        const auto model = songs({"a", "b", "c", "d", "e"});
        PlaylistFixture list(model.get());
        list.markAll();
        model->removeRows(1, 2);
        QCOMPARE(list.titles(), QStringList({"a", "d", "e"}));
        QCOMPARE(list.takeChanges(), Changes({{1, 2, 0}}));
        list.checkMarks();
    }

    void removedRowsGoFromASortedOrderRunByRun()
    {
        const auto model = songs({"a:1", "b:9", "c:2", "d:8", "e:3"});
        PlaylistFixture list(model.get());
        list->sort("duration", 4); // a c e d b
        list.takeChanges();
        list.markAll();
        model->removeRows(0, 4); // a b c d
        QCOMPARE(list.titles(), QStringList("e"));
        QCOMPARE(list.takeChanges(), Changes({{3, 2, 0}, {0, 2, 0}}));
        list.checkMarks();
    }

    void rowsOfRemovedItemsGoWithoutAWord()
    {
        const auto model = songs({"a", "b", "c"});
        PlaylistFixture list(model.get());
        list->removeItem(1);
        list.takeChanges();
        model->removeRow(1);
        QCOMPARE(list.takeChanges(), Changes());
        QCOMPARE(list.titles(), QStringList({"a", "c"}));
        model->removeRow(1);
        QCOMPARE(list.titles(), QStringList({"a"}));
    }

    void movedRowsMove_data()
    {
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("destination");
        QTest::addColumn<QString>("order");
        QTest::newRow("down") << 0 << 2 << 4 << "cdabe";
        QTest::newRow("to the end") << 1 << 1 << 5 << "acdeb";
        QTest::newRow("up") << 3 << 2 << 1 << "adebc";
        QTest::newRow("to the start") << 4 << 1 << 0 << "eabcd";
    }
    void movedRowsMove()
    {
        QFETCH(int, first);
        QFETCH(int, count);
        QFETCH(int, destination);
        QFETCH(QString, order);
        MovableModel model({"a", "b", "c", "d", "e"});
        PlaylistFixture list(&model);
        list.markAll();
        QVERIFY(model.moveRows({}, first, count, {}, destination));
        QCOMPARE(list.titles().join(""), order);
        QCOMPARE(list.takeChanges(), Changes({{0, 5, 5}}));
        list.checkMarks();
        // The rows are known at their new places: what goes from the model goes from the list.
        model.moveRows({}, destination > first ? destination - count : destination, count, {},
            destination > first ? first : first + count);
        QCOMPARE(list.titles().join(""), "abcde");
    }

    void movedRowsStayInASortedOrder()
    {
        MovableModel model({"b", "a", "c"});
        PlaylistFixture list(&model);
        list->sort("title", 0);
        list.takeChanges();
        model.moveRows({}, 0, 1, {}, 3);
        QCOMPARE(list.titles(), QStringList({"a", "b", "c"}));
        QCOMPARE(list.takeChanges(), Changes());
    }

    void changedDataShows()
    {
        const auto model = songs({"a:1", "b:2", "c:3"});
        PlaylistFixture list(model.get());
        list->sort("title", 1); // c b a
        list.takeChanges();
        QSignalSpy shown(list->itemModel(), &QAbstractItemModel::dataChanged);
        model->item(0, 2)->setText("http://host/other");
        QCOMPARE(list->mediaInfoAt(2).url(), QUrl("http://host/other"));
        QCOMPARE(list.takeChanges(), Changes({{2, 1, 1}}));
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown.first().at(0).toModelIndex().row(), 2);
        QCOMPARE(shown.first().at(1).toModelIndex().row(), 2);
    }

    void dataThatThePlaylistDoesNotKeepOnlyShows()
    {
        const auto model = songs({"a", "b"});
        PlaylistFixture list(model.get());
        QSignalSpy shown(list->itemModel(), &QAbstractItemModel::dataChanged);
        model->item(1, 5)->setText("1999");
        QCOMPARE(list.cell(1, 5), "1999");
        QCOMPARE(shown.count(), 1);
        model->item(0, 1)->setToolTip("no text");
        QCOMPARE(shown.count(), 1);
        QCOMPARE(list.takeChanges(), Changes());
    }

    void removedItemsDoNotComeBackWithChangedData()
    {
        const auto model = songs({"a", "b", "c"});
        PlaylistFixture list(model.get());
        list->removeItem(1);
        list.takeChanges();
        model->item(1, 1)->setText("changed");
        Q_EMIT model->dataChanged(model->index(0, 0), model->index(2, 5));
        QCOMPARE(list.titles(), QStringList({"a", "c"}));
        QCOMPARE(list.takeChanges(), Changes());
        Q_EMIT model->dataChanged({}, {});
        QCOMPARE(list.titles(), QStringList({"a", "c"}));
    }

    void aSortedModelReordersAnUntouchedList()
    {
        const auto model = songs({"c", "a", "d", "b"});
        PlaylistFixture list(model.get());
        list->removeItem(2); // d
        list.markAll();
        list.takeChanges();
        model->sort(1);
        QCOMPARE(list.titles(), QStringList({"a", "b", "c"}));
        QCOMPARE(list.takeChanges(), Changes({{0, 3, 3}}));
        list.checkMarks();
        // Also the rest of the row is read from its new place, and removed items stay away.
        QCOMPARE(list.cell(1, 5), "year of b");
        model->sort(1, Qt::DescendingOrder);
        QCOMPARE(list.titles(), QStringList({"c", "b", "a"}));
    }

    void aSortedModelLeavesASortedListAlone()
    {
        const auto model = songs({"c", "a", "b"});
        PlaylistFixture list(model.get());
        list->sort("title", 1);
        list.takeChanges();
        model->sort(1);
        QCOMPARE(list.titles(), QStringList({"c", "b", "a"}));
        QCOMPARE(list.takeChanges(), Changes());
        QCOMPARE(list.cell(0, 5), "year of c");
    }

    void aFilterAsModelAddsAndRemovesRows()
    {
        const auto model = songs({"one", "two", "three", "four"});
        QSortFilterProxyModel filter;
        filter.setSourceModel(model.get());
        filter.setFilterKeyColumn(1);
        PlaylistFixture list(&filter);
        filter.setFilterFixedString("o");
        QCOMPARE(list.titles(), QStringList({"one", "two", "four"}));
        filter.setFilterFixedString("");
        QCOMPARE(list.titles(), QStringList({"one", "two", "three", "four"}));
        filter.sort(1);
        QCOMPARE(list.titles(), QStringList({"four", "one", "three", "two"}));
    }

    void aResetModelIsReadAnew()
    {
        const auto model = songs({"a", "b", "c"});
        PlaylistFixture list(model.get());
        list->setRepeatMode(KelvoPlaylist::RepeatAll);
        list->shuffle();
        list->removeItem(0);
        list.takeChanges();
        QSignalSpy reset(list->itemModel(), &QAbstractItemModel::modelReset);
        model->clear();
        QCOMPARE(list.takeChanges(), Changes({{0, 2, 0}}));
        QCOMPARE(reset.count(), 1);
        QVERIFY(!list->isShuffled());
        QCOMPARE(list->repeatMode(), int(KelvoPlaylist::RepeatAll));
        model->appendRow(texts({"7", "new", "file:///new.ogg"}));
        QCOMPARE(list.titles(), QStringList("new"));
    }

    void aModelThatForgetsToTellIsReadAnew()
    {
        MovableModel model({"a", "b"});
        PlaylistFixture list(&model);
        model.growSilently("silent");
        QCOMPARE(list->count(), 2);
        model.append("told");
        QCOMPARE(list.titles(), QStringList({"a", "b", "silent", "told"}));
        model.growInsideLayoutChange("hidden");
        QCOMPARE(list.titles(), QStringList({"a", "b", "silent", "told", "hidden"}));
        model.growSilently("again");
        model.moveRows({}, 0, 1, {}, 3);
        QCOMPARE(list.titles(), QStringList({"b", "silent", "a", "told", "hidden", "again"}));
    }

    void aModelThatGrowsWhileItTellsIsReadOnce()
    {
        const auto model = songs({});
        bool grown = false;
        // Connected before the list: its signal overtakes the one that is being told.
        connect(model.get(), &QAbstractItemModel::rowsInserted, this, [&] {
            if (!std::exchange(grown, true))
                model->appendRow(song("second"));
        });
        PlaylistFixture list(model.get());
        model->appendRow(song("first"));
        QCOMPARE(list.titles(), QStringList({"first", "second"}));
        model->removeRow(0);
        QCOMPARE(list.titles(), QStringList("second"));
    }

    void rowsBelowOtherRowsAreNoItems()
    {
        const auto model = songs({"a", "b"});
        PlaylistFixture list(model.get());
        model->item(0, 0)->appendRow(song("child"));
        model->item(0, 0)->child(0, 1)->setText("changed");
        model->item(0, 0)->removeRow(0);
        QCOMPARE(list.titles(), QStringList({"a", "b"}));
        QCOMPARE(list.takeChanges(), Changes());
    }

    void itemsOutliveTheirModel()
    {
        auto model = songs({"b:1", "a:2", "c:3"});
        PlaylistFixture list(model.get());
        list->removeItem(2);
        list->shuffle();
        list.markAll();
        const QStringList uuids = list.uuids();
        list.takeChanges();
        model.reset();
        QVERIFY(!list->underlyingModel());
        QCOMPARE(list.uuids(), uuids);
        QCOMPARE(list.takeChanges(), Changes());
        list.checkAgreement();
        list.checkMarks();
        list->sort("title", 0);
        QCOMPARE(list.titles(), QStringList({"a", "b"}));
        QCOMPARE(list->mediaInfoAt(0).artist(), "artist of a");
        QCOMPARE(list.cell(0, 0), "id-a");
        QCOMPARE(list.headers(), QStringList({"id", "title", "url", "duration", "artist"}));
        QCOMPARE(list.cell(1, 4), "artist of b");
        list->removeItem(0);
        QCOMPARE(list.titles(), QStringList("b"));
        list->shuffle();
        list->unshuffle();
        list->clear();
        QCOMPARE(list->count(), 0);
    }

    void aNewModelReplacesAllItems()
    {
        const auto first = songs({"a", "b"});
        const auto second = songs({"c"});
        PlaylistFixture list(first.get());
        const QStringList before = list.uuids();
        list->shuffle();
        list.takeChanges();
        list->setUnderlyingModel(second.get());
        QCOMPARE(list.takeChanges(), Changes({{0, 2, 1}}));
        QCOMPARE(list.titles(), QStringList("c"));
        QVERIFY(!list->isShuffled());
        QCOMPARE(list->indexOf(before.first()), -1);
        first->appendRow(song("late"));
        first->item(0, 1)->setText("changed");
        QCOMPARE(list.titles(), QStringList("c"));
        second->appendRow(song("d"));
        QCOMPARE(list.titles(), QStringList({"c", "d"}));
    }

    void theSameModelAgainBringsEverythingBack()
    {
        const auto model = songs({"a", "b"});
        PlaylistFixture list(model.get());
        list->removeItem(0);
        list.takeChanges();
        list->setUnderlyingModel(model.get());
        QCOMPARE(list.takeChanges(), Changes({{0, 1, 2}}));
        model->appendRow(song("c"));
        QCOMPARE(list.titles(), QStringList({"a", "b", "c"}));
        QCOMPARE(list.takeChanges(), Changes({{2, 0, 1}}));
    }

    void noModelEmptiesTheList()
    {
        const auto model = songs({"a"});
        PlaylistFixture list(model.get());
        list->setUnderlyingModel(nullptr);
        QCOMPARE(list->count(), 0);
        QVERIFY(!list->underlyingModel());
        QCOMPARE(list.takeChanges(), Changes({{0, 1, 0}}));
        list->setUnderlyingModel(nullptr);
        QCOMPARE(list.takeChanges(), Changes());
        model->appendRow(song("b"));
        QCOMPARE(list->count(), 0);
    }

    void aModelOwnedByThePlaylistGoesWithIt()
    {
        PlaylistFixture list;
        QPointer<QStandardItemModel> model = new QStandardItemModel(&*list);
        list->setUnderlyingModel(model);
        model->appendRow(song("a"));
        QCOMPARE(list->count(), 1);
        QPointer<QAbstractItemModel> view = list->itemModel();
        list.playlist.reset();
        QVERIFY(model.isNull());
        QVERIFY(view.isNull());
    }

    void aModelThatOutlivesThePlaylistIsLeftAlone()
    {
        const auto model = songs({"a"});
        {
            PlaylistFixture list(model.get());
        }
        model->appendRow(song("b"));
        model->setHeaderData(1, Qt::Horizontal, "changed");
        QCOMPARE(model->rowCount(), 2);
    }

    void theModelMayBeReplacedWhileAChangeIsTold()
    {
        const auto first = songs({"a", "b", "c", "d"});
        const auto second = songs({"x", "y", "z"});
        PlaylistFixture list(first.get());
        list->shuffle();
        connect(&*list, &KelvoPlaylist::contentsChanged, this, [&](uint, uint removed, uint added) {
            if (removed > 0 && added == 0 && list->underlyingModel() == first.get())
                list->setUnderlyingModel(second.get());
        });
        first->removeRows(0, 3);
        QCOMPARE(list.titles(), QStringList({"x", "y", "z"}));
    }

    void severalPlaylistsShareOneModel()
    {
        const auto model = songs({"b", "a"});
        PlaylistFixture one(model.get());
        PlaylistFixture two(model.get());
        one->sort("title", 0);
        two->removeItem(0);
        model->appendRow(song("c"));
        QCOMPARE(one.titles(), QStringList({"a", "b", "c"}));
        QCOMPARE(two.titles(), QStringList({"a", "c"}));
        QVERIFY(sortedCopy(one.uuids() + two.uuids()).removeDuplicates() == 0);
    }
};

KELVO_TEST(PlaylistFollowingTest)
#include "PlaylistFollowingTest.moc"
