// SPDX-License-Identifier: MIT
#include "ForeignItemModel.h"

#include "KelvoPlaylist.h"

#include <algorithm>
#include <array>

namespace {
constexpr std::array headers{"id", "title", "url", "duration"};

QVariant durationData(qlonglong duration, int role)
{
    if (role == Qt::DisplayRole && duration < 0)
        return {};
    return int(duration);
}
} // namespace

int ForeignItemModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_items.size());
}

int ForeignItemModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(headers.size());
}

QVariant ForeignItemModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::EditRole && role != Qt::UserRole))
        return {};
    const SharedItem &item = m_items.at(index.row());
    switch (index.column()) {
    case KelvoPlaylist::IdColumn:
        return item.id;
    case KelvoPlaylist::TitleColumn:
        return item.title;
    case KelvoPlaylist::UriColumn:
        return item.url;
    default:
        return durationData(item.duration, role);
    }
}

QVariant ForeignItemModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < columnCount())
        return QString::fromLatin1(headers.at(size_t(section)));
    return QAbstractTableModel::headerData(section, orientation, role);
}

ForeignItemModel::Change ForeignItemModel::append(const SharedItems &items)
{
    const Change change{m_items.size(), 0, items.size()};
    if (items.isEmpty())
        return change;
    beginInsertRows({}, int(change.from), int(change.from + change.added - 1));
    m_items.append(items);
    endInsertRows();
    return change;
}

ForeignItemModel::Change ForeignItemModel::replace(const SharedItems &items)
{
    const auto from = std::mismatch(m_items.cbegin(), m_items.cend(), items.cbegin(), items.cend()).first
        - m_items.cbegin();
    const auto shorter = std::min(m_items.size(), items.size()) - from;
    const auto same = std::mismatch(m_items.crbegin(), m_items.crbegin() + shorter, items.crbegin()).first
        - m_items.crbegin();
    const Change change{from, m_items.size() - from - same, items.size() - from - same};
    if (change.removed > 0) {
        beginRemoveRows({}, int(from), int(from + change.removed - 1));
        m_items.remove(from, change.removed);
        endRemoveRows();
    }
    if (change.added > 0) {
        beginInsertRows({}, int(from), int(from + change.added - 1));
        m_items = items;
        endInsertRows();
    }
    return change;
}
