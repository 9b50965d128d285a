// SPDX-License-Identifier: MIT
#include "RendererAbilities.h"

#include "UpnpText.h"

#include <algorithm>

void RendererAbilities::setActions(const QString &list)
{
    m_actions = UpnpText::parseActions(list);
}

RemoteTransport::Abilities RendererAbilities::now(bool isPlaying) const
{
    RemoteTransport::Abilities able;
    if (m_limits.actions.isEmpty())
        return able;
    able.seek = m_limits.actions.contains("Seek");
    able.pause = m_limits.actions.contains("Pause");
    able.volume = m_limits.actions.contains("SetVolume");
    if (isPlaying && !m_actions.isEmpty()) {
        able.seek = able.seek && m_actions.contains(QStringLiteral("seek"));
        able.pause = able.pause && m_actions.contains(QStringLiteral("pause"));
    }
    for (const QString &text : m_limits.speeds) {
        const double speed = UpnpText::parseSpeed(text).value_or(1);
        able.slowestRate = std::min(able.slowestRate, speed);
        able.fastestRate = std::max(able.fastestRate, speed);
    }
    return able;
}

QString RendererAbilities::nearestSpeed(double rate) const
{
    return UpnpText::nearestSpeed(m_limits.speeds, rate);
}
