// SPDX-License-Identifier: MIT
#include "KelvoSourceController.h"

#include "KelvoBrowseController.h"
#include "KelvoGUIMain.h"
#include "KelvoMainWindow.h"
#include "KelvoPlaylistController.h"
#include "KelvoQueryController.h"
#include "KelvoRegistry.h"
#include "KelvoSource.h"
#include "KelvoThumbnailDownloader.h"

#include <QAbstractItemModel>
#include <QDebug>

KelvoSourceController::KelvoSourceController(KelvoGUIMain *guiMain, KelvoMainWindow *mainWindow)
    : m_guiMain(guiMain)
    , m_registry(KelvoRegistry::instance())
    , m_mainWindow(mainWindow)
{
    qDebug() << "KelvoSourceController::KelvoSourceController";
    m_queryController = new KelvoQueryController(this, mainWindow);
    m_browseController = new KelvoBrowseController(this, mainWindow);
    m_thumbnailDownloader = new KelvoThumbnailDownloader(this);
    connect(
        m_thumbnailDownloader, SIGNAL(downloadFinished(QByteArray)), this, SLOT(thumbnailReady(QByteArray)));
    m_propertyKeys = QStringList{
        QStringLiteral("signIn"),
        QStringLiteral("signedIn"),
        QStringLiteral("deviceType"),
        QStringLiteral("manufacturer"),
        QStringLiteral("manufacturerURL"),
        QStringLiteral("modelDescription"),
        QStringLiteral("modelName"),
        QStringLiteral("modelNumber"),
        QStringLiteral("modelURL"),
        QStringLiteral("serialNumber"),
        QStringLiteral("presentationURL"),
        QStringLiteral("universalProductCode"),
        QStringLiteral("iconURL"),
        QStringLiteral("supportQuery"),
    };
    m_mainWindow->connectSourceSignals(this);
}

KelvoSourceController::~KelvoSourceController()
{
    qDebug() << "KelvoSourceController::~KelvoSourceController";
}

QAbstractItemModel *KelvoSourceController::queryModel() const
{
    qDebug() << "KelvoSourceController::queryModel";
    return m_queryController ? m_queryController->queryModel() : nullptr;
}

void KelvoSourceController::selectSources()
{
    qDebug() << "KelvoSourceController::selectSources";
    if (m_mainWindow->isSelectSourcesDialogOpen())
        return;
    const QList<KelvoSource *> all = m_registry->sources();
    forgetGoneSources(all);
    QList<bool> flags = selectionFlags(all);
    const bool accepted = m_mainWindow->showSelectSourcesDialog(all, flags);
    // Cancelling drops the earlier selection too, as the dialog says.
    m_selectedSources.clear();
    m_sourcesSelected = accepted;
    if (!accepted)
        return;
    // Sources may have come and gone while the dialog was open: only those that are still there count.
    const QList<KelvoSource *> present = m_registry->sources();
    for (qsizetype i = 0; i < qMin(flags.size(), all.size()); ++i) {
        if (flags.at(i) && present.contains(all.at(i)))
            m_selectedSources.append(all.at(i));
    }
}

void KelvoSourceController::forgetGoneSources(const QList<KelvoSource *> &existing)
{
    m_selectedSources.removeIf(
        [&](const QPointer<KelvoSource> &source) { return !existing.contains(source.data()); });
}

QList<bool> KelvoSourceController::selectionFlags(const QList<KelvoSource *> &sources) const
{
    QList<bool> flags(sources.size(), false);
    if (!m_sourcesSelected)
        return flags;
    qsizetype next = 0;
    for (qsizetype i = 0; i < sources.size(); ++i) {
        if (next < m_selectedSources.size() && m_selectedSources.at(next) == sources.at(i)) {
            flags[i] = true;
            ++next;
        }
    }
    return flags;
}

QList<KelvoSource *> KelvoSourceController::sourcesToQuery() const
{
    QList<KelvoSource *> sources; // empty: the tracker only
    if (m_sourcesSelected) {
        for (const QPointer<KelvoSource> &source : m_selectedSources) {
            if (source)
                sources.append(source);
        }
    }
    return sources;
}

void KelvoSourceController::search()
{
    qDebug() << "KelvoSourceController::search";
    if (!m_mainWindow->showSearchDialog())
        return;
    QString term;
    int item = 0;
    m_mainWindow->getSearchConditions(term, item);
    // Nothing searches by them yet.
    m_mainWindow->showQueryResults(nullptr);
}

void KelvoSourceController::executeQuery()
{
    qDebug() << "KelvoSourceController::executeQuery";
    switch (m_queryController->queryState()) {
    case KelvoQueryController::Idle: {
        const int index = m_mainWindow->getQuery();
        m_mainWindow->showQueryResults(m_queryController->query(sourcesToQuery(), index));
        break;
    }
    case KelvoQueryController::Running:
        m_queryController->cancelOngoingQuery();
        break;
    case KelvoQueryController::FirstRows:
        m_queryController->fetchRest();
        break;
    default:
        break;
    }
}

void KelvoSourceController::extendQuery()
{
    qDebug() << "KelvoSourceController::extendQuery";
    const int row = m_mainWindow->selectedQueryResultItemIndex();
    if (row == -1) {
        qWarning() << "Please select item to extend!";
        return;
    }
    // The result that is extended is deleted.
    if (m_appendingTo)
        m_appendingTo->finishAppending();
    m_mainWindow->showQueryResults(m_queryController->extendQuery(sourcesToQuery(), row));
}

void KelvoSourceController::addQueryToPlaylist()
{
    qDebug() << "KelvoSourceController::addQueryToPlaylist";
    const int row = m_mainWindow->selectedQueryResultItemIndex();
    if (m_queryController->latestQueryExtendable())
        return; // artists and albums cannot be played
    KelvoPlaylistController *playlists = m_guiMain->playlists();
    const QAbstractItemModel *model = m_queryController->queryModel();
    if (!model)
        return;
    m_appendingTo = playlists;
    if (row == -1)
        playlists->addToPlaylist(*model, 0, model->rowCount() - 1);
    else
        playlists->addToPlaylist(*model, row, row);
}

void KelvoSourceController::addBrowseToPlaylist()
{
    qDebug() << "KelvoSourceController::addBrowseToPlaylist";
}

bool KelvoSourceController::playableItemsInQueryModel()
{
    qDebug() << "KelvoSourceController::playableItemsInQueryModel";
    return !m_queryController->latestQueryExtendable();
}

bool KelvoSourceController::playableItemsInBrowseModel(int index)
{
    qDebug() << "KelvoSourceController::playableItemsInBrowseModel";
    return !m_browseController->isContainerItem(index);
}

void KelvoSourceController::executeBrowse()
{
    qDebug() << "KelvoSourceController::executeBrowse";
    if (m_browseController->isOngoing()) {
        m_browseController->cancelOngoingBrowse();
        return;
    }
    const int selected = m_mainWindow->selectedBrowseResultItemIndex();
    if (selected < 0 && m_mainWindow->browseResultCount() >= 1)
        return;
    m_mainWindow->setBrowseButtonsEnabled(false);
    m_mainWindow->showBrowseResults(m_browseController->browse(m_registry->sources()));
    m_mainWindow->setBrowseButtonsEnabled(true);
}

void KelvoSourceController::clearBrowseResults()
{
    qDebug() << "KelvoSourceController::clearBrowseResults";
    m_browseController->clearBrowseResults();
    m_mainWindow->clearBrowseResults();
}

void KelvoSourceController::browseResultItemActivated(const QModelIndex &index)
{
    qDebug() << "KelvoSourceController::browseResultItemActivated";
    // Handling a row may let the next activation in before it has ended.
    if (m_activationBusy || m_waitingForMediaArts) {
        m_pendingActivatedRow = index.row();
        return;
    }
    m_activationBusy = true;
    handleActivatedRow(index.row());
    while (m_pendingActivatedRow >= 0 && !m_waitingForMediaArts) {
        qDebug() << "\nKelvoSourceController::browseResultItemActivated loop";
        handleActivatedRow(std::exchange(m_pendingActivatedRow, -1));
    }
    m_activationBusy = false;
}

void KelvoSourceController::handleActivatedRow(int row)
{
    Q_UNUSED(row)
    m_mainWindow->clearBrowseMetadata();
}

void KelvoSourceController::mediaArtsUpdatedSlot()
{
    qDebug() << "KelvoSourceController::mediaArtsUpdatedSlot";
    m_waitingForMediaArts = false;
}

void KelvoSourceController::setNewQueryProperties(int firstBlockSize, int streamingBlockSize)
{
    qDebug() << "void KelvoSourceController::setNewQueryProperties(int, int)" << firstBlockSize
             << streamingBlockSize;
    m_queryController->setNewQueryProperties(firstBlockSize, streamingBlockSize);
}

void KelvoSourceController::thumbnailReady(const QByteArray &array)
{
    qDebug() << "KelvoSourceController::thumbnailReady";
    if (m_mainWindow)
        m_mainWindow->showBrowseResultThumbnail(array);
}
