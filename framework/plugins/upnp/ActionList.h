// SPDX-License-Identifier: MIT
#pragma once

#include "GupnpHandles.h"

#include <QByteArray>

#include <functional>
#include <memory>

/// Asks a service's own description whether it has an action. UPnP thread.
class ActionList
{
public:
    using Handler = std::function<void(bool)>;

    /// The handler is called once, from the main loop, unless this object is destroyed first. A description that
    /// cannot be read has no actions.
    ActionList(GUPnPServiceProxy *service, const QByteArray &action, Handler handler);
    ~ActionList();
    Q_DISABLE_COPY_MOVE(ActionList)

private:
    struct Question
    {
        QByteArray action;
        Handler handler;
    };
    static void finished(GObject *service, GAsyncResult *result, void *question);

    const std::shared_ptr<Question> m_question; // what the late callback finds us by
    const GlibHandles::Object<GCancellable> m_cancellable;
};
