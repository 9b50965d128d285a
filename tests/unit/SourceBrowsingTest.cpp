// SPDX-License-Identifier: MIT
#include "SourceControllerCase.h"
#include "TestGroup.h"

#include <QStandardItemModel>

// The Browse tab.
class SourceBrowsingTest : public SourceControllerCase
{
    Q_OBJECT
private Q_SLOTS:
    void browsingShowsNothing()
    {
        LogRecorder log;
        click("m_browse_executeButton");
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourceController::executeBrowse", "KelvoBrowseController::isOngoing false",
                "KelvoMainWindow::selectedBrowseResultItemIndex", "KelvoMainWindow::browseResultCount",
                "KelvoMainWindow::setBrowseButtonsEnabled",
                "QAbstractItemModel* KelvoBrowseController::browse(QList<KelvoSource*>)",
                "KelvoMainWindow::showBrowseResults", "KelvoMainWindow::updateBrowseResultLabel",
                "KelvoMainWindow::setBrowseButtonsEnabled"}));
        QCOMPARE(find<QListView>("m_browse_resultsView")->model(), nullptr);
        QCOMPARE(find<QLabel>("m_browse_resultsLabel")->text(), QStringLiteral("0 results"));
        QVERIFY(find<QToolButton>("m_browse_executeButton")->isEnabled());
        QVERIFY(find<QToolButton>("m_browse_clearButton")->isEnabled());
    }

    void browsingWithResultsNeedsASelection()
    {
        QStandardItemModel results(2, 2);
        m_console->window()->showBrowseResults(&results);
        click("m_browse_executeButton");
        auto *view = find<QListView>("m_browse_resultsView");
        QCOMPARE(view->model(), &results);
        view->setCurrentIndex(results.index(1, 1));
        click("m_browse_executeButton");
        QCOMPARE(view->model(), nullptr);
    }

    void clearEmptiesTheBrowseTab()
    {
        QStandardItemModel results(2, 2);
        m_console->window()->showBrowseResults(&results);
        LogRecorder log;
        click("m_browse_clearButton");
        QVERIFY(log.containsInOrder({"KelvoSourceController::clearBrowseResults",
            "void KelvoBrowseController::clearBrowseResults()", "KelvoMainWindow::clearBrowseResults"}));
        QCOMPARE(find<QListView>("m_browse_resultsView")->model(), nullptr);
        QCOMPARE(find<QLabel>("m_browse_resultsLabel")->text(), QStringLiteral("0 results"));
    }

    void everyBrowseRowIsPlayable()
    {
        QVERIFY(m_controller->playableItemsInBrowseModel(0));
        QVERIFY(m_controller->playableItemsInBrowseModel(-1));
    }

    void activatedRowClearsTheMetadata()
    {
        m_console->window()->addBrowseMetadata("title", "x");
        LogRecorder log;
        m_controller->browseResultItemActivated(QModelIndex());
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourceController::browseResultItemActivated",
                "KelvoMainWindow::clearBrowseMetadata"}));
        QCOMPARE(find<QTextEdit>("m_browse_metadataField")->toPlainText(), QString());
    }

    void activationsDuringAnActivationAreHandledAfterIt()
    {
        const QStandardItemModel rows(3, 2);
        int nested = 0;
        auto *field = find<QTextEdit>("m_browse_metadataField");
        m_console->window()->addBrowseMetadata("title", "x");
        const auto again = [&] {
            if (nested++ > 0)
                return;
            m_controller->browseResultItemActivated(rows.index(1, 1));
            m_controller->browseResultItemActivated(rows.index(2, 1)); // replaces the row before
        };
        connect(field, &QTextEdit::textChanged, this, again);
        LogRecorder log;
        m_controller->browseResultItemActivated(rows.index(0, 1));
        field->disconnect(this);
        QCOMPARE(log.lines(),
            QStringList({"KelvoSourceController::browseResultItemActivated",
                "KelvoMainWindow::clearBrowseMetadata", "KelvoSourceController::browseResultItemActivated",
                "KelvoSourceController::browseResultItemActivated",
                "\nKelvoSourceController::browseResultItemActivated loop",
                "KelvoMainWindow::clearBrowseMetadata"}));
        log.clear();
        m_controller->browseResultItemActivated(rows.index(0, 1)); // not busy any more
        QCOMPARE(log.count("KelvoMainWindow::clearBrowseMetadata"), 1);
    }

    void thumbnailsGoToTheWindow()
    {
        LogRecorder log;
        m_controller->thumbnailReady("no picture");
        QVERIFY(log.containsInOrder(
            {"KelvoSourceController::thumbnailReady", "KelvoMainWindow::showBrowseResultThumbnail, array"}));
        QCOMPARE(find<QLabel>("m_browse_pictureField")->text(), QStringLiteral("error showing thumbnail"));
    }
};

KELVO_WIDGET_TEST(SourceBrowsingTest)
#include "SourceBrowsingTest.moc"
