// SPDX-License-Identifier: MIT
#pragma once

#include "GupnpHandles.h"
#include "UpnpTypes.h"

#include <memory>
#include <vector>

/// Actions that are under way. UPnP thread.
///
/// Each is cancelled when its time is up, and each is answered exactly once, from the main loop, but for those
/// that are still under way when this object is destroyed.
class Calls
{
public:
    Calls() = default;
    ~Calls();
    Q_DISABLE_COPY_MOVE(Calls)

    /// Keeps the proxy alive for as long as it takes.
    void run(GUPnPServiceProxy *proxy, const Upnp::Call &call, Upnp::AnswerHandler handler);
    bool isEmpty() const { return m_running.empty(); }

private:
    struct Running;
    static void finished(GObject *proxy, GAsyncResult *result, void *running);
    static int timedOut(void *data);
    void forget(Running *running);

    std::vector<Running *> m_running; // that are waited for; each deletes itself when it has finished
};
