// SPDX-License-Identifier: MIT
#include "RowCopier.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

#include <functional>
#include <memory>

namespace {
constexpr int many = 5 * RowCopier::FirstRows;

QString textOf(const QStandardItemModel &model, int row, int column)
{
    return model.index(row, column).data().toString();
}
} // namespace

class RowCopierTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_source = std::make_unique<QStandardItemModel>(many, 2);
        for (int row = 0; row < many; ++row) {
            m_source->setData(m_source->index(row, 0), row);
            m_source->setData(m_source->index(row, 1), QStringLiteral("Song %1").arg(row));
        }
        m_target = std::make_unique<QStandardItemModel>();
    }

    void copiesFewRowsAtOnce()
    {
        RowCopier copier;
        copier.copy(*m_source, 10, 10 + RowCopier::FirstRows - 1, m_target.get());
        QCOMPARE(m_target->rowCount(), RowCopier::FirstRows);
        QCOMPARE(textOf(*m_target, 0, 0), QStringLiteral("10"));
        QCOMPARE(textOf(*m_target, 7, 1), QStringLiteral("Song 17"));
    }

    void copiesManyRowsInPieces()
    {
        RowCopier copier;
        QSignalSpy begun(&copier, &RowCopier::aboutToAppend);
        QSignalSpy ended(&copier, &RowCopier::appended);
        copier.copy(*m_source, 0, many - 1, m_target.get());
        QCOMPARE(m_target->rowCount(), RowCopier::FirstRows);
        QTRY_COMPARE(m_target->rowCount(), many);
        checkWhole();
        QVERIFY(begun.size() > 1);
        QCOMPARE(begun.size(), ended.size());
    }

    void copiesEmptyTextsForRowsThatAreNotThere()
    {
        RowCopier copier;
        copier.copy(*m_source, -1, 0, m_target.get());
        QCOMPARE(m_target->rowCount(), 2);
        QCOMPARE(textOf(*m_target, 0, 1), QString());
        QCOMPARE(textOf(*m_target, 1, 1), QStringLiteral("Song 0"));
        copier.copy(*m_source, many, many, m_target.get());
        QCOMPARE(textOf(*m_target, 2, 1), QString());
        QCOMPARE(m_target->columnCount(), 2);
    }

    void finishesBeforeTheSourceChanges_data()
    {
        using Change = std::function<void(QStandardItemModel &)>;
        QTest::addColumn<Change>("change");
        QTest::newRow("reset") << Change([](auto &model) { model.clear(); });
        QTest::newRow("row removed") << Change([](auto &model) { model.removeRow(0); });
        QTest::newRow("row inserted") << Change([](auto &model) { model.insertRow(0); });
        QTest::newRow("column removed") << Change([](auto &model) { model.removeColumn(1); });
        QTest::newRow("column inserted") << Change([](auto &model) { model.insertColumn(0); });
        QTest::newRow("sorted") << Change([](auto &model) { model.sort(1, Qt::DescendingOrder); });
    }

    void finishesBeforeTheSourceChanges()
    {
        QFETCH(std::function<void(QStandardItemModel &)>, change);
        RowCopier copier;
        copier.copy(*m_source, 0, many - 1, m_target.get());
        change(*m_source);
        QCOMPARE(m_target->rowCount(), many);
        checkWhole();
    }

    void doesNotHurryWhenRowsComeBehind()
    {
        RowCopier copier;
        copier.copy(*m_source, 0, many - 1, m_target.get());
        m_source->appendRow({new QStandardItem("new"), new QStandardItem("new")});
        QVERIFY(m_target->rowCount() < many);
        QTRY_COMPARE(m_target->rowCount(), many);
        checkWhole();
    }

    void finishesOneCopyBeforeTheNext()
    {
        RowCopier copier;
        copier.copy(*m_source, 0, many - 1, m_target.get());
        copier.copy(*m_source, 3, 3, m_target.get());
        QCOMPARE(m_target->rowCount(), many + 1);
        QCOMPARE(textOf(*m_target, many, 1), QStringLiteral("Song 3"));
    }

    void finishesAtOnceWhenAsked()
    {
        RowCopier copier;
        copier.copy(*m_source, 0, many - 1, m_target.get());
        copier.finish();
        QCOMPARE(m_target->rowCount(), many);
        copier.finish();
        QCOMPARE(m_target->rowCount(), many);
    }

    void endsWithItsTarget()
    {
        RowCopier copier;
        QSignalSpy ended(&copier, &RowCopier::appended);
        copier.copy(*m_source, 0, many - 1, m_target.get());
        m_target.reset();
        LogRecorder log;
        QVERIFY(ended.wait());
        copier.finish();
        QCOMPARE(ended.size(), 2);
        QCOMPARE(log.warnings(), QStringList());
    }

    void saysWhenItsSourceIsGone()
    {
        RowCopier copier;
        QSignalSpy ended(&copier, &RowCopier::appended);
        copier.copy(*m_source, 0, many - 1, m_target.get());
        m_source.reset();
        LogRecorder log;
        QVERIFY(ended.wait());
        QCOMPARE(log.warnings(),
            QStringList(QStringLiteral("%1 rows were not appended: the result they belong to is gone")
                            .arg(many - RowCopier::FirstRows)));
        QCOMPARE(m_target->rowCount(), RowCopier::FirstRows);
    }

    void endsWithItself()
    {
        auto copier = std::make_unique<RowCopier>();
        copier->copy(*m_source, 0, many - 1, m_target.get());
        copier.reset();
        QCoreApplication::processEvents();
        QCOMPARE(m_target->rowCount(), RowCopier::FirstRows);
    }

private:
    void checkWhole() const
    {
        for (int row = 0; row < many; ++row)
            QCOMPARE(textOf(*m_target, row, 1), QStringLiteral("Song %1").arg(row));
    }

    std::unique_ptr<QStandardItemModel> m_source;
    std::unique_ptr<QStandardItemModel> m_target;
};

KELVO_TEST(RowCopierTest)
#include "RowCopierTest.moc"
