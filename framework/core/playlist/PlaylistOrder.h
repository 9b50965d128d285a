// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <vector>

/// A sequence of item slots that also answers where a slot stands.
///
/// The inverse is brought up to date on demand and only from the first changed place on, so that series of
/// edits at the end stay cheap.
class PlaylistOrder
{
public:
    using Slot = quint32;
    static constexpr Slot NoSlot = ~Slot(0);

    int size() const { return int(m_slots.size()); }
    Slot at(int index) const { return m_slots[size_t(index)]; }
    const std::vector<Slot> &slots() const { return m_slots; }
    /// -1 when the slot is not in the sequence.
    int indexOf(Slot slot) const;

    void assign(std::vector<Slot> slots);
    void insert(int index, const std::vector<Slot> &slots);
    void remove(int from, int count);
    void replace(int index, Slot slot);
    void clear() { assign({}); }

private:
    void changedFrom(int index);

    std::vector<Slot> m_slots;
    mutable std::vector<quint32> m_indexes;
    mutable int m_known = 0; // The inverse holds for the first m_known places.
};
