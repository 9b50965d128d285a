// SPDX-License-Identifier: MIT
#include "KelvoBrowseController.h"

#include "KelvoMainWindow.h"
#include "KelvoSource.h"
#include "ListViews.h"

#include <QDebug>
#include <QStandardItemModel>

KelvoBrowseController::KelvoBrowseController(QObject *parent, KelvoMainWindow *mainWindow)
    : QObject(parent)
    , m_mainWindow(mainWindow)
{
    qDebug() << "KelvoBrowseController::KelvoBrowseController(QObject*, KelvoMainWindow*)";
}

QAbstractItemModel *KelvoBrowseController::browse(const QList<KelvoSource *> &sources)
{
    Q_UNUSED(sources)
    qDebug() << "QAbstractItemModel* KelvoBrowseController::browse(QList<KelvoSource*>)";
    return nullptr;
}

bool KelvoBrowseController::isContainerItem(int index) const
{
    Q_UNUSED(index)
    qDebug() << "bool KelvoBrowseController::isContainerItem(int)";
    return false;
}

QAbstractItemModel *KelvoBrowseController::browseSources(const QList<KelvoSource *> &sources)
{
    qDebug() << "QAbstractItemModel* KelvoBrowseController::browseSources(QList<KelvoSource*>)";
    m_sourceModel = generateSourceModel(sources);
    if (m_sourceModel->rowCount() > 0)
        m_hasResults = true;
    return m_sourceModel;
}

QStandardItemModel *KelvoBrowseController::generateSourceModel(const QList<KelvoSource *> &sources) const
{
    qDebug() << "QStandardItemModel* KelvoBrowseController::generateSourceModel(QList<KelvoSource*>)";
    auto *model = new QStandardItemModel(int(sources.size()), 2);
    for (qsizetype row = 0; row < sources.size(); ++row)
        model->setData(model->index(int(row), ListViews::shownColumn), sources.at(row)->name(), Qt::EditRole);
    return model;
}

QAbstractItemModel *KelvoBrowseController::browseRootNodeFromSource(
    const QList<KelvoSource *> &sources, int index)
{
    Q_UNUSED(sources)
    Q_UNUSED(index)
    qDebug() << "QAbstractItemModel* "
                "KelvoBrowseController::browseRootNodeFromSource(QList<KelvoSource*>, int)";
    m_mainWindow->showBrowseCancelButton();
    m_ongoing = true;
    m_rootBrowsed = true;
    return nullptr;
}

QAbstractItemModel *KelvoBrowseController::browseSelectedItem(const QModelIndex &index)
{
    Q_UNUSED(index)
    qDebug() << "QAbstractItemModel* KelvoBrowseController::browseSelectedItem(QModelIndex)";
    return nullptr;
}

void KelvoBrowseController::modelUpdatedSlot()
{
    qDebug() << "void KelvoBrowseController::modelUpdatedSlot()";
    m_mainWindow->showBrowseButton();
    m_ongoing = false;
}

void KelvoBrowseController::cancelOngoingBrowse()
{
    qDebug() << "KelvoBrowseController::cancelOngoingBrowse";
}

bool KelvoBrowseController::isOngoing() const
{
    qDebug() << "KelvoBrowseController::isOngoing" << m_ongoing;
    return m_ongoing;
}

void KelvoBrowseController::clearBrowseResults()
{
    qDebug() << "void KelvoBrowseController::clearBrowseResults()";
    if (m_ongoing)
        cancelOngoingBrowse();
}
