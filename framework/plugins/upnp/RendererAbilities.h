// SPDX-License-Identifier: MIT
#pragma once

#include "RemoteTransport.h"
#include "UpnpTypes.h"

/// What a renderer can do, by the descriptions of its services and by its CurrentTransportActions.
class RendererAbilities
{
public:
    void setLimits(const Upnp::RendererLimits &limits) { m_limits = limits; }
    /// A value of CurrentTransportActions, about the present state.
    void setActions(const QString &list);
    /// The device has gone to another state.
    void forgetActions() { m_actions.clear(); }

    RemoteTransport::Abilities now(bool isPlaying) const;
    /// As a TransportPlaySpeed.
    QString nearestSpeed(double rate) const;

private:
    Upnp::RendererLimits m_limits;
    QSet<QString> m_actions; // of the present state; empty: not said
};
