// SPDX-License-Identifier: MIT
#include "PlaylistItemModel.h"

namespace {
constexpr int ownColumns = PlaylistColumns::Duration + 1;
}

PlaylistItemModel::PlaylistItemModel(const PlaylistItems &items, const PlaylistOrder &rows)
    : m_items(items)
    , m_rows(rows)
{
}

int PlaylistItemModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_order.size();
}

int PlaylistItemModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ownColumns + int(m_columns.extras.size());
}

QVariant PlaylistItemModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Slot slot = m_order.at(index.row());
    if (index.column() < ownColumns)
        return ownData(PlaylistColumns::Role(index.column()), slot, role);
    const PlaylistColumns::Extra &extra = m_columns.extras[size_t(index.column() - ownColumns)];
    return extra.role == PlaylistColumns::RoleCount ? modelData(extra.column, slot, role)
                                                    : ownData(extra.role, slot, role);
}

QVariant PlaylistItemModel::ownData(PlaylistColumns::Role column, Slot slot, int role) const
{
    if (role != Qt::DisplayRole && role != Qt::EditRole && role != Qt::UserRole)
        return {};
    const PlaylistItem &item = m_items.at(slot);
    switch (column) {
    case PlaylistColumns::Id:
        return item.id;
    case PlaylistColumns::Title:
        return m_items.shownTitle(slot);
    case PlaylistColumns::Url:
        return item.url;
    case PlaylistColumns::Duration:
        return role == Qt::DisplayRole ? QVariant(playlistDurationText(item.duration))
                                       : QVariant(item.duration);
    case PlaylistColumns::Artist:
        return m_items.text(item.artist);
    case PlaylistColumns::Album:
        return m_items.text(item.album);
    case PlaylistColumns::MimeType:
        return m_items.text(item.mimeType);
    case PlaylistColumns::RoleCount:
        break;
    }
    return {};
}

QVariant PlaylistItemModel::modelData(int column, Slot slot, int role) const
{
    const QAbstractItemModel *model = m_model;
    const int row = m_rows.indexOf(slot);
    return model && row >= 0 ? model->data(model->index(row, column), role) : QVariant();
}

QVariant PlaylistItemModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    if (section < 0 || section >= columnCount())
        return {};
    if (section < ownColumns)
        return PlaylistColumns::headerOf(PlaylistColumns::Role(section));
    const QString header = m_columns.extras[size_t(section - ownColumns)].header;
    return header.isEmpty() ? QAbstractTableModel::headerData(section, orientation, role) : QVariant(header);
}

Qt::ItemFlags PlaylistItemModel::flags(const QModelIndex &index) const
{
    return index.isValid() ? QAbstractTableModel::flags(index) | Qt::ItemNeverHasChildren : Qt::NoItemFlags;
}

void PlaylistItemModel::insertSlots(int index, const std::vector<Slot> &slots)
{
    beginInsertRows({}, index, index + int(slots.size()) - 1);
    m_order.insert(index, slots);
    endInsertRows();
}

void PlaylistItemModel::removeSlots(int from, int count)
{
    beginRemoveRows({}, from, from + count - 1);
    m_order.remove(from, count);
    endRemoveRows();
}

void PlaylistItemModel::reorder(std::vector<Slot> slots)
{
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    std::vector<Slot> marked;
    marked.reserve(size_t(before.size()));
    for (const QModelIndex &index : before)
        marked.push_back(m_order.at(index.row()));
    m_order.assign(std::move(slots));
    QModelIndexList after;
    after.reserve(before.size());
    for (int i = 0; i < int(before.size()); ++i)
        after.append(index(m_order.indexOf(marked[size_t(i)]), before.at(i).column()));
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

void PlaylistItemModel::showChanged(int from, int to)
{
    Q_EMIT dataChanged(index(from, 0), index(to, columnCount() - 1));
}

void PlaylistItemModel::setUnderlyingModel(const QAbstractItemModel *model)
{
    m_model = model;
}

void PlaylistItemModel::setColumns(const PlaylistColumns &columns)
{
    const bool same = m_columns.extras == columns.extras;
    resizeColumns(columns);
    if (same || columnCount() == ownColumns)
        return;
    Q_EMIT headerDataChanged(Qt::Horizontal, ownColumns, columnCount() - 1);
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0, ownColumns), index(rowCount() - 1, columnCount() - 1));
}

void PlaylistItemModel::resizeColumns(const PlaylistColumns &columns)
{
    const int before = columnCount();
    const int after = ownColumns + int(columns.extras.size());
    if (after > before) {
        beginInsertColumns({}, before, after - 1);
        m_columns = columns;
        endInsertColumns();
    } else if (after < before) {
        beginRemoveColumns({}, after, before - 1);
        m_columns = columns;
        endRemoveColumns();
    } else {
        m_columns = columns;
    }
}

void PlaylistItemModel::endReplacing(std::vector<Slot> slots)
{
    m_order.assign(std::move(slots));
    endResetModel();
}
