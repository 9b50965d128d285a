// SPDX-License-Identifier: MIT
#include "PlaylistSorting.h"

#include <QCollator>
#include <QRandomGenerator>

#include <algorithm>
#include <numeric>

namespace {
using Slots = std::vector<PlaylistOrder::Slot>;

template <typename Key> Slots sortedByKey(const Slots &slots, const std::vector<Key> &keys, auto less)
{
    std::vector<quint32> order(slots.size());
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(
        order.begin(), order.end(), [&](quint32 a, quint32 b) { return less(keys[a], keys[b]); });
    Slots sorted(slots.size());
    std::transform(order.begin(), order.end(), sorted.begin(), [&](quint32 at) { return slots[at]; });
    return sorted;
}

QCollator titleCollator()
{
    QCollator collator;
    // The "C" locale has no rules for words and knows no case; the root rules, as English uses them, do.
    if (collator.locale().language() == QLocale::C)
        collator.setLocale(QLocale(QLocale::English));
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}
} // namespace

Slots sortedByTitle(const Slots &slots, const PlaylistItems &items, bool descending)
{
    const QCollator collator = titleCollator();
    std::vector<QCollatorSortKey> keys;
    keys.reserve(slots.size());
    for (const auto slot : slots)
        keys.push_back(collator.sortKey(items.shownTitle(slot)));
    return sortedByKey(
        slots, keys, [descending](const auto &a, const auto &b) { return descending ? b < a : a < b; });
}

Slots sortedByDuration(const Slots &slots, const PlaylistItems &items, bool descending)
{
    std::vector<int> keys;
    keys.reserve(slots.size());
    for (const auto slot : slots)
        keys.push_back(items.at(slot).duration);
    return sortedByKey(slots, keys, [descending](int a, int b) {
        if (a < 0 || b < 0)
            return a >= 0 && b < 0;
        return descending ? b < a : a < b;
    });
}

Slots inRandomOrder(const Slots &slots)
{
    Slots order = slots;
    // A shuffle that changes nothing would look like one that failed.
    do
        std::shuffle(order.begin(), order.end(), *QRandomGenerator::global());
    while (order.size() > 1 && order == slots);
    return order;
}
