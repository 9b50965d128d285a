// SPDX-License-Identifier: MIT
#include "ForeignItemModel.h"
#include "KelvoPlaylist.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

namespace {
SharedItem sharedItem(int number, const QString &title = {})
{
    return {QStringLiteral("id%1").arg(number),
        title.isEmpty() ? QStringLiteral("title %1").arg(number) : title,
        QStringLiteral("file:///%1").arg(number), QStringLiteral("audio/mpeg"), number};
}

SharedItems sharedItems(const QList<int> &numbers)
{
    SharedItems items;
    for (const int number : numbers)
        items.append(sharedItem(number));
    return items;
}

QStringList idsOf(const ForeignItemModel &model)
{
    QStringList ids;
    for (int row = 0; row < model.rowCount(); ++row)
        ids.append(model.index(row, KelvoPlaylist::IdColumn).data().toString());
    return ids;
}

QStringList idsOf(const SharedItems &items)
{
    QStringList ids;
    for (const SharedItem &item : items)
        ids.append(item.id);
    return ids;
}
} // namespace

/// A list that is replaced: what stays keeps its indexes, and so a view its selection.
class ForeignItemModelTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void replacements_data()
    {
        QTest::addColumn<QList<int>>("before");
        QTest::addColumn<QList<int>>("after");
        QTest::addColumn<QList<int>>("signalled"); // layouts, removals, insertions
        using L = QList<int>;
        QTest::newRow("nothing") << L({1, 2, 3}) << L({1, 2, 3}) << L({0, 0, 0});
        QTest::newRow("emptied") << L({1, 2, 3}) << L() << L({0, 1, 0});
        QTest::newRow("filled") << L() << L({1, 2, 3}) << L({0, 0, 1});
        QTest::newRow("one gone") << L({1, 2, 3}) << L({1, 3}) << L({0, 1, 0});
        QTest::newRow("one more") << L({1, 3}) << L({1, 2, 3}) << L({0, 0, 1});
        QTest::newRow("others") << L({1, 2}) << L({3, 4, 5}) << L({0, 1, 1});
        QTest::newRow("reversed") << L({1, 2, 3, 4}) << L({4, 3, 2, 1}) << L({1, 0, 0});
        QTest::newRow("two changed places") << L({1, 2, 3, 4}) << L({1, 3, 2, 4}) << L({1, 0, 0});
        QTest::newRow("reversed, one gone") << L({1, 2, 3, 4}) << L({4, 2, 1}) << L({1, 1, 0});
        QTest::newRow("reversed, one more") << L({1, 2, 3}) << L({3, 9, 2, 1}) << L({2, 0, 1});
        QTest::newRow("gone here and there") << L({1, 2, 3, 4, 5}) << L({2, 4}) << L({0, 3, 0});
        QTest::newRow("new here and there") << L({2, 4}) << L({1, 2, 3, 4, 5}) << L({1, 0, 1});
    }

    void replacements()
    {
        QFETCH(QList<int>, before);
        QFETCH(QList<int>, after);
        QFETCH(QList<int>, signalled);
        ForeignItemModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.append(sharedItems(before));
        const QSignalSpy layouts(&model, &QAbstractItemModel::layoutChanged);
        const QSignalSpy removals(&model, &QAbstractItemModel::rowsRemoved);
        const QSignalSpy insertions(&model, &QAbstractItemModel::rowsInserted);
        const QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
        model.replace(sharedItems(after));
        QCOMPARE(model.items(), sharedItems(after));
        QCOMPARE(QList<int>({int(layouts.size()), int(removals.size()), int(insertions.size())}), signalled);
        QCOMPARE(changes.size(), 0);
    }

    void manyPiecesGoAtOnce()
    {
        ForeignItemModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QList<int> all;
        QList<int> half;
        for (int number = 0; number < 1000; ++number) {
            all.append(number);
            if (number % 2 == 0)
                half.append(number);
        }
        model.append(sharedItems(all));
        const QPersistentModelIndex kept = model.index(600, 1);
        const QPersistentModelIndex gone = model.index(601, 1);
        const QSignalSpy removals(&model, &QAbstractItemModel::rowsRemoved);
        model.replace(sharedItems(half));
        QCOMPARE(model.items(), sharedItems(half));
        QCOMPARE(removals.size(), 1);
        QCOMPARE(kept.row(), 300);
        QVERIFY(!gone.isValid());
    }

    void itemsThatStayKeepTheirIndexes()
    {
        QRandomGenerator random(7);
        ForeignItemModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        for (int round = 0; round < 300; ++round) {
            QHash<QString, QPersistentModelIndex> indexes;
            const QStringList old = idsOf(model);
            for (int row = 0; row < old.size(); ++row)
                indexes.insert(old.at(row), model.index(row, int(random.bounded(4))));
            QList<int> numbers;
            for (int number = 0; number < 20; ++number) {
                if (random.bounded(3) > 0)
                    numbers.append(number);
            }
            if (random.bounded(4) > 0)
                std::shuffle(numbers.begin(), numbers.end(), random);
            const SharedItems wanted = sharedItems(numbers);
            model.replace(wanted);
            const QStringList now = idsOf(model);
            QCOMPARE(now, idsOf(wanted));
            for (auto index = indexes.cbegin(); index != indexes.cend(); ++index)
                QCOMPARE(index->row(), int(now.indexOf(index.key())));
        }
    }

    void itemWithAnotherTitleStays()
    {
        ForeignItemModel model;
        model.append(sharedItems({1, 2, 3, 4}));
        const QPersistentModelIndex second = model.index(1, 1);
        const QSignalSpy removals(&model, &QAbstractItemModel::rowsRemoved);
        const QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
        SharedItems items = sharedItems({1, 2, 3, 4});
        items[1].title = "another";
        const ForeignItemModel::Change change = model.replace(items);
        QCOMPARE(QList<qsizetype>({change.from, change.removed, change.added}), QList<qsizetype>({1, 1, 1}));
        QCOMPARE(second.data().toString(), QStringLiteral("another"));
        QCOMPARE(removals.size(), 0);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes.first().at(0).toModelIndex(), model.index(1, 0));
        QCOMPARE(changes.first().at(1).toModelIndex(), model.index(1, 3));
    }
};

KELVO_TEST(ForeignItemModelTest)
#include "ForeignItemModelTest.moc"
