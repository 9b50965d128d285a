// SPDX-License-Identifier: MIT
#include "LogRecorder.h"
#include "QSparqlQueryModel.h"
#include "QueryControllerCase.h"
#include "TestGroup.h"

#include <QLabel>
#include <QMetaMethod>

namespace {
const char *const fetchRestLine = "void KelvoQueryController::fetchRest() not valid KelvoTrackerModel";
}

/// States, buttons, settings and errors of the query controller.
class QueryControllerTest : public QueryControllerCase
{
    Q_OBJECT
private Q_SLOTS:
    void startsIdleWithoutResult()
    {
        QCOMPARE(m_controller->queryState(), 0);
        QCOMPARE(m_controller->queryModel(), nullptr);
        QVERIFY(!m_controller->latestQueryExtendable());
    }

    void buttonsAreDisabledUntilTheFactoryIsReady()
    {
        LogRecorder log;
        const KelvoQueryController second(nullptr, m_window);
        QCOMPARE(log.count("void KelvoMainWindow::setQueryButtonsEnabled(bool)"), 1);
        QVERIFY(!button("m_query_executeButton")->isEnabled());
        QVERIFY(!button("m_query_extendButton")->isEnabled());
        QTRY_VERIFY(buttonsEnabled());
        QCOMPARE(log.count("void KelvoMainWindow::setQueryButtonsEnabled(bool)"), 2);
    }

    void unknownIndexChangesNothingButTheKind_data()
    {
        QTest::addColumn<int>("index");
        QTest::newRow("below") << -1;
        QTest::newRow("above") << 11;
    }

    void unknownIndexChangesNothingButTheKind()
    {
        QFETCH(int, index);
        const QAbstractItemModel *model = query(5);
        QVERIFY(waitUntilIdle());
        LogRecorder log;
        QCOMPARE(query(index), nullptr);
        QCOMPARE(log.lines(),
            QStringList({QStringLiteral("KelvoQueryController::query %1").arg(index), "Unknown index."}));
        QCOMPARE(m_controller->queryModel(), model);
        QCOMPARE(m_controller->queryState(), 0);
        QCOMPARE(caption(), QStringLiteral("Execute\nquery"));
        QVERIFY(!m_controller->latestQueryExtendable());
        QCOMPARE(extend(0), nullptr); // no kind any more
    }

    void statesAndButtonsOfALongResult()
    {
        m_controller->setNewQueryProperties(2, 2000);
        QAbstractItemModel *model = query(0);
        QCOMPARE(m_controller->queryState(), 1);
        QCOMPARE(caption(), QStringLiteral("Cancel"));
        QVERIFY(!button("m_query_extendButton")->isEnabled());
        QTRY_COMPARE(m_controller->queryState(), 2);
        QCOMPARE(caption(), QStringLiteral("Fetch\nrest"));
        QVERIFY(!button("m_query_extendButton")->isEnabled());
        QCOMPARE(model->rowCount(), 2);
        LogRecorder log;
        m_controller->fetchRest();
        QVERIFY(
            log.lines().first().startsWith("void KelvoQueryController::fetchRest() KelvoTrackerModel(0x"));
        QCOMPARE(m_controller->queryState(), 2);
        QVERIFY(waitUntilIdle());
        QCOMPARE(model->rowCount(), SongCount);
        QCOMPARE(caption(), QStringLiteral("Execute\nquery"));
        QVERIFY(button("m_query_extendButton")->isEnabled());
        // Only the first rows count as first results.
        QCOMPARE(log.count("KelvoQueryController::handleFirstResults"), 0);
    }

    void firstResultsAreHandledOncePerQuery()
    {
        m_controller->setNewQueryProperties(1, 1);
        LogRecorder log;
        const QAbstractItemModel *model = query(0);
        QTRY_COMPARE(m_controller->queryState(), 2);
        m_controller->fetchRest();
        QVERIFY(waitUntilIdle());
        QCOMPARE(model->rowCount(), SongCount);
        QCOMPARE(log.count("KelvoQueryController::handleFirstResults"), 1);
        QCOMPARE(log.count("KelvoQueryController::modelUpdatedSlot"), 1);
    }

    void aResultWithoutRowsNeverOffersToFetchTheRest()
    {
        query(5);
        QVERIFY(waitUntilIdle());
        LogRecorder log;
        const QAbstractItemModel *model = extend(99999); // no such artist
        QCOMPARE(m_controller->queryState(), 1);
        QTRY_COMPARE(log.count("KelvoQueryController::modelUpdatedSlot"), 1);
        QCOMPARE(m_controller->queryState(), 0);
        QCOMPARE(model->rowCount(), 0);
        QCOMPARE(log.count("KelvoMainWindow::showFetchRestButton"), 0);
        QCOMPARE(log.count("KelvoQueryController::handleFirstResults"), 0);
    }

    void aNewQueryLeavesTheEarlierResultAlive()
    {
        QPointer<QAbstractItemModel> first = query(0);
        QVERIFY(waitUntilIdle());
        QVERIFY(query(4) != first);
        QVERIFY(first);
        QCOMPARE(first->rowCount(), SongCount);
    }

    // It lives on, may be in a playlist: what it tells is no news of the next query.
    void anEarlierResultDoesNotReachTheNextQuery()
    {
        m_controller->setNewQueryProperties(2, 2000);
        LogRecorder log;
        auto *first = qobject_cast<KelvoTrackerModel *>(query(0));
        query(4);
        QVERIFY(!query(99)); // leaves the one before it connected
        QVERIFY(QMetaObject::invokeMethod(first, "error", Q_ARG(QString, QStringLiteral("Too late"))));
        QCOMPARE(m_controller->queryState(), 1);
        QTRY_COMPARE(first->rowCount(), 2);
        QTRY_COMPARE(m_controller->queryState(), 2);
        QCOMPARE(log.count("KelvoQueryController::handleFirstResults"), 1);
        QSignalSpy completed(first, &KelvoTrackerModel::completed);
        first->fetchRest();
        QVERIFY(completed.wait());
        QCOMPARE(m_controller->queryState(), 2);
    }

    void fetchRestOfVideosIsCritical()
    {
        query(10);
        LogRecorder log;
        m_controller->fetchRest();
        QCOMPARE(log.warnings(), QStringList(fetchRestLine));
        QVERIFY(waitUntilIdle());
    }

    void fetchRestWithoutAResultIsCritical()
    {
        LogRecorder log;
        m_controller->fetchRest();
        QCOMPARE(
            log.lines(), QStringList({"void KelvoQueryController::fetchRest() QObject(0x0)", fetchRestLine}));
        QCOMPARE(m_controller->queryState(), 0);
    }

    void errorsShowInTheWindow()
    {
        query(0);
        QVERIFY(QMetaObject::invokeMethod(
            m_controller->queryModel(), "error", Q_ARG(QString, QStringLiteral("The store is gone"))));
        QCOMPARE(
            m_window->findChild<QLabel *>("m_query_errorLabel")->text(), QStringLiteral("The store is gone"));
        QCOMPARE(caption(), QStringLiteral("Execute\nquery"));
        QCOMPARE(m_controller->queryState(), 0);
    }

    void aStoreThatCannotBeOpenedIsExplained()
    {
        const QByteArray data = qgetenv("XDG_DATA_HOME");
        m_controller.reset();
        closeStore();
        qputenv("XDG_DATA_HOME", "/proc/self/nothing");
        m_controller = std::make_unique<KelvoQueryController>(nullptr, m_window);
        const auto *label = m_window->findChild<QLabel *>("m_query_errorLabel");
        QTRY_VERIFY_WITH_TIMEOUT(!label->text().isEmpty(), Patience);
        QCOMPARE(label->text(), store().errorText());
        QVERIFY2(label->text().contains("/proc/self/nothing"), qPrintable(label->text()));
        QVERIFY(!buttonsEnabled());

        qputenv("XDG_DATA_HOME", data);
        m_controller->setNewQueryProperties(200, 1000);
        QTRY_VERIFY(buttonsEnabled());
        QCOMPARE(label->text(), QString()); // what was wrong is right again
        QVERIFY(openStore());
    }

    void cancellingOnlyLogs()
    {
        const QAbstractItemModel *model = query(0);
        LogRecorder log;
        m_controller->cancelOngoingQuery();
        QCOMPARE(log.lines(), QStringList("KelvoQueryController::cancelOngoingQuery"));
        QCOMPARE(m_controller->queryState(), 1);
        QVERIFY(waitUntilIdle());
        QCOMPARE(model->rowCount(), SongCount);
    }

    void searchOnlyLogs()
    {
        LogRecorder log;
        QCOMPARE(m_controller->search({}, "term", 3), nullptr);
        QCOMPARE(log.lines(), QStringList("KelvoQueryController::search"));
    }

    void theStateIsLogged()
    {
        LogRecorder log;
        m_controller->queryState();
        QCOMPARE(log.lines(), QStringList("KelvoQueryController::queryState 0"));
    }

    void firstBlockAloneKeepsTheFactory()
    {
        LogRecorder log;
        m_controller->setNewQueryProperties(3, 2000);
        QCOMPARE(
            log.lines(), QStringList("void KelvoQueryController::setNewQueryProperties(int, int) 3 2000"));
        QVERIFY(buttonsEnabled());
        const QAbstractItemModel *model = query(0);
        QTRY_COMPARE(m_controller->queryState(), 2);
        QCOMPARE(model->rowCount(), 3);
        m_controller->fetchRest();
        QVERIFY(waitUntilIdle());
        m_controller->setNewQueryProperties(4, 2000); // the result that is there stays as it is
        QCOMPARE(model->rowCount(), SongCount);
    }

    void streamingBlockMakesANewFactory_data()
    {
        QTest::addColumn<int>("size");
        QTest::newRow("1") << 1;
        QTest::newRow("no limit") << 0;
        QTest::newRow("most") << 99999;
    }

    void streamingBlockMakesANewFactory()
    {
        QFETCH(int, size);
        const QAbstractItemModel *before = query(0);
        QVERIFY(waitUntilIdle());
        QCOMPARE(value(*before, Nameless, "albumName").toString(), QStringLiteral("Unknown KTG Album"));
        QCOMPARE(value(*before, Nameless, "artistName").toString(), QStringLiteral("Unknown KTG Artist"));

        LogRecorder log;
        m_controller->setNewQueryProperties(200, size);
        QCOMPARE(log.lines().mid(1), QStringList("void KelvoMainWindow::setQueryButtonsEnabled(bool)"));
        QVERIFY(!button("m_query_executeButton")->isEnabled());
        QTRY_VERIFY(buttonsEnabled());
        const QAbstractItemModel *after = query(0);
        QVERIFY(waitUntilIdle());
        QCOMPARE(value(*after, Nameless, "albumName").toString(), QStringLiteral("Tuntematon Albumi"));
        QCOMPARE(value(*after, Nameless, "artistName").toString(), QStringLiteral("Tuntematon Artisti"));
        // The same size again changes nothing.
        m_controller->setNewQueryProperties(200, size);
        QVERIFY(buttonsEnabled());
    }

    void subjectHooks()
    {
        LogRecorder log;
        m_controller->subjectsAdded({"a", "b"});
        m_controller->subjectsRemoved({});
        m_controller->subjectsChanged({"c"});
        m_controller->refreshModelSlot();
        m_controller->rowsUpdated(1, 2, QModelIndex());
        QCOMPARE(log.lines(),
            QStringList({"Subject(s) added: (a, b)", "Subject(s) removed: ()", "Subject(s) changed: (c)",
                "KelvoQueryController::refreshModelSlot",
                "void KelvoQueryController::rowsUpdated(int, int, const QModelIndex&)"}));
        QCOMPARE(log.warnings(), QStringList("Subject(s) changed: (c)"));
    }

    void slotsInTheirOrder()
    {
        const QMetaObject *meta = m_controller->metaObject();
        QStringList names;
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
            names.append(QString::fromLatin1(meta->method(i).methodSignature()));
        QCOMPARE(names,
            QStringList(
                {"setNewQueryProperties(int,int)", "modelUpdatedSlot()", "rowsUpdated(int,int,QModelIndex)",
                    "queryErrorSlot(QString)", "subjectsAdded(QStringList)", "subjectsRemoved(QStringList)",
                    "subjectsChanged(QStringList)", "refreshModelSlot()", "handleFirstResults()"}));
    }

    void endsWhileItsQueryRuns()
    {
        query(0);
        LogRecorder log;
        m_controller.reset();
        QCOMPARE(log.lines(), QStringList("KelvoQueryController::~KelvoQueryController"));
        QVERIFY(m_models.first()); // left alone
    }

    void queryOnAStoreThatCannotBeOpenedShowsAnError()
    {
        m_controller.reset();
        closeStore();
        const QByteArray dataFolder = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", "/dev/null/nowhere");
        LogRecorder log;
        m_controller = std::make_unique<KelvoQueryController>(nullptr, m_window);
        QTRY_COMPARE(log.count("void KelvoMainWindow::setQueryButtonsEnabled(bool)"), 2);
        const bool enabled = button("m_query_executeButton")->isEnabled();
        query(0);
        const bool ended = waitUntilIdle();
        m_controller.reset();
        qputenv("XDG_DATA_HOME", dataFolder);
        QVERIFY(openStore());
        QVERIFY(!enabled);
        QVERIFY(ended);
        QVERIFY(!m_window->findChild<QLabel *>("m_query_errorLabel")->text().isEmpty());
    }

    void rowsAfterTheWindowsEndGoNowhere()
    {
        QAbstractItemModel *model = query(0);
        delete m_window;
        QTRY_COMPARE(model->rowCount(), SongCount);
        QCOMPARE(m_controller->queryState(), 1);
    }
};
KELVO_WIDGET_TEST(QueryControllerTest)
#include "QueryControllerTest.moc"
