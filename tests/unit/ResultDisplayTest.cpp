// SPDX-License-Identifier: MIT
#include "ConsoleFixture.h"
#include "KelvoTestCase.h"
#include "LogRecorder.h"
#include "TestGroup.h"

#include <QBuffer>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QListView>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QTest>
#include <QTextDocumentFragment>
#include <QTextEdit>
#include <QToolButton>

namespace {
QByteArray pngOf(const QColor &color)
{
    QImage image(4, 2, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}
} // namespace

/// The display operations of the query and browse tabs, each for itself.
class ResultDisplayTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        KelvoTestCase::init();
        m_window = new KelvoMainWindow(nullptr, nullptr);
    }
    void cleanup() { delete m_window; }

    void labelsBeforeTheFirstResult()
    {
        QCOMPARE(find<QLabel>("m_query_resultsLabel")->text(), QStringLiteral("%n results"));
        QCOMPARE(find<QLabel>("m_browse_resultsLabel")->text(), QStringLiteral("%n results"));
    }

    void operationsLogTheirNames()
    {
        LogRecorder log;
        m_window->selectedQueryResultItemIndex();
        m_window->browseResultCount();
        m_window->updateQueryErrorLabel("broken");
        m_window->updateBrowseErrorLabel("broken too");
        m_window->showBrowseResultThumbnail(QStringLiteral("none"));
        m_window->addBrowseMetadata("k", "v");
        m_window->clearBrowseMetadata();
        m_window->showBrowseButton();
        m_window->showBrowseCancelButton();
        m_window->setBrowseButtonsEnabled(true);
        m_window->setQueryButtonsEnabled(true);
        m_window->showExecuteQueryButton();
        m_window->showQueryCancelButton();
        m_window->showFetchRestButton();
        QCOMPARE(log.lines(),
            QStringList({"KelvoMainWindow::selectedQueryResultItemIndex",
                "KelvoMainWindow::browseResultCount", "KelvoMainWindow::updateQueryErrorLabel \"broken\"",
                "KelvoMainWindow::updateBrowseErrorLabel \"broken too\"",
                "KelvoMainWindow::showBrowseResultThumbnail, text \"none\"",
                "KelvoMainWindow::addBrowseMetadata", "KelvoMainWindow::clearBrowseMetadata",
                "KelvoMainWindow::showBrowseButton", "KelvoMainWindow::showBrowseCancelButton",
                "KelvoMainWindow::setBrowseButtonsEnabled",
                "void KelvoMainWindow::setQueryButtonsEnabled(bool)",
                "KelvoMainWindow::showExecuteQueryButton", "KelvoMainWindow::showQueryCancelButton",
                "KelvoMainWindow::showFetchRestButton"}));
    }

    void errorLabels_data()
    {
        QTest::addColumn<QString>("label");
        QTest::addColumn<int>("tab");
        QTest::newRow("browse") << "m_browse_errorLabel" << 3;
        QTest::newRow("query") << "m_query_errorLabel" << 4;
    }

    void errorLabels()
    {
        QFETCH(QString, label);
        QFETCH(int, tab);
        auto *shown = find<QLabel>(label.toLatin1().constData());
        const auto update = [&](const QString &text) {
            tab == 3 ? m_window->updateBrowseErrorLabel(text) : m_window->updateQueryErrorLabel(text);
        };
        find<QTabWidget>("m_tabs")->setCurrentIndex(tab);
        m_window->resize(800, 480);
        m_window->show();
        const QString text
            = "The store was damaged & is kept as <b>/home/" + QString(80, 'x') + "/tracker.damaged</b>";
        update(text);
        QCOMPARE(shown->text(), text);
        QCOMPARE(shown->accessibleDescription(), text);
        QCOMPARE(QTextDocumentFragment::fromHtml(shown->toolTip()).toPlainText(), text);
        const QImage whole = shown->grab().toImage();
        const int width = shown->contentsRect().width();
        const QString elided = shown->fontMetrics().elidedText(text, Qt::ElideMiddle, width);
        QVERIFY(elided != text && elided.endsWith("damaged</b>"));
        update(elided);
        QCOMPARE(shown->grab().toImage(), whole);
        // What has room is painted as any label paints it.
        update("The store is gone");
        QLabel plain("The store is gone", shown->parentWidget());
        plain.setFont(shown->font());
        plain.resize(shown->size());
        QCOMPARE(shown->grab().toImage(), plain.grab().toImage());
        update({});
        QCOMPARE(shown->toolTip(), QString());
        QCOMPARE(shown->accessibleDescription(), QString());
    }

    void queryResultsAreShownAndAnnounced()
    {
        QStandardItemModel model(3, 2);
        QSignalSpy available(m_window, SIGNAL(queryResultsAvailable()));
        m_window->showQueryResults(&model);
        QCOMPARE(available.count(), 1);
        QCOMPARE(find<QListView>("m_query_resultsView")->model(), &model);
        QCOMPARE(find<QListView>("m_query_resultsView")->modelColumn(), 1);
        QVERIFY(find<QListView>("m_query_resultsView")->selectionModel()->selection().isEmpty());
        QCOMPARE(find<QLabel>("m_query_resultsLabel")->text(), QStringLiteral("3 results"));
    }

    void nullQueryModelIsIgnored()
    {
        QStandardItemModel model(3, 2);
        m_window->showQueryResults(&model);
        QSignalSpy available(m_window, SIGNAL(queryResultsAvailable()));
        LogRecorder log;
        m_window->showQueryResults(nullptr);
        QCOMPARE(log.lines(), QStringList("KelvoMainWindow::showQueryResults"));
        QCOMPARE(available.count(), 0);
        QCOMPARE(find<QListView>("m_query_resultsView")->model(), &model);
    }

    void queryCountFollowsInsertionsAndRemovals()
    {
        QStandardItemModel model(1, 2);
        m_window->showQueryResults(&model);
        model.insertRows(0, 4);
        QCOMPARE(find<QLabel>("m_query_resultsLabel")->text(), QStringLiteral("5 results"));
        model.removeRows(0, 3);
        QCOMPARE(find<QLabel>("m_query_resultsLabel")->text(), QStringLiteral("2 results"));
    }

    void browseCountFollowsInsertionsOnly()
    {
        QStandardItemModel model(1, 2);
        m_window->showBrowseResults(&model);
        model.insertRows(0, 4);
        QCOMPARE(find<QLabel>("m_browse_resultsLabel")->text(), QStringLiteral("5 results"));
        model.removeRows(0, 3);
        QCOMPARE(find<QLabel>("m_browse_resultsLabel")->text(), QStringLiteral("5 results"));
        QCOMPARE(m_window->browseResultCount(), 2);
    }

    void sameModelTwiceUpdatesTheLabelTwice()
    {
        QStandardItemModel model(1, 2);
        m_window->showQueryResults(&model);
        m_window->showQueryResults(&model);
        LogRecorder log;
        model.insertRows(0, 1);
        QCOMPARE(log.count("KelvoMainWindow::updateQueryResultLabel"), 2);
    }

    // Also when it is the same result again, which a view would otherwise take for no change.
    void aNewResultHasNoSelection()
    {
        QStandardItemModel model(3, 2);
        QStandardItemModel next(3, 2);
        auto *view = find<QListView>("m_query_resultsView");
        for (QStandardItemModel *shown : {&model, &model, &next}) {
            m_window->showQueryResults(shown);
            QVERIFY(!view->selectionModel()->hasSelection());
            view->setCurrentIndex(shown->index(2, 1));
            QVERIFY(view->selectionModel()->hasSelection());
        }
    }

    void browseResults()
    {
        QStandardItemModel model(3, 2);
        QSignalSpy available(m_window, SIGNAL(browseResultsAvailable()));
        m_window->showBrowseResults(&model);
        QCOMPARE(available.count(), 1);
        QCOMPARE(find<QListView>("m_browse_resultsView")->model(), &model);
        QCOMPARE(find<QListView>("m_browse_resultsView")->modelColumn(), 1);
        QCOMPARE(m_window->browseResultCount(), 3);
        QCOMPARE(find<QLabel>("m_browse_resultsLabel")->text(), QStringLiteral("3 results"));
        m_window->showBrowseResults(nullptr);
        QCOMPARE(available.count(), 2);
        QCOMPARE(find<QListView>("m_browse_resultsView")->model(), nullptr);
        QCOMPARE(m_window->browseResultCount(), 0);
        QCOMPARE(find<QLabel>("m_browse_resultsLabel")->text(), QStringLiteral("0 results"));
    }

    void selectedRows()
    {
        QStandardItemModel model(3, 2);
        QCOMPARE(m_window->selectedQueryResultItemIndex(), -1);
        QCOMPARE(m_window->selectedBrowseResultItemIndex(), -1);
        QVERIFY(!m_window->selectedBrowseResultModelIndex(0).isValid());
        m_window->showQueryResults(&model);
        m_window->showBrowseResults(&model);
        QCOMPARE(m_window->selectedQueryResultItemIndex(), -1);
        find<QListView>("m_query_resultsView")->setCurrentIndex(model.index(2, 1));
        find<QListView>("m_browse_resultsView")->setCurrentIndex(model.index(1, 1));
        QCOMPARE(m_window->selectedQueryResultItemIndex(), 2);
        QCOMPARE(m_window->selectedBrowseResultItemIndex(), 1);
        QCOMPARE(m_window->selectedBrowseResultModelIndex(0), model.index(1, 0));
    }

    void deletedModelLeavesAnEmptyView()
    {
        auto model = std::make_unique<QStandardItemModel>(3, 2);
        m_window->showQueryResults(model.get());
        model.reset();
        QCOMPARE(m_window->selectedQueryResultItemIndex(), -1);
        m_window->showExecuteQueryButton();
        QStandardItemModel next(2, 2);
        m_window->showQueryResults(&next);
        QCOMPARE(find<QLabel>("m_query_resultsLabel")->text(), QStringLiteral("2 results"));
    }

    void clearBrowseResults()
    {
        QStandardItemModel model(3, 2);
        m_window->showBrowseResults(&model);
        m_window->showBrowseResultThumbnail(QStringLiteral("text"));
        m_window->addBrowseMetadata("k", "v");
        m_window->clearBrowseResults();
        QCOMPARE(find<QListView>("m_browse_resultsView")->model(), nullptr);
        QCOMPARE(find<QLabel>("m_browse_pictureField")->text(), QString());
        QCOMPARE(find<QTextEdit>("m_browse_metadataField")->toPlainText(), QString());
        QCOMPARE(find<QLabel>("m_browse_resultsLabel")->text(), QStringLiteral("0 results"));
    }

    void errorLabelsShowMarkupAsItIs()
    {
        m_window->updateQueryErrorLabel("<b>no</b>");
        m_window->updateBrowseErrorLabel("gone");
        QCOMPARE(find<QLabel>("m_query_errorLabel")->text(), QStringLiteral("<b>no</b>"));
        QCOMPARE(find<QLabel>("m_query_errorLabel")->textFormat(), Qt::PlainText);
        QCOMPARE(find<QLabel>("m_browse_errorLabel")->text(), QStringLiteral("gone"));
    }

    void thumbnailFillsItsField()
    {
        auto *field = find<QLabel>("m_browse_pictureField");
        m_window->showBrowseResultThumbnail(QStringLiteral("loading"));
        field->hide();
        LogRecorder log;
        m_window->showBrowseResultThumbnail(pngOf(Qt::green));
        QCOMPARE(log.lines(),
            QStringList({"KelvoMainWindow::showBrowseResultThumbnail, array", "LOADING SUCCESS WAS true"}));
        QCOMPARE(field->pixmap().size(), field->size());
        QCOMPARE(field->pixmap().toImage().pixelColor(0, 0), QColor(Qt::green));
        QVERIFY(!field->isHidden());
    }

    void largeThumbnailFillsItsFieldToo()
    {
        QImage photograph(4000, 3000, QImage::Format_RGB32);
        photograph.fill(Qt::blue);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        QVERIFY(photograph.save(&buffer, "JPG"));
        m_window->showBrowseResultThumbnail(bytes);
        const auto *field = find<QLabel>("m_browse_pictureField");
        const QImage shown = field->pixmap().toImage();
        QCOMPARE(shown.size(), field->size());
        QVERIFY(shown.pixelColor(shown.rect().center()).blue() > 250);
    }

    void undecodableThumbnailIsSaid()
    {
        LogRecorder log;
        m_window->showBrowseResultThumbnail(QByteArray("no picture"));
        QCOMPARE(log.lines(),
            QStringList({"KelvoMainWindow::showBrowseResultThumbnail, array", "LOADING SUCCESS WAS false",
                "KelvoMainWindow::showBrowseResultThumbnail, text \"error showing thumbnail\""}));
        QCOMPARE(find<QLabel>("m_browse_pictureField")->text(), QStringLiteral("error showing thumbnail"));
    }

    void browseMetadata()
    {
        m_window->addBrowseMetadata("title", "A");
        m_window->addBrowseMetadata("artist", "B");
        QCOMPARE(
            find<QTextEdit>("m_browse_metadataField")->toPlainText(), QStringLiteral("title: A\nartist: B"));
        m_window->clearBrowseMetadata();
        QCOMPARE(find<QTextEdit>("m_browse_metadataField")->toPlainText(), QString());
    }

    void browseButtons()
    {
        m_window->showBrowseCancelButton();
        QCOMPARE(find<QToolButton>("m_browse_executeButton")->text(), QStringLiteral("Cancel"));
        m_window->showBrowseButton();
        QCOMPARE(find<QToolButton>("m_browse_executeButton")->text(), QStringLiteral("Browse"));
        for (const bool on : {false, true}) {
            m_window->setBrowseButtonsEnabled(on);
            QCOMPARE(find<QToolButton>("m_browse_executeButton")->isEnabled(), on);
            QCOMPARE(find<QToolButton>("m_browse_clearButton")->isEnabled(), on);
        }
    }

    void queryButtons()
    {
        const auto *execute = find<QToolButton>("m_query_executeButton");
        const auto *extend = find<QToolButton>("m_query_extendButton");
        m_window->showQueryCancelButton();
        QCOMPARE(execute->text(), QStringLiteral("Cancel"));
        QVERIFY(!extend->isEnabled());
        m_window->showExecuteQueryButton();
        QCOMPARE(execute->text(), QStringLiteral("Execute\nquery"));
        QVERIFY(extend->isEnabled());
        m_window->showFetchRestButton();
        QCOMPARE(execute->text(), QStringLiteral("Fetch\nrest"));
        QVERIFY(!extend->isEnabled());
        for (const bool on : {false, true}) {
            m_window->setQueryButtonsEnabled(on);
            QCOMPARE(execute->isEnabled(), on);
            QCOMPARE(extend->isEnabled(), on);
        }
    }

    void queryIsTheChosenIndex()
    {
        QCOMPARE(m_window->getQuery(), 0);
        find<QComboBox>("m_query_queryCombo")->setCurrentIndex(10);
        QCOMPARE(m_window->getQuery(), 10);
    }

    void queryTimer()
    {
        QStandardItemModel model(1, 2);
        LogRecorder log;
        find<QToolButton>("m_query_executeButton")->click();
        QCOMPARE(log.lines(), QStringList("startQueryDebugTimer()"));
        m_window->showQueryResults(&model);
        QVERIFY(log.contains("stopQueryDebugtimer()"));
        QCOMPARE(log.lines().filter(QRegularExpression("^QDTimer:Query took \\d+ ms$")).size(), 1);
    }

    void resultsWithoutAClickAreTimedToo()
    {
        QStandardItemModel model(1, 2);
        LogRecorder log;
        m_window->showQueryResults(&model);
        QVERIFY(log.contains("QDTimer:Query took 0 ms"));
    }

private:
    template <typename T> T *find(const char *name) const
    {
        return m_window->findChild<T *>(QLatin1String(name));
    }
    KelvoMainWindow *m_window = nullptr;
};

KELVO_WIDGET_TEST(ResultDisplayTest)
#include "ResultDisplayTest.moc"
