// SPDX-License-Identifier: MIT
#include "ItemInDevice.h"

#include "UpnpText.h"

#include <algorithm>
#include <utility>

bool ItemInDevice::isOurs(const QString &uri) const
{
    return UpnpText::isSameUri(uri, m_uri);
}

void ItemInDevice::accept(const QString &uri)
{
    if (std::exchange(m_isTrackOurs, false))
        m_before.clear();
    m_before += {m_uri, m_foreignUri};
    m_uri = uri;
}

bool ItemInDevice::hearTrack(const QString &uri)
{
    if (!uri.isEmpty() && uri != QLatin1String("NOT_IMPLEMENTED"))
        m_trackUri = uri;
    // Once it is at our item, what it does not name has not changed.
    const QString &track = m_isTrackOurs ? uri : m_trackUri;
    const auto isTrack = [&track](const QString &known) {
        return UpnpText::isSameUri(known, track);
    };
    return track.isEmpty() || isOurs(track) || std::none_of(m_before.cbegin(), m_before.cend(), isTrack);
}

bool ItemInDevice::isTrackDoubtful() const
{
    return !m_isTrackOurs && std::any_of(m_before.cbegin(), m_before.cend(), [this](const QString &known) {
        return !known.isEmpty() && !isOurs(known);
    });
}
