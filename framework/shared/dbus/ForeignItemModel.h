// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistProtocol.h"

#include <QAbstractTableModel>

#include <vector>

/// The items of another process's playlist as far as they have arrived; columns as KelvoPlaylist::Column.
///
/// A duration is the number of seconds; one that is not known shows nothing and is -1 under Qt::EditRole and
/// Qt::UserRole.
class ForeignItemModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    const SharedItems &items() const { return m_items; }

    /// What a replacement changed: at `from`, `removed` rows went and `added` came.
    struct Change
    {
        qsizetype from = 0;
        qsizetype removed = 0;
        qsizetype added = 0;
    };

    Change append(const SharedItems &items);
    /// Changes only the rows between what both lists begin and end with. An item that stays keeps its row's indexes,
    /// wherever it has moved, so that selections stay.
    Change replace(const SharedItems &items);

private:
    using Rows = std::vector<qsizetype>;

    qsizetype removeGone(const Change &change, const SharedItems &wanted);
    void gatherAtEnd(const Change &change, const QList<Change> &gone);
    Rows rowsOf(qsizetype from, qsizetype count, const SharedItems &wanted) const;
    void arrangeKept(qsizetype from, const Rows &rows);
    void spread(qsizetype from, const Rows &rows, qsizetype kept);
    void arrange(qsizetype from, const Rows &order);
    void remove(qsizetype from, qsizetype count);
    void insert(qsizetype from, const SharedItems &items);
    void update(const SharedItems &items);

    SharedItems m_items;
};
