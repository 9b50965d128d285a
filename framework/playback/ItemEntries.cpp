// SPDX-License-Identifier: MIT
#include "ItemEntries.h"

#include <utility>

void ItemEntries::begin(const KelvoMediaInfo &item, const QList<QUrl> &entries)
{
    *this = ItemEntries();
    m_item = item;
    m_entries = {item.url()};
    if (!entries.isEmpty())
        becomeList(entries);
}

void ItemEntries::becomeList(const QList<QUrl> &entries)
{
    m_isList = true;
    m_entries = entries;
    m_entry = 0;
}

KelvoContent ItemEntries::content() const
{
    return {m_item.uuid(), uri(), m_isList ? QString() : m_item.mimeType()};
}

void ItemEntries::lookInto(const KelvoError &failure)
{
    m_isLookedInto = true;
    m_heldFailure = failure;
}

KelvoError ItemEntries::takeHeldFailure()
{
    return std::exchange(m_heldFailure, {});
}

float ItemEntries::passOver(const KelvoError &failure)
{
    if (m_passedOver++ == 0)
        m_firstFailure = failure;
    return float(m_entry + 1) / float(m_entries.size());
}

std::optional<KelvoError> ItemEntries::takePassedOver()
{
    const int count = std::exchange(m_passedOver, 0);
    if (count == 0)
        return std::nullopt;
    const auto text = QStringLiteral("%1 of %2 entries of %3 do not play: %4");
    return KelvoError(m_firstFailure.code(),
        text.arg(QString::number(count), QString::number(m_entries.size()), m_item.url().toDisplayString(),
            m_firstFailure.message()));
}
