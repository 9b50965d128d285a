// SPDX-License-Identifier: MIT
#include "KelvoItemFacts.h"

#include <algorithm>

void KelvoItemFacts::announce(const KelvoContent &content, bool belongsToPlaylist)
{
    if (!belongsToPlaylist || content.uuid != m_item.uuid)
        m_facts.clear();
    m_item = content;
}

bool KelvoItemFacts::take(const QString &key, const QList<QVariant> &values)
{
    if (values.isEmpty())
        return false;
    if (m_of != m_item.url)
        m_facts.clear();
    m_of = m_item.url;
    const auto known
        = std::find_if(m_facts.begin(), m_facts.end(), [&key](const Fact &fact) { return fact.key == key; });
    if (known == m_facts.end()) {
        m_facts.push_back({key, values});
        return true;
    }
    const bool isNews = known->values.constFirst().toString() != values.constFirst().toString();
    known->values = values;
    return isNews;
}

std::vector<KelvoItemFacts::Fact> KelvoItemFacts::told() const
{
    return m_of == m_item.url ? m_facts : std::vector<Fact>();
}
