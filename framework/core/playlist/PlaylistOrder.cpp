// SPDX-License-Identifier: MIT
#include "PlaylistOrder.h"

#include <algorithm>

int PlaylistOrder::indexOf(Slot slot) const
{
    const auto isAt = [&](quint32 index) {
        return int(index) < m_known && m_slots[index] == slot;
    };
    if (slot < m_indexes.size() && isAt(m_indexes[slot]))
        return int(m_indexes[slot]);
    for (; m_known < size(); ++m_known) {
        const Slot here = at(m_known);
        if (here == NoSlot)
            continue;
        if (here >= m_indexes.size())
            m_indexes.resize(here + 1, 0);
        m_indexes[here] = quint32(m_known);
    }
    return slot < m_indexes.size() && isAt(m_indexes[slot]) ? int(m_indexes[slot]) : -1;
}

void PlaylistOrder::assign(std::vector<Slot> slots)
{
    m_slots = std::move(slots);
    changedFrom(0);
    if (m_slots.empty())
        m_indexes = {};
}

void PlaylistOrder::insert(int index, const std::vector<Slot> &slots)
{
    m_slots.insert(m_slots.begin() + index, slots.begin(), slots.end());
    changedFrom(index);
}

void PlaylistOrder::remove(int from, int count)
{
    m_slots.erase(m_slots.begin() + from, m_slots.begin() + from + count);
    changedFrom(from);
}

void PlaylistOrder::replace(int index, Slot slot)
{
    m_slots[size_t(index)] = slot;
    if (slot != NoSlot)
        changedFrom(index);
}

void PlaylistOrder::changedFrom(int index)
{
    m_known = std::min(m_known, index);
}
