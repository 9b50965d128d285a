// SPDX-License-Identifier: MIT
#include "ItemStart.h"

#include "StateChange.h"

namespace {
constexpr qsizetype mostEarly = 20; // events
} // namespace

void ItemStart::reset(bool isStopSent)
{
    *this = {};
    m_isStopTried = isStopSent;
}

void ItemStart::accept()
{
    m_isStarting = true;
    ++m_playTries;
}

void ItemStart::begin()
{
    m_isStarting = false;
    if (!m_begun.isValid())
        m_begun.start();
}

bool ItemStart::doubt()
{
    if (std::exchange(m_isDoubted, true))
        return false;
    m_isStarting = true;
    m_playTries = StateChange::MostTries;
    return true;
}

bool ItemStart::hasBegunWithin(int milliseconds) const
{
    return m_begun.isValid() && !m_begun.hasExpired(milliseconds);
}

void ItemStart::keepEarly(const Upnp::Report &report, const QString &trackUri)
{
    const QString uri = report.values.value("CurrentTrackURI", trackUri);
    if (m_early.size() >= mostEarly || uri.isEmpty())
        return;
    m_early.append(report);
    m_early.last().values.insert("CurrentTrackURI", uri);
}
