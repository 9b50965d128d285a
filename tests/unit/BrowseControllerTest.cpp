// SPDX-License-Identifier: MIT
#include "KelvoBrowseController.h"
#include "KelvoMainWindow.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "MinimalObjects.h"
#include "TestGroup.h"

#include <QMetaMethod>
#include <QStandardItemModel>
#include <QTest>
#include <QToolButton>

class BrowseControllerTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_window = std::make_unique<KelvoMainWindow>(nullptr, nullptr);
        m_controller = std::make_unique<KelvoBrowseController>(&m_parent, m_window.get());
    }

    void cleanup()
    {
        m_controller.reset();
        m_window.reset();
    }

    void isAChildOfItsOwner() { QCOMPARE(m_controller->parent(), &m_parent); }

    void operationsLogTheirSignatures()
    {
        LogRecorder log;
        const std::unique_ptr<QAbstractItemModel> sources(m_controller->browseSources({}));
        const std::unique_ptr<QAbstractItemModel> model(m_controller->generateSourceModel({}));
        m_controller->browse({});
        m_controller->isContainerItem(0);
        m_controller->browseSelectedItem(QModelIndex());
        m_controller->clearBrowseResults();
        m_controller->cancelOngoingBrowse();
        m_controller->isOngoing();
        QCOMPARE(log.lines(),
            QStringList({"QAbstractItemModel* KelvoBrowseController::browseSources(QList<KelvoSource*>)",
                "QStandardItemModel* KelvoBrowseController::generateSourceModel(QList<KelvoSource*>)",
                "QStandardItemModel* KelvoBrowseController::generateSourceModel(QList<KelvoSource*>)",
                "QAbstractItemModel* KelvoBrowseController::browse(QList<KelvoSource*>)",
                "bool KelvoBrowseController::isContainerItem(int)",
                "QAbstractItemModel* KelvoBrowseController::browseSelectedItem(QModelIndex)",
                "void KelvoBrowseController::clearBrowseResults()",
                "KelvoBrowseController::cancelOngoingBrowse", "KelvoBrowseController::isOngoing false"}));
    }

    void requestsAnswerNothing()
    {
        MinimalSource source("s", "name");
        QCOMPARE(m_controller->browse({&source}), nullptr);
        QCOMPARE(m_controller->browseRootNodeFromSource({&source}, 0), nullptr);
        QCOMPARE(m_controller->browseSelectedItem(QModelIndex()), nullptr);
    }

    void noRowIsAContainer()
    {
        QVERIFY(!m_controller->isContainerItem(0));
        QVERIFY(!m_controller->isContainerItem(-1));
    }

    void aFreshControllerIsIdle()
    {
        LogRecorder log;
        QVERIFY(!m_controller->isOngoing());
        QCOMPARE(log.lines(), QStringList("KelvoBrowseController::isOngoing false"));
    }

    void sourceModelHoldsTheNames()
    {
        MinimalSource first("s1", "one");
        MinimalSource second("s2", "two");
        const std::unique_ptr<QStandardItemModel> model(m_controller->generateSourceModel({&second, &first}));
        QCOMPARE(model->rowCount(), 2);
        QCOMPARE(model->columnCount(), 2);
        QCOMPARE(model->data(model->index(0, 1), Qt::EditRole), QVariant("two"));
        QCOMPARE(model->data(model->index(1, 1), Qt::DisplayRole), QVariant("one"));
        QCOMPARE(model->data(model->index(0, 0), Qt::EditRole), QVariant());
        QVERIFY(!model->QObject::parent());
    }

    void noSourcesMakeAnEmptyModel()
    {
        const std::unique_ptr<QStandardItemModel> model(m_controller->generateSourceModel({}));
        QCOMPARE(model->rowCount(), 0);
        QCOMPARE(model->columnCount(), 2);
    }

    void eachListOfSourcesIsANewModel()
    {
        MinimalSource source("s1", "one");
        const std::unique_ptr<QAbstractItemModel> first(m_controller->browseSources({&source}));
        const std::unique_ptr<QAbstractItemModel> second(m_controller->browseSources({&source}));
        QVERIFY(first && first != second);
        QCOMPARE(first->rowCount(), 1);
        QVERIFY(!m_controller->isOngoing());
    }

    void browsingARootStaysBusyUntilTheModelIsUpdated()
    {
        const auto *button = m_window->findChild<QToolButton *>("m_browse_executeButton");
        LogRecorder log;
        m_controller->browseRootNodeFromSource({}, 0);
        QCOMPARE(log.lines().first(),
            QStringLiteral("QAbstractItemModel* "
                           "KelvoBrowseController::browseRootNodeFromSource(QList<KelvoSource*>, int)"));
        QVERIFY(m_controller->isOngoing());
        QCOMPARE(log.lines().last(), QStringLiteral("KelvoBrowseController::isOngoing true"));
        QCOMPARE(button->text(), QStringLiteral("Cancel"));

        m_controller->cancelOngoingBrowse(); // only logs
        QVERIFY(m_controller->isOngoing());
        log.clear();
        m_controller->clearBrowseResults();
        QCOMPARE(log.lines(),
            QStringList({"void KelvoBrowseController::clearBrowseResults()",
                "KelvoBrowseController::cancelOngoingBrowse"}));

        log.clear();
        QVERIFY(QMetaObject::invokeMethod(m_controller.get(), "modelUpdatedSlot"));
        QCOMPARE(log.lines().first(), QStringLiteral("void KelvoBrowseController::modelUpdatedSlot()"));
        QVERIFY(!m_controller->isOngoing());
        QCOMPARE(button->text(), QStringLiteral("Browse"));
    }

    void hasOneSlotAndNoSignals()
    {
        const QMetaObject *meta = m_controller->metaObject();
        QCOMPARE(meta->methodCount() - meta->methodOffset(), 1);
        QCOMPARE(meta->method(meta->methodOffset()).methodType(), QMetaMethod::Slot);
    }

private:
    QObject m_parent;
    std::unique_ptr<KelvoMainWindow> m_window;
    std::unique_ptr<KelvoBrowseController> m_controller;
};

KELVO_WIDGET_TEST(BrowseControllerTest)
#include "BrowseControllerTest.moc"
