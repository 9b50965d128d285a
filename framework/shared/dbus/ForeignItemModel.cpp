// SPDX-License-Identifier: MIT
#include "ForeignItemModel.h"

#include "KelvoPlaylist.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <numeric>

namespace {
constexpr std::array headers{"id", "title", "url", "duration"};

QVariant durationData(qlonglong duration, int role)
{
    if (role == Qt::DisplayRole && duration < 0)
        return {};
    return int(duration);
}

/// Without what both begin and end with.
ForeignItemModel::Change difference(const SharedItems &before, const SharedItems &after)
{
    const auto from
        = std::mismatch(before.cbegin(), before.cend(), after.cbegin(), after.cend()).first - before.cbegin();
    const auto shorter = std::min(before.size(), after.size()) - from;
    const auto same = std::mismatch(before.crbegin(), before.crbegin() + shorter, after.crbegin()).first
        - before.crbegin();
    return {from, before.size() - from - same, after.size() - from - same};
}

SharedItems newOnes(const SharedItems &wanted, const std::vector<qsizetype> &rows)
{
    SharedItems items;
    for (size_t place = 0; place < rows.size(); ++place) {
        if (rows[place] < 0)
            items.append(wanted.at(qsizetype(place)));
    }
    return items;
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
    insert(change.from, items);
    return change;
}

ForeignItemModel::Change ForeignItemModel::replace(const SharedItems &items)
{
    const Change change = difference(m_items, items);
    const SharedItems wanted = items.mid(change.from, change.added);
    const Rows rows = rowsOf(change, wanted);
    const SharedItems added = newOnes(wanted, rows);
    const qsizetype kept = wanted.size() - added.size();
    // What stays goes to the front, so that what has gone, and then what is new, is in one piece.
    gatherKept(change, rows);
    remove(change.from + kept, change.removed - kept);
    insert(change.from + kept, added);
    spread(change, rows, kept);
    update(items);
    return change;
}

/// For each wanted item the row that has it now, counted from where the change begins; -1 for a new one.
ForeignItemModel::Rows ForeignItemModel::rowsOf(const Change &change, const SharedItems &wanted) const
{
    QHash<QString, qsizetype> present;
    present.reserve(change.removed);
    for (qsizetype row = 0; row < change.removed; ++row)
        present.insert(m_items.at(change.from + row).id, row);
    Rows rows;
    rows.reserve(size_t(wanted.size()));
    for (const SharedItem &item : wanted) {
        const auto found = present.constFind(item.id);
        rows.push_back(found == present.cend() ? -1 : *found);
        if (found != present.cend())
            present.erase(found);
    }
    return rows;
}

void ForeignItemModel::gatherKept(const Change &change, const Rows &rows)
{
    Rows order;
    order.reserve(size_t(change.removed));
    std::vector<bool> stays(size_t(change.removed), false);
    for (const qsizetype row : rows) {
        if (row >= 0) {
            order.push_back(row);
            stays[size_t(row)] = true;
        }
    }
    for (qsizetype row = 0; row < change.removed; ++row) {
        if (!stays[size_t(row)])
            order.push_back(row);
    }
    arrange(change.from, order);
}

/// Puts those that are new, which are behind the others, to their places among them.
void ForeignItemModel::spread(const Change &change, const Rows &rows, qsizetype kept)
{
    qsizetype nextKept = 0;
    qsizetype nextNew = kept;
    Rows order;
    order.reserve(rows.size());
    for (const qsizetype row : rows)
        order.push_back(row < 0 ? nextNew++ : nextKept++);
    arrange(change.from, order);
}

/// Brings to each row from `from` on the item that is so many rows behind `from`.
void ForeignItemModel::arrange(qsizetype from, const Rows &order)
{
    if (std::is_sorted(order.begin(), order.end()))
        return;
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    const SharedItems before = m_items.mid(from, qsizetype(order.size()));
    std::vector<int> rows(size_t(m_items.size()));
    std::iota(rows.begin(), rows.end(), 0);
    for (size_t place = 0; place < order.size(); ++place) {
        m_items[from + qsizetype(place)] = before.at(order[place]);
        rows[size_t(from + order[place])] = int(from + qsizetype(place));
    }
    const QModelIndexList old = persistentIndexList();
    QModelIndexList now;
    for (const QModelIndex &each : old)
        now.append(index(rows[size_t(each.row())], each.column()));
    changePersistentIndexList(old, now);
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

void ForeignItemModel::remove(qsizetype from, qsizetype count)
{
    if (count <= 0)
        return;
    beginRemoveRows({}, int(from), int(from + count - 1));
    m_items.remove(from, count);
    endRemoveRows();
}

void ForeignItemModel::insert(qsizetype from, const SharedItems &items)
{
    if (items.isEmpty())
        return;
    beginInsertRows({}, int(from), int(from + items.size() - 1));
    m_items.insert(from, items.size(), SharedItem());
    std::copy(items.begin(), items.end(), m_items.begin() + from);
    endInsertRows();
}

/// Takes over what has changed within the items.
void ForeignItemModel::update(const SharedItems &items)
{
    const Change change = difference(m_items, items);
    m_items = items;
    if (change.added > 0)
        Q_EMIT dataChanged(
            index(int(change.from), 0), index(int(change.from + change.added - 1), columnCount() - 1));
}
