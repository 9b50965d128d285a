// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QModelIndex>
#include <QObject>
#include <QPointer>

class KelvoMainWindow;
class KelvoSource;
class QAbstractItemModel;
class QStandardItemModel;

/// The skeleton of browsing in sources: the operations and the busy state are there, the browsing itself is not, so
/// every request answers without a result. Made and used by KelvoSourceController only. GUI thread only.
class KelvoBrowseController : public QObject
{
    Q_OBJECT
public:
    KelvoBrowseController(QObject *parent, KelvoMainWindow *mainWindow);

    /// Null: there is nothing to show yet.
    QAbstractItemModel *browse(const QList<KelvoSource *> &sources);
    /// False: every row counts as playable.
    bool isContainerItem(int index) const;
    /// A model of the sources themselves; the caller owns it.
    QAbstractItemModel *browseSources(const QList<KelvoSource *> &sources);
    /// One row for each source, its name in column 1; the caller owns it.
    QStandardItemModel *generateSourceModel(const QList<KelvoSource *> &sources) const;
    /// Begins, as far as the window shows it; null.
    QAbstractItemModel *browseRootNodeFromSource(const QList<KelvoSource *> &sources, int index);
    QAbstractItemModel *browseSelectedItem(const QModelIndex &index);
    void cancelOngoingBrowse();
    bool isOngoing() const;
    void clearBrowseResults();

public Q_SLOTS:
    void modelUpdatedSlot();

private:
    bool m_hasResults = false; // the last model of sources had a row
    bool m_rootBrowsed = false;
    QStandardItemModel *m_sourceModel = nullptr; // the last one made, not owned
    bool m_ongoing = false;
    QPointer<KelvoMainWindow> m_mainWindow;
};
