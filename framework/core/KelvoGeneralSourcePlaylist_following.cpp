// SPDX-License-Identifier: MIT
#include "KelvoGeneralSourcePlaylist_p.h"

#include <algorithm>
#include <utility>

void KelvoGeneralSourcePlaylist::Private::follow(QAbstractItemModel *newModel)
{
    following.reset();
    layoutMarks.clear();
    model = newModel;
    view.setUnderlyingModel(newModel);
    if (newModel) {
        following = std::make_unique<QObject>();
        connectRows();
        connectColumns();
        QObject::connect(newModel, &QObject::destroyed, following.get(), [this] { modelDestroyed(); });
    }
    reload();
}

void KelvoGeneralSourcePlaylist::Private::connectRows()
{
    using Model = QAbstractItemModel;
    // Playlists are flat: rows below other rows are no items.
    const auto atTop = [this](auto function) {
        return [this, function](const QModelIndex &parent, int first, int last) {
            if (!parent.isValid())
                (this->*function)(first, last);
        };
    };
    QObject *context = following.get();
    QObject::connect(model, &Model::rowsInserted, context, atTop(&Private::rowsInserted));
    QObject::connect(model, &Model::rowsRemoved, context, atTop(&Private::rowsRemoved));
    QObject::connect(model, &Model::rowsMoved, context,
        [this](const QModelIndex &from, int first, int last, const QModelIndex &to, int destination) {
            if (!from.isValid() && !to.isValid())
                rowsMoved(first, last, destination);
            else if (!from.isValid())
                rowsRemoved(first, last);
            else if (!to.isValid())
                rowsInserted(destination, destination + last - first);
        });
    QObject::connect(model, &Model::modelReset, context, [this] { reload(); });
    QObject::connect(model, &Model::layoutAboutToBeChanged, context, [this] { rememberLayout(); });
    QObject::connect(model, &Model::layoutChanged, context, [this] { restoreLayout(); });
}

void KelvoGeneralSourcePlaylist::Private::connectColumns()
{
    using Model = QAbstractItemModel;
    QObject *context = following.get();
    const auto changed = [this](const QModelIndex &parent) {
        if (!parent.isValid())
            columnsChanged();
    };
    QObject::connect(model, &Model::columnsInserted, context, changed);
    QObject::connect(model, &Model::columnsRemoved, context, changed);
    QObject::connect(model, &Model::columnsMoved, context, changed);
    QObject::connect(model, &Model::headerDataChanged, context, [this](Qt::Orientation orientation) {
        if (orientation == Qt::Horizontal)
            headersChanged();
    });
    QObject::connect(model, &Model::dataChanged, context,
        [this](const QModelIndex &topLeft, const QModelIndex &bottomRight, const QList<int> &roles) {
            dataChanged(topLeft, bottomRight, roles);
        });
}

void KelvoGeneralSourcePlaylist::Private::reload()
{
    const auto before = uint(q->count());
    view.beginReplacing();
    items.clear();
    forgetArrangement();
    view.replaceColumns(model ? PlaylistColumns::of(*model) : PlaylistColumns());
    rows.assign(model ? readRows(0, model->rowCount() - 1) : Slots());
    view.endReplacing(rows.slots());
    const auto after = uint(q->count());
    if (before > 0 || after > 0)
        Q_EMIT q->contentsChanged(0, before, after);
}

KelvoGeneralSourcePlaylist::Private::Slots KelvoGeneralSourcePlaylist::Private::readRows(int first, int last)
{
    Slots slots;
    slots.reserve(size_t(std::max(0, last - first + 1)));
    for (int row = first; row <= last; ++row)
        slots.push_back(items.add(items.readRow(*model, row, view.columns())));
    return slots;
}

// Where an item of this row belongs in the play order: behind the item of the nearest row before it.
int KelvoGeneralSourcePlaylist::Private::playIndexFor(int row) const
{
    if (!followsModelOrder() || row >= rows.size())
        return view.order().size();
    while (row > 0) {
        if (const Slot slot = rows.at(--row); slot != PlaylistOrder::NoSlot)
            return view.order().indexOf(slot) + 1;
    }
    return 0;
}

// Signals of a model arrive out of turn when one of its receivers changes it again, and some models miss one.
// Rows that no longer fit are read anew rather than mixed up.
bool KelvoGeneralSourcePlaylist::Private::inStep(int growth)
{
    const QAbstractItemModel *source = model;
    if (source && rows.size() + growth == source->rowCount())
        return true;
    reload();
    return false;
}

void KelvoGeneralSourcePlaylist::Private::rowsInserted(int first, int last)
{
    if (!inStep(last - first + 1))
        return;
    const int at = playIndexFor(first);
    const Slots slots = readRows(first, last);
    rows.insert(first, slots);
    view.insertSlots(at, slots);
    Q_EMIT q->contentsChanged(uint(at), 0, uint(slots.size()));
}

void KelvoGeneralSourcePlaylist::Private::rowsRemoved(int first, int last)
{
    if (!inStep(first - last - 1))
        return;
    std::vector<Key> gone;
    for (int row = first; row <= last; ++row) {
        if (const Slot slot = rows.at(row); slot != PlaylistOrder::NoSlot)
            gone.push_back(items.keyOf(slot));
    }
    rows.remove(first, last - first + 1);
    remove(std::move(gone));
}

void KelvoGeneralSourcePlaylist::Private::rowsMoved(int first, int last, int destination)
{
    if (!inStep(0))
        return;
    Slots moved = rows.slots();
    const auto begin = moved.begin();
    if (destination > last)
        std::rotate(begin + first, begin + last + 1, begin + destination);
    else
        std::rotate(begin + destination, begin + first, begin + last + 1);
    rows.assign(std::move(moved));
    takeModelOrder();
}

void KelvoGeneralSourcePlaylist::Private::takeModelOrder()
{
    if (!followsModelOrder())
        return;
    Slots order = modelOrder();
    if (order != view.order().slots())
        arrange(std::move(order));
}

void KelvoGeneralSourcePlaylist::Private::dataChanged(
    const QModelIndex &topLeft, const QModelIndex &bottomRight, const QList<int> &roles)
{
    if (!topLeft.isValid() || topLeft.parent().isValid())
        return;
    if (!roles.isEmpty() && !roles.contains(Qt::DisplayRole) && !roles.contains(Qt::EditRole))
        return;
    rereadRows(topLeft.row(), bottomRight.row());
}

void KelvoGeneralSourcePlaylist::Private::rereadRows(int first, int last)
{
    const int n = q->count();
    int from = n, to = -1; // What to show again: also the columns that only the model has.
    int changedFrom = n, changedTo = -1;
    for (int row = first; row <= std::min(last, rows.size() - 1); ++row) {
        const Slot slot = rows.at(row);
        if (slot == PlaylistOrder::NoSlot)
            continue;
        const int at = view.order().indexOf(slot);
        from = std::min(from, at);
        to = std::max(to, at);
        if (items.update(slot, items.readRow(*model, row, view.columns()))) {
            changedFrom = std::min(changedFrom, at);
            changedTo = std::max(changedTo, at);
        }
    }
    if (to >= 0)
        view.showChanged(from, to);
    if (changedTo >= 0) {
        const auto changed = uint(changedTo - changedFrom + 1);
        Q_EMIT q->contentsChanged(uint(changedFrom), changed, changed);
    }
}

void KelvoGeneralSourcePlaylist::Private::headersChanged()
{
    const auto before = view.columns().byRole;
    view.setColumns(PlaylistColumns::of(*model));
    if (view.columns().byRole != before)
        rereadRows(0, rows.size() - 1);
}

void KelvoGeneralSourcePlaylist::Private::columnsChanged()
{
    view.setColumns(PlaylistColumns::of(*model));
    rereadRows(0, rows.size() - 1);
}

void KelvoGeneralSourcePlaylist::Private::rememberLayout()
{
    layoutMarks.clear();
    layoutMarks.reserve(size_t(rows.size()));
    for (int row = 0; row < rows.size(); ++row)
        layoutMarks.emplace_back(model->index(row, 0));
}

void KelvoGeneralSourcePlaylist::Private::restoreLayout()
{
    const auto marks = std::exchange(layoutMarks, {});
    if (model->columnCount() == 0)
        return;
    const bool complete = int(marks.size()) == rows.size() && model->rowCount() == rows.size()
        && std::all_of(marks.begin(), marks.end(), [](const auto &mark) { return mark.isValid(); });
    if (!complete) {
        reload(); // Rows came or went without a word: nothing of before holds.
        return;
    }
    Slots moved(marks.size(), PlaylistOrder::NoSlot);
    for (size_t row = 0; row < marks.size(); ++row)
        moved[size_t(marks[row].row())] = rows.at(int(row));
    rows.assign(std::move(moved));
    takeModelOrder();
}

// Too late to read anything from the model: what is kept was read before.
void KelvoGeneralSourcePlaylist::Private::modelDestroyed()
{
    layoutMarks.clear();
    rows.clear();
    view.setUnderlyingModel(nullptr);
    view.setColumns(view.columns().withoutModel());
}
