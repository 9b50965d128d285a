// SPDX-License-Identifier: MIT
#include "EventWriter.h"

#include "EventRing.h"

#include <utility>

EventWriter::EventWriter(EventRing &ring, Clock::time_point begin, std::function<void()> appended)
    : m_ring(ring)
    , m_begin(begin)
    , m_appended(std::move(appended))
{
}

void EventWriter::note(
    const QString &uuid, std::string_view kind, std::string_view name, const QVariantList &arguments) const
{
    EventLine line = begin(uuid, kind, name);
    for (const QVariant &argument : arguments)
        line.add(argument);
    append(line);
}

EventLine EventWriter::begin(const QString &uuid, std::string_view kind, std::string_view name) const
{
    return {Clock::now() - m_begin, uuid, kind, name};
}

void EventWriter::append(EventLine &line) const
{
    m_ring.append(line.finish());
    if (m_appended)
        m_appended();
}
