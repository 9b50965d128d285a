// SPDX-License-Identifier: MIT
#include "ForeignItemModel.h"

#include "KelvoPlaylist.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <numeric>

namespace {
constexpr std::array headers{"id", "title", "url", "duration"};
constexpr qsizetype mostPieces = 50; // that are removed one by one

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
    if (items.isEmpty())
        return change;
    beginInsertRows({}, int(change.from), int(change.from + change.added - 1));
    m_items.append(items);
    endInsertRows();
    return change;
}

ForeignItemModel::Change ForeignItemModel::replace(const SharedItems &items)
{
    const Change change = difference(m_items, items);
    const SharedItems wanted = items.mid(change.from, change.added);
    const qsizetype kept = removeGone(change, wanted);
    const Rows rows = rowsOf(change.from, kept, wanted);
    arrangeKept(change.from, rows);
    insert(change.from + kept, newOnes(wanted, rows));
    spread(change.from, rows, kept);
    update(items);
    return change;
}

/// How many of the changed rows stay.
qsizetype ForeignItemModel::removeGone(const Change &change, const SharedItems &wanted)
{
    QSet<QString> ids;
    for (const SharedItem &item : wanted)
        ids.insert(item.id);
    QList<Change> gone; // in pieces
    qsizetype count = 0;
    for (qsizetype row = change.from; row < change.from + change.removed; ++row) {
        if (ids.remove(m_items.at(row).id))
            continue;
        ++count;
        if (gone.isEmpty() || gone.constLast().from + gone.constLast().removed < row)
            gone.append({row, 1, 0});
        else
            ++gone.last().removed;
    }
    if (gone.size() > mostPieces) {
        gatherAtEnd(change, gone);
        remove(change.from + change.removed - count, count);
    } else {
        std::for_each(
            gone.crbegin(), gone.crend(), [this](const Change &piece) { remove(piece.from, piece.removed); });
    }
    return change.removed - count;
}

/// Makes one piece of many: each that is removed costs as much as the list is long.
void ForeignItemModel::gatherAtEnd(const Change &change, const QList<Change> &gone)
{
    Rows order;
    Rows last;
    auto piece = gone.cbegin();
    for (qsizetype row = change.from; row < change.from + change.removed; ++row) {
        while (piece != gone.cend() && row >= piece->from + piece->removed)
            ++piece;
        const bool goes = piece != gone.cend() && row >= piece->from;
        (goes ? last : order).push_back(row - change.from);
    }
    order.insert(order.end(), last.begin(), last.end());
    arrange(change.from, order);
}

/// For each wanted item the row that has it now, counted from `from`; -1 for a new one.
ForeignItemModel::Rows ForeignItemModel::rowsOf(
    qsizetype from, qsizetype count, const SharedItems &wanted) const
{
    QHash<QString, qsizetype> present;
    present.reserve(count);
    for (qsizetype row = 0; row < count; ++row)
        present.insert(m_items.at(from + row).id, row);
    Rows rows;
    rows.reserve(size_t(wanted.size()));
    for (const SharedItem &item : wanted)
        rows.push_back(present.isEmpty() ? -1 : present.value(item.id, -1));
    return rows;
}

void ForeignItemModel::arrangeKept(qsizetype from, const Rows &rows)
{
    Rows order;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(order), [](qsizetype row) { return row >= 0; });
    arrange(from, order);
}

/// Puts those that are new, which are behind the others, to their places among them.
void ForeignItemModel::spread(qsizetype from, const Rows &rows, qsizetype kept)
{
    qsizetype nextKept = 0;
    qsizetype nextNew = kept;
    Rows order;
    order.reserve(rows.size());
    for (const qsizetype row : rows)
        order.push_back(row < 0 ? nextNew++ : nextKept++);
    arrange(from, order);
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
