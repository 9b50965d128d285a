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

/// Where each item is, by its id, which no other has.
QHash<QString, qsizetype> placesOf(const SharedItems &items)
{
    QHash<QString, qsizetype> places;
    for (qsizetype place = 0; place < items.size(); ++place)
        places.insert(items.at(place).id, place);
    return places;
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
    // What stays goes to the front, so that what has gone, and then what is new, is in one piece.
    const qsizetype kept = gatherKept(change, wanted);
    remove(change.from + kept, change.removed - kept);
    insertMissing(change.from, kept, wanted);
    arrangeAs(change.from, wanted);
    update(items);
    return change;
}

/// How many stay.
qsizetype ForeignItemModel::gatherKept(const Change &change, const SharedItems &wanted)
{
    const QHash<QString, qsizetype> places = placesOf(wanted);
    const auto placeOf = [&](qsizetype row) {
        return places.value(m_items.at(change.from + row).id, -1);
    };
    Rows order(change.removed);
    std::iota(order.begin(), order.end(), 0);
    const auto gone = std::stable_partition(
        order.begin(), order.end(), [&placeOf](qsizetype row) { return placeOf(row) >= 0; });
    std::sort(order.begin(), gone,
        [&placeOf](qsizetype one, qsizetype other) { return placeOf(one) < placeOf(other); });
    const qsizetype kept = gone - order.begin();
    arrange(change.from, order);
    return kept;
}

void ForeignItemModel::insertMissing(qsizetype from, qsizetype kept, const SharedItems &wanted)
{
    const QHash<QString, qsizetype> present = placesOf(m_items.mid(from, kept));
    SharedItems missing;
    std::copy_if(wanted.begin(), wanted.end(), std::back_inserter(missing),
        [&present](const SharedItem &item) { return !present.contains(item.id); });
    insert(from + kept, missing);
}

void ForeignItemModel::arrangeAs(qsizetype from, const SharedItems &wanted)
{
    const QHash<QString, qsizetype> places = placesOf(m_items.mid(from, wanted.size()));
    Rows order;
    for (const SharedItem &item : wanted)
        order.append(places.value(item.id));
    arrange(from, order);
}

/// Brings to each row from `from` on the item that is so many rows behind `from`.
void ForeignItemModel::arrange(qsizetype from, const Rows &order)
{
    if (std::is_sorted(order.begin(), order.end()))
        return;
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    const SharedItems before = m_items.mid(from, order.size());
    QHash<int, int> moved;
    for (qsizetype place = 0; place < order.size(); ++place) {
        m_items[from + place] = before.at(order.at(place));
        moved.insert(int(from + order.at(place)), int(from + place));
    }
    const QModelIndexList old = persistentIndexList();
    QModelIndexList now;
    for (const QModelIndex &each : old)
        now.append(index(moved.value(each.row(), each.row()), each.column()));
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
    m_items = m_items.mid(0, from) + items + m_items.mid(from);
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
