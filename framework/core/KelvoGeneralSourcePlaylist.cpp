// SPDX-License-Identifier: MIT
#include "KelvoGeneralSourcePlaylist.h"

#include "KelvoGeneralSourcePlaylist_p.h"
#include "KelvoMessageHandler.h"
#include "playlist/PlaylistSorting.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {
// An index as its caller meant it: -1 arrives here as the largest number.
qint64 meant(uint index)
{
    return index > uint(std::numeric_limits<int>::max()) ? qint64(int(index)) : qint64(index);
}
} // namespace

KelvoGeneralSourcePlaylist::KelvoGeneralSourcePlaylist(
    const QString &id, const QString &name, const QString &sourceUuid, QObject *parent)
    : KelvoPlaylistBase(parent)
    , d(std::make_unique<Private>(this))
{
    d->id = id;
    d->name = name;
    d->sourceUuid = sourceUuid;
}

KelvoGeneralSourcePlaylist::~KelvoGeneralSourcePlaylist() = default;

QString KelvoGeneralSourcePlaylist::uuid() const
{
    return d->id;
}

QString KelvoGeneralSourcePlaylist::name() const
{
    return d->name;
}

QString KelvoGeneralSourcePlaylist::sourceUuid() const
{
    return d->sourceUuid;
}

QAbstractItemModel *KelvoGeneralSourcePlaylist::itemModel()
{
    return &d->view;
}

int KelvoGeneralSourcePlaylist::count() const
{
    return d->view.order().size();
}

KelvoMediaInfo KelvoGeneralSourcePlaylist::mediaInfoAt(uint index) const
{
    return index < uint(count()) ? d->items.mediaInfo(d->view.order().at(int(index))) : KelvoMediaInfo();
}

int KelvoGeneralSourcePlaylist::indexOf(const QString &mediaUuid) const
{
    return d->view.order().indexOf(d->items.slotOfUuid(mediaUuid));
}

bool KelvoGeneralSourcePlaylist::isShuffled() const
{
    return d->shuffled;
}

void KelvoGeneralSourcePlaylist::shuffle()
{
    const auto &order = d->view.order().slots();
    if (!d->shuffled) {
        d->shuffled = true;
        d->orderBeforeShuffle.reserve(order.size());
        for (const auto slot : order)
            d->orderBeforeShuffle.push_back(d->items.keyOf(slot));
    }
    d->arrange(inRandomOrder(order));
}

void KelvoGeneralSourcePlaylist::unshuffle()
{
    if (!d->shuffled)
        return;
    std::vector<PlaylistItems::Slot> order;
    for (const auto key : std::exchange(d->orderBeforeShuffle, {})) {
        if (const auto slot = d->items.slotOf(key); slot != PlaylistOrder::NoSlot)
            order.push_back(slot);
    }
    PlaylistOrder restored;
    restored.assign(order);
    for (const auto slot : d->view.order().slots()) {
        if (restored.indexOf(slot) < 0)
            order.push_back(slot);
    }
    d->shuffled = false;
    d->sorted = order != d->modelOrder();
    d->arrange(std::move(order));
}

int KelvoGeneralSourcePlaylist::repeatMode() const
{
    return d->repeatMode;
}

void KelvoGeneralSourcePlaylist::setRepeatMode(int mode)
{
    if (mode != RepeatAll && mode != RepeatOff && mode != RepeatOne) {
        qCWarning(lcKelvo) << "Playlist" << d->name << "knows no repeat mode" << mode;
        return;
    }
    if (std::exchange(d->repeatMode, mode) != mode)
        Q_EMIT repeatModeChanged(mode);
}

void KelvoGeneralSourcePlaylist::sort(const QString &key, int order)
{
    const bool byTitle = key == SortKeyTitle && (order == TitleAscending || order == TitleDescending);
    const bool byDuration
        = key == SortKeyDuration && (order == DurationAscending || order == DurationDescending);
    if (!byTitle && !byDuration) {
        qCWarning(lcKelvo) << "Playlist" << d->name << "cannot be sorted by" << key << "in order" << order;
        return;
    }
    const auto &slots = d->view.order().slots();
    auto sorted = byTitle ? sortedByTitle(slots, d->items, order == TitleDescending)
                          : sortedByDuration(slots, d->items, order == DurationDescending);
    d->forgetArrangement();
    d->sorted = true;
    d->arrange(std::move(sorted));
}

void KelvoGeneralSourcePlaylist::removeItem(uint index)
{
    if (index >= uint(count())) {
        qCWarning(lcKelvo) << "Playlist" << d->name << "has no item" << meant(index) << "to remove, only"
                           << count() << "items";
        return;
    }
    d->remove(int(index), 1);
}

void KelvoGeneralSourcePlaylist::removeItems(uint from, uint to)
{
    if (from >= uint(count()) || to < from) {
        qCWarning(lcKelvo) << "Playlist" << d->name << "has no items" << meant(from) << "to" << meant(to)
                           << "to remove, only" << count() << "items";
        return;
    }
    d->remove(int(from), int(std::min(to, uint(count()) - 1) - from + 1));
}

void KelvoGeneralSourcePlaylist::clear()
{
    if (count() > 0)
        d->remove(0, count());
}

void KelvoGeneralSourcePlaylist::setUnderlyingModel(QAbstractItemModel *model)
{
    d->follow(model);
}

QAbstractItemModel *KelvoGeneralSourcePlaylist::underlyingModel() const
{
    return d->model;
}

void KelvoGeneralSourcePlaylist::Private::arrange(Slots order)
{
    if (order.empty())
        return;
    const auto n = uint(order.size());
    view.reorder(std::move(order));
    Q_EMIT q->contentsChanged(0, n, n);
}

void KelvoGeneralSourcePlaylist::Private::remove(int from, int count)
{
    const auto &order = view.order().slots();
    const Slots gone(order.begin() + from, order.begin() + from + count);
    view.removeSlots(from, count);
    for (const Slot slot : gone) {
        if (const int row = rows.indexOf(slot); row >= 0)
            rows.replace(row, PlaylistOrder::NoSlot);
        items.remove(slot);
    }
    if (view.order().size() == 0) {
        items.clear();
        forgetArrangement();
    }
    Q_EMIT q->contentsChanged(uint(from), uint(count), 0);
}

// In runs of neighbours, the last run first, so that each signal tells what happened where. A receiver may
// edit the playlist in between: places are looked up anew for each run.
void KelvoGeneralSourcePlaylist::Private::remove(std::vector<Key> keys)
{
    const QUuid series = items.series();
    const PlaylistOrder &order = view.order();
    std::sort(keys.begin(), keys.end(),
        [&](Key a, Key b) { return order.indexOf(items.slotOf(a)) < order.indexOf(items.slotOf(b)); });
    while (!keys.empty() && items.series() == series) {
        const int last = order.indexOf(items.slotOf(keys.back()));
        keys.pop_back();
        int from = last;
        while (from > 0 && !keys.empty() && order.at(from - 1) == items.slotOf(keys.back())) {
            keys.pop_back();
            --from;
        }
        if (last >= 0)
            remove(from, last - from + 1);
    }
}

void KelvoGeneralSourcePlaylist::Private::forgetArrangement()
{
    sorted = false;
    shuffled = false;
    orderBeforeShuffle = {};
}

KelvoGeneralSourcePlaylist::Private::Slots KelvoGeneralSourcePlaylist::Private::modelOrder() const
{
    Slots order;
    order.reserve(size_t(rows.size()));
    std::copy_if(rows.slots().begin(), rows.slots().end(), std::back_inserter(order),
        [](Slot slot) { return slot != PlaylistOrder::NoSlot; });
    return order;
}
