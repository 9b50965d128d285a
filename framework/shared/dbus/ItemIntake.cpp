// SPDX-License-Identifier: MIT
#include "ItemIntake.h"

#include <algorithm>
#include <limits>

using namespace PlaylistProtocol;

void ItemIntake::expect(uint items)
{
    m_ids.reserve(std::min(qsizetype(items), maxItems));
}

bool ItemIntake::take(SharedItems &items)
{
    const bool all = cut(items);
    for (SharedItem &item : items)
        repair(item);
    return all;
}

bool ItemIntake::cut(SharedItems &items)
{
    auto end = items.cbegin();
    const auto most = items.cbegin() + std::min(items.size(), maxItems - m_count);
    for (; end != most && m_characters <= maxCharacters; ++end)
        m_characters += end->characters();
    const bool all = end == items.cend() && m_characters <= maxCharacters;
    items.erase(end, items.cend());
    return all;
}

/// Renderers find their place in the list by the items' ids.
void ItemIntake::repair(SharedItem &item)
{
    while (item.id.isEmpty() || m_ids.contains(item.id))
        item.id += QStringLiteral("#%1").arg(m_count);
    m_ids.insert(item.id);
    item.title.truncate(maxTextCharacters);
    item.duration = std::clamp<qlonglong>(item.duration, -1, std::numeric_limits<int>::max());
    ++m_count;
}
