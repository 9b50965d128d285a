// SPDX-License-Identifier: MIT
#include "PlaylistContents.h"

#include "PlaylistSorting.h"

#include <algorithm>
#include <utility>

int PlaylistContents::indexOf(const QString &mediaUuid) const
{
    return m_view.order().indexOf(m_items.slotOfUuid(mediaUuid));
}

void PlaylistContents::shuffle()
{
    const Slots &order = m_view.order().slots();
    if (!m_shuffled) {
        m_shuffled = true;
        m_orderBeforeShuffle.reserve(order.size());
        for (const Slot slot : order)
            m_orderBeforeShuffle.push_back(m_items.keyOf(slot));
    }
    arrange(inRandomOrder(order));
}

void PlaylistContents::unshuffle()
{
    if (!m_shuffled)
        return;
    Slots order;
    for (const Key key : std::exchange(m_orderBeforeShuffle, {})) {
        if (const Slot slot = m_items.slotOf(key); slot != PlaylistOrder::NoSlot)
            order.push_back(slot);
    }
    PlaylistOrder restored;
    restored.assign(order);
    for (const Slot slot : m_view.order().slots()) {
        if (restored.indexOf(slot) < 0)
            order.push_back(slot);
    }
    m_shuffled = false;
    m_sorted = order != modelOrder();
    arrange(std::move(order));
}

void PlaylistContents::sortByTitle(bool descending)
{
    arrangeForGood(sortedByTitle(m_view.order().slots(), m_items, descending));
}

void PlaylistContents::sortByDuration(bool descending)
{
    arrangeForGood(sortedByDuration(m_view.order().slots(), m_items, descending));
}

void PlaylistContents::arrangeForGood(Slots order)
{
    forgetArrangement();
    m_sorted = true;
    arrange(std::move(order));
}

void PlaylistContents::arrange(Slots order)
{
    if (order.empty())
        return;
    const auto n = uint(order.size());
    m_view.reorder(std::move(order));
    Q_EMIT changed(0, n, n);
}

void PlaylistContents::forgetArrangement()
{
    m_sorted = false;
    m_shuffled = false;
    m_orderBeforeShuffle = {};
}

PlaylistContents::Slots PlaylistContents::modelOrder() const
{
    Slots order;
    order.reserve(size_t(m_rows.size()));
    std::copy_if(m_rows.slots().begin(), m_rows.slots().end(), std::back_inserter(order),
        [](Slot slot) { return slot != PlaylistOrder::NoSlot; });
    return order;
}

void PlaylistContents::remove(int from, int count)
{
    const Slots &order = m_view.order().slots();
    const Slots gone(order.begin() + from, order.begin() + from + count);
    m_view.removeSlots(from, count);
    for (const Slot slot : gone) {
        if (const int row = m_rows.indexOf(slot); row >= 0)
            m_rows.replace(row, PlaylistOrder::NoSlot);
        m_items.remove(slot);
    }
    if (m_view.order().size() == 0) {
        m_items.clear();
        forgetArrangement();
    }
    Q_EMIT changed(uint(from), uint(count), 0);
}

// In runs of neighbours, the last run first, so that each signal tells what happened where. A receiver may
// edit the playlist in between: places are looked up anew for each run.
void PlaylistContents::remove(std::vector<Key> keys)
{
    const QUuid series = m_items.series();
    const PlaylistOrder &order = m_view.order();
    std::sort(keys.begin(), keys.end(),
        [&](Key a, Key b) { return order.indexOf(m_items.slotOf(a)) < order.indexOf(m_items.slotOf(b)); });
    while (!keys.empty() && m_items.series() == series) {
        const int last = order.indexOf(m_items.slotOf(keys.back()));
        keys.pop_back();
        int from = last;
        while (from > 0 && !keys.empty() && order.at(from - 1) == m_items.slotOf(keys.back())) {
            keys.pop_back();
            --from;
        }
        if (last >= 0)
            remove(from, last - from + 1);
    }
}

void PlaylistContents::load(const QAbstractItemModel *model)
{
    const auto before = uint(count());
    m_view.beginReplacing();
    m_items.clear();
    forgetArrangement();
    m_view.replaceColumns(model ? PlaylistColumns::of(*model) : PlaylistColumns());
    m_rows.assign(model ? readRows(*model, 0, model->rowCount() - 1) : Slots());
    m_view.endReplacing(m_rows.slots());
    const auto after = uint(count());
    if (before > 0 || after > 0)
        Q_EMIT changed(0, before, after);
}

PlaylistContents::Slots PlaylistContents::readRows(const QAbstractItemModel &model, int first, int last)
{
    Slots slots;
    slots.reserve(size_t(std::max(0, last - first + 1)));
    for (int row = first; row <= last; ++row)
        slots.push_back(m_items.add(m_items.readRow(model, row, m_view.columns())));
    return slots;
}

// Where an item of this row belongs in the play order: behind the item of the nearest row before it.
int PlaylistContents::playIndexFor(int row) const
{
    if (!followsModelOrder() || row >= m_rows.size())
        return m_view.order().size();
    while (row > 0) {
        if (const Slot slot = m_rows.at(--row); slot != PlaylistOrder::NoSlot)
            return m_view.order().indexOf(slot) + 1;
    }
    return 0;
}

void PlaylistContents::insertRows(const QAbstractItemModel &model, int first, int last)
{
    const int at = playIndexFor(first);
    const Slots slots = readRows(model, first, last);
    m_rows.insert(first, slots);
    m_view.insertSlots(at, slots);
    Q_EMIT changed(uint(at), 0, uint(slots.size()));
}

void PlaylistContents::removeRows(int first, int last)
{
    std::vector<Key> gone;
    for (int row = first; row <= last; ++row) {
        if (const Slot slot = m_rows.at(row); slot != PlaylistOrder::NoSlot)
            gone.push_back(m_items.keyOf(slot));
    }
    m_rows.remove(first, last - first + 1);
    remove(std::move(gone));
}

void PlaylistContents::reorderRows(Slots rows)
{
    m_rows.assign(std::move(rows));
    if (!followsModelOrder())
        return;
    Slots order = modelOrder();
    if (order != m_view.order().slots())
        arrange(std::move(order));
}

void PlaylistContents::rereadRows(const QAbstractItemModel &model, int first, int last)
{
    const int n = count();
    int from = n, to = -1; // What to show again: also the columns that only the model has.
    int changedFrom = n, changedTo = -1;
    for (int row = first; row <= std::min(last, m_rows.size() - 1); ++row) {
        const Slot slot = m_rows.at(row);
        if (slot == PlaylistOrder::NoSlot)
            continue;
        const int at = m_view.order().indexOf(slot);
        from = std::min(from, at);
        to = std::max(to, at);
        if (m_items.update(slot, m_items.readRow(model, row, m_view.columns()))) {
            changedFrom = std::min(changedFrom, at);
            changedTo = std::max(changedTo, at);
        }
    }
    if (to >= 0)
        m_view.showChanged(from, to);
    if (changedTo >= 0) {
        const auto updated = uint(changedTo - changedFrom + 1);
        Q_EMIT changed(uint(changedFrom), updated, updated);
    }
}

void PlaylistContents::detach()
{
    m_rows.clear();
    m_view.setUnderlyingModel(nullptr);
    m_view.setColumns(m_view.columns().withoutModel());
}
