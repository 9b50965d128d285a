// SPDX-License-Identifier: MIT
#include "KelvoMainWindow.h"

#include "Announcer.h"
#include "Captions.h"
#include "KelvoGUIMain.h"
#include "ListKeys.h"
#include "ListViews.h"

#include <QBuffer>
#include <QDebug>
#include <QImageReader>

namespace {
const auto browseCaption = QStringLiteral("Browse");
const auto cancelCaption = QStringLiteral("Cancel");
const auto executeCaption = QStringLiteral("Execute\nquery");
const auto fetchRestCaption = QStringLiteral("Fetch\nrest");
constexpr int bytesPerPixel = 4;
constexpr qint64 largeMegabytes = 4;
const auto browserAddress = QStringLiteral("https://www.example.org/");

/// Null when the bytes are no picture, or one that would take more memory than the image loader allows a picture
/// (however few bytes it was packed into). A large one comes in the size of the field.
QPixmap pixmapFrom(const QByteArray &imageData, const QSize &field)
{
    QBuffer buffer;
    buffer.setData(imageData);
    QImageReader reader(&buffer);
    const QSize size = reader.size();
    const qint64 megabytes = qint64(size.width()) * size.height() * bytesPerPixel / (1024 * 1024);
    if (megabytes > QImageReader::allocationLimit())
        return {};
    // A photograph is read in a fraction of the time when it need not be read in full.
    if (megabytes >= largeMegabytes)
        reader.setScaledSize(field);
    return QPixmap::fromImageReader(&reader);
}

void clearSelection(QListView *view)
{
    // A result that was extended is gone, and what was selected in it too: there is nothing to clear.
    if (view->selectionModel() && view->selectionModel()->model())
        view->clearSelection();
}

QString resultsText(const QListView *view)
{
    return QStringLiteral("%1 results").arg(ListViews::rowCount(view));
}
} // namespace

void KelvoMainWindow::setUpResultDisplay()
{
    Captions::makeRoom(m_query_executeButton, {executeCaption, cancelCaption, fetchRestCaption});
    Captions::makeRoom(m_browse_executeButton, {browseCaption, cancelCaption});
    for (QListView *view : {m_query_resultsView, m_browse_resultsView}) {
        ListViews::keepCurrentHighlighted(view);
        ListViews::showElidedAsToolTip(view);
    }
    ListKeys::moveFromPage(tab_browse, m_browse_resultsView);
}

void KelvoMainWindow::showQueryResults(QAbstractItemModel *model)
{
    qDebug() << "KelvoMainWindow::showQueryResults";
    if (!model)
        return;
    Q_EMIT queryResultsAvailable();
    clearSelection(m_query_resultsView);
    ListViews::setModel(m_query_resultsView, model);
    updateQueryResultLabel();
    connect(model, SIGNAL(rowsInserted(QModelIndex, int, int)), this, SLOT(updateQueryResultLabel()));
    connect(model, SIGNAL(rowsRemoved(QModelIndex, int, int)), this, SLOT(updateQueryResultLabel()));
}

int KelvoMainWindow::selectedQueryResultItemIndex() const
{
    qDebug() << "KelvoMainWindow::selectedQueryResultItemIndex";
    return ListViews::currentRow(m_query_resultsView);
}

void KelvoMainWindow::showBrowseResults(QAbstractItemModel *model)
{
    qDebug() << "KelvoMainWindow::showBrowseResults";
    Q_EMIT browseResultsAvailable();
    clearSelection(m_browse_resultsView);
    ListViews::setModel(m_browse_resultsView, model);
    // Removed rows are counted only when the label is updated next; the query tab counts them at once.
    if (model)
        connect(model, SIGNAL(rowsInserted(QModelIndex, int, int)), this, SLOT(updateBrowseResultLabel()));
    updateBrowseResultLabel();
}

int KelvoMainWindow::selectedBrowseResultItemIndex() const
{
    qDebug() << "KelvoMainWindow::selectedBrowseResultItemIndex";
    return ListViews::currentRow(m_browse_resultsView);
}

QModelIndex KelvoMainWindow::selectedBrowseResultModelIndex(int column) const
{
    qDebug() << "KelvoMainWindow::selectedBrowseResultModelIndex";
    const QAbstractItemModel *model = m_browse_resultsView->model();
    return model ? model->index(selectedBrowseResultItemIndex(), column) : QModelIndex();
}

int KelvoMainWindow::browseResultCount() const
{
    qDebug() << "KelvoMainWindow::browseResultCount";
    return ListViews::rowCount(m_browse_resultsView);
}

void KelvoMainWindow::clearBrowseResults()
{
    qDebug() << "KelvoMainWindow::clearBrowseResults";
    clearSelection(m_browse_resultsView);
    ListViews::setModel(m_browse_resultsView, nullptr);
    m_browse_pictureField->clear();
    m_browse_metadataField->clear();
    updateBrowseResultLabel();
}

void KelvoMainWindow::updateQueryResultLabel()
{
    qDebug() << "KelvoMainWindow::updateQueryResultLabel";
    m_query_resultsLabel->setText(resultsText(m_query_resultsView));
}

void KelvoMainWindow::updateBrowseResultLabel()
{
    qDebug() << "KelvoMainWindow::updateBrowseResultLabel";
    m_browse_resultsLabel->setText(resultsText(m_browse_resultsView));
}

void KelvoMainWindow::updateQueryErrorLabel(const QString &text)
{
    qDebug() << "KelvoMainWindow::updateQueryErrorLabel" << text;
    m_query_errorLabel->showMessage(text);
}

void KelvoMainWindow::updateBrowseErrorLabel(const QString &text)
{
    qDebug() << "KelvoMainWindow::updateBrowseErrorLabel" << text;
    m_browse_errorLabel->showMessage(text);
}

void KelvoMainWindow::showBrowseResultThumbnail(const QString &text)
{
    qDebug() << "KelvoMainWindow::showBrowseResultThumbnail, text" << text;
    m_browse_pictureField->setText(text);
}

void KelvoMainWindow::showBrowseResultThumbnail(const QByteArray &imageData)
{
    qDebug() << "KelvoMainWindow::showBrowseResultThumbnail, array";
    const QPixmap picture = pixmapFrom(imageData, m_browse_pictureField->size());
    const bool loaded = !picture.isNull();
    qDebug() << "LOADING SUCCESS WAS" << loaded;
    if (!loaded) {
        showBrowseResultThumbnail(QStringLiteral("error showing thumbnail"));
        return;
    }
    m_browse_pictureField->clear();
    m_browse_pictureField->setPixmap(
        picture.scaled(m_browse_pictureField->size(), Qt::IgnoreAspectRatio, Qt::FastTransformation));
    m_browse_pictureField->setVisible(true);
}

void KelvoMainWindow::addBrowseMetadata(const QString &key, const QString &value)
{
    qDebug() << "KelvoMainWindow::addBrowseMetadata";
    ListViews::appendLine(m_browse_metadataField, key, value);
}

void KelvoMainWindow::clearBrowseMetadata()
{
    qDebug() << "KelvoMainWindow::clearBrowseMetadata";
    m_browse_metadataField->clear();
}

void KelvoMainWindow::showBrowseButton()
{
    qDebug() << "KelvoMainWindow::showBrowseButton";
    m_browse_executeButton->setText(browseCaption);
}

void KelvoMainWindow::showBrowseCancelButton()
{
    qDebug() << "KelvoMainWindow::showBrowseCancelButton";
    m_browse_executeButton->setText(cancelCaption);
}

void KelvoMainWindow::setBrowseButtonsEnabled(bool enabled)
{
    qDebug() << "KelvoMainWindow::setBrowseButtonsEnabled";
    m_browse_executeButton->setEnabled(enabled);
    m_browse_clearButton->setEnabled(enabled);
}

void KelvoMainWindow::setQueryButtonsEnabled(bool enabled)
{
    qDebug() << "void KelvoMainWindow::setQueryButtonsEnabled(bool)";
    m_query_executeButton->setEnabled(enabled);
    m_query_extendButton->setEnabled(enabled);
}

void KelvoMainWindow::showExecuteQueryButton()
{
    qDebug() << "KelvoMainWindow::showExecuteQueryButton";
    if (m_query_executeButton->text() == cancelCaption)
        Announcer::say(this, m_query_resultsLabel->text());
    m_query_executeButton->setText(executeCaption);
    m_query_extendButton->setEnabled(true);
    m_query_resultsView->setModelColumn(ListViews::shownColumn);
}

void KelvoMainWindow::showQueryCancelButton()
{
    qDebug() << "KelvoMainWindow::showQueryCancelButton";
    m_query_executeButton->setText(cancelCaption);
    m_query_extendButton->setEnabled(false);
}

void KelvoMainWindow::showFetchRestButton()
{
    qDebug() << "KelvoMainWindow::showFetchRestButton";
    Announcer::say(this, m_query_resultsLabel->text());
    m_query_executeButton->setText(fetchRestCaption);
    m_query_extendButton->setEnabled(false);
}

int KelvoMainWindow::getQuery() const
{
    qDebug() << "KelvoMainWindow::getQuery";
    return m_query_queryCombo->currentIndex();
}

void KelvoMainWindow::startQueryDebugTimer()
{
    qDebug() << "startQueryDebugTimer()";
    m_queryDebugTimer.start();
}

void KelvoMainWindow::stopQueryDebugTimer()
{
    // Lower-case t, unlike the slot: testers filter their logs by this text.
    qDebug() << "stopQueryDebugtimer()";
    const qint64 elapsed = m_queryDebugTimer.isValid() ? m_queryDebugTimer.elapsed() : 0;
    qDebug() << "QDTimer:Query took" << elapsed << "ms";
}

void KelvoMainWindow::launchBrowser()
{
    qDebug() << "KelvoMainWindow::launchBrowser";
    if (m_tabs->currentWidget() == tab_query)
        launchBrowserFor(selectedQueryResultItemIndex());
    else if (m_tabs->currentWidget() == tab_browse)
        launchBrowserFor(selectedBrowseResultItemIndex());
}

void KelvoMainWindow::launchBrowserFor(int selectedRow)
{
    if (selectedRow < 0) {
        qDebug() << "Please select item to launch!";
        return;
    }
    // The line names the source controller on purpose: testers filter their logs by this text.
    qDebug() << "KelvoSourceController::launchBrowser launch" << browserAddress;
    m_guiMain->startBrowser(browserAddress);
}
