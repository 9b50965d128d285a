// SPDX-License-Identifier: MIT
#pragma once

#include "UpnpTypes.h"

#include <QObject>

/// One renderer of the network, as seen from the GUI thread.
class RendererLink : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    virtual QString deviceName() const = 0;
    /// The handler is called once, from the event loop, unless this object is destroyed first.
    virtual void call(const Upnp::Call &call, Upnp::AnswerHandler handler) = 0;

Q_SIGNALS:
    void reported(const Upnp::Report &report);
    void limitsKnown(const Upnp::RendererLimits &limits);
    void renamed(const QString &name);
};
