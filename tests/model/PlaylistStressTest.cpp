// SPDX-License-Identifier: MIT
#include "KelvoPlayQueue.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "PlaylistFixture.h"
#include "TestGroup.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

namespace {
/// Applies one random edit to the list or to its model.
class RandomEdits
{
public:
    RandomEdits(quint32 seed, PlaylistFixture &list, QStandardItemModel &model)
        : m_random(seed)
        , m_list(list)
        , m_model(model)
    {
    }

    void apply()
    {
        switch (below(16)) {
        case 0:
            return m_list->sort("title", below(2));
        case 1:
            return m_list->sort("duration", 4 + below(2));
        case 2:
            return m_list->shuffle();
        case 3:
        case 4:
            return m_list->unshuffle();
        case 5:
            return m_list->removeItem(uint(below(m_list->count() + 2)));
        case 6: {
            const int from = below(m_list->count() + 1);
            return m_list->removeItems(uint(from), uint(from + below(4)));
        }
        case 7:
            return below(20) == 0 ? m_list->clear() : void();
        default:
            editModel();
        }
    }

private:
    int below(int bound) { return m_random.bounded(bound); }
    QList<QStandardItem *> newRow()
    {
        return song(QString("%1:%2").arg(QChar('a' + below(26))).arg(below(300)));
    }

    void editModel()
    {
        const int rows = m_model.rowCount();
        switch (below(9)) {
        case 0:
        case 1:
            return m_model.appendRow(newRow());
        case 2:
        case 3:
            return m_model.insertRow(below(rows + 1), newRow());
        case 4: {
            const int first = below(rows + 1);
            m_model.removeRows(first, std::min(below(5), rows - first));
            return;
        }
        case 5:
            return m_model.sort(1 + below(3), below(2) ? Qt::AscendingOrder : Qt::DescendingOrder);
        case 6:
            if (rows > 0)
                m_model.setData(m_model.index(below(rows), below(6)), QString::number(below(1000)));
            return;
        case 7:
            return below(10) == 0 ? m_model.setHorizontalHeaderLabels(
                       {"id", "title", below(2) ? "url" : "uri", "duration", "artist", "year"})
                                  : m_model.appendRow(newRow());
        default:
            m_model.insertRows(below(rows + 1), below(4));
        }
    }

    QRandomGenerator m_random;
    PlaylistFixture &m_list;
    QStandardItemModel &m_model;
};

/// Rows of numbers in a mixed-up order, without memory of its own.
class NumberModel : public QAbstractTableModel
{
public:
    explicit NumberModel(int rows)
        : m_rows(rows)
    {
    }
    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : m_rows; }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : 4; }
    QVariant data(const QModelIndex &index, int role) const override
    {
        if (role != Qt::DisplayRole)
            return {};
        const int number = int(qint64(index.row()) * 7919 % m_rows);
        return index.column() == 1 ? QVariant("title " + QString::number(number)) : QVariant(number);
    }

private:
    int m_rows;
};
} // namespace

class PlaylistStressTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void staysConsistentUnderRandomEdits_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 8; ++seed)
            QTest::addRow("seed %u", seed) << seed;
    }
    void staysConsistentUnderRandomEdits()
    {
        QFETCH(quint32, seed);
        const auto model = songs({"c:3", "a:1", "b:2", "d"});
        PlaylistFixture list(model.get());
        KelvoPlayQueue queue;
        queue.setPlaylist(&*list);
        RandomEdits edits(seed, list, *model);
        for (int step = 0; step < 400; ++step) {
            list.markAll();
            edits.apply();
            list.checkAgreement();
            if (list->count() > 0 && queue.current().isNull())
                QFAIL("a list with items has a current one");
            QCOMPARE(list->indexOf(queue.current().uuid()), queue.index());
            checkRestOfRows(list, *model);
            if (QTest::currentTestFailed())
                QFAIL(qPrintable(QString("at step %1").arg(step)));
        }
    }

    void aHundredThousandItemsWork()
    {
        constexpr int n = 100'000;
        NumberModel model(n);
        KelvoGeneralSourcePlaylist list("id", "name", "source");
        list.setUnderlyingModel(&model);
        QCOMPARE(list.count(), n);
        list.sort("duration", 4);
        for (int i = 0; i < n; i += 997) {
            const KelvoMediaInfo info = list.mediaInfoAt(uint(i));
            QCOMPARE(info.duration(), i);
            QCOMPARE(list.indexOf(info.uuid()), i);
        }
        list.sort("title", 0);
        QCOMPARE(list.mediaInfoAt(n - 1).title(), "title 99999");
        const QString last = list.mediaInfoAt(n - 1).uuid();
        list.shuffle();
        QCOMPARE(list.mediaInfoAt(uint(list.indexOf(last))).title(), "title 99999");
        list.unshuffle();
        QCOMPARE(list.indexOf(last), n - 1);
        list.removeItems(0, n - 11);
        QCOMPARE(list.count(), 10);
        QCOMPARE(list.indexOf(last), 9);
    }

private:
    // Columns that only the model has are read from the row that the item came from.
    static void checkRestOfRows(PlaylistFixture &list, const QStandardItemModel &model)
    {
        QStringList shown, expected;
        for (int i = 0; i < list->count(); ++i)
            shown.append(list.cell(i, 0) + "/" + list.cell(i, 1) + "/" + list.cell(i, 5));
        for (int row = 0; row < model.rowCount(); ++row) {
            QString title = model.index(row, 1).data().toString();
            if (title.isEmpty())
                title = QUrl(model.index(row, 2).data().toString()).fileName();
            if (title.isEmpty())
                title = model.index(row, 2).data().toString();
            expected.append(model.index(row, 0).data().toString() + "/" + title + "/"
                + model.index(row, 5).data().toString());
        }
        for (const QString &row : std::as_const(shown))
            QVERIFY2(expected.removeOne(row), qPrintable(row));
    }
};

KELVO_TEST(PlaylistStressTest)
#include "PlaylistStressTest.moc"
