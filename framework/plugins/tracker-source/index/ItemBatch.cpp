// SPDX-License-Identifier: MIT
#include "ItemBatch.h"

#include <utility>

namespace {
constexpr size_t fullSize = 500;
} // namespace

ItemBatch::ItemBatch(StoreWriter &writer, KelvoIndexReport &report, Written written)
    : m_writer(writer)
    , m_report(report)
    , m_written(std::move(written))
{
}

MediaItem &ItemBatch::add(MediaItem item)
{
    return m_items.emplace_back(std::move(item));
}

bool ItemBatch::isFull() const
{
    return m_items.size() >= fullSize;
}

bool ItemBatch::write(StoreError *error)
{
    if (m_items.empty())
        return true;
    std::vector<bool> written;
    if (!m_writer.write(m_items, &written, error))
        return false;
    for (size_t i = 0; i < m_items.size(); ++i) {
        const MediaItem &item = m_items[i];
        if (!written[i])
            continue;
        if (m_written)
            m_written(item);
        m_report.failed += !item.isReadable;
        m_report.added += item.isNew;
        m_report.changed += !item.isNew;
    }
    m_items.clear();
    return true;
}
