// SPDX-License-Identifier: MIT
#pragma once

#include "PlaylistColumns.h"
#include "PlaylistItems.h"
#include "PlaylistOrder.h"

#include <QAbstractTableModel>
#include <QPointer>

/// Shows a playlist's items in playing order: id, title, url, duration, then the other columns of the
/// underlying model. Every edit of the play order goes through here, so that views and selections follow.
///
/// Texts stand under Qt::DisplayRole; Qt::EditRole and Qt::UserRole give a duration as seconds (-1 when
/// unknown).
class PlaylistItemModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    using Slot = PlaylistOrder::Slot;

    /// @param rows  slot of each row of the underlying model
    PlaylistItemModel(const PlaylistItems &items, const PlaylistOrder &rows);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    const PlaylistOrder &order() const { return m_order; }
    const PlaylistColumns &columns() const { return m_columns; }

    void insertSlots(int index, const std::vector<Slot> &slots);
    void removeSlots(int from, int count);
    /// @param slots  the same slots in another order
    void reorder(std::vector<Slot> slots);
    void showChanged(int from, int to);

    /// Not owned. Its columns are given by setColumns().
    void setUnderlyingModel(const QAbstractItemModel *model);
    void setColumns(const PlaylistColumns &columns);

    void beginReplacing() { beginResetModel(); }
    void replaceColumns(const PlaylistColumns &columns) { m_columns = columns; }
    void endReplacing(std::vector<Slot> slots);

private:
    QVariant ownData(PlaylistColumns::Role column, Slot slot, int role) const;
    QVariant modelData(int column, Slot slot, int role) const;
    void resizeColumns(const PlaylistColumns &columns);

    const PlaylistItems &m_items;
    const PlaylistOrder &m_rows;
    PlaylistOrder m_order;
    PlaylistColumns m_columns;
    QPointer<const QAbstractItemModel> m_model;
};
