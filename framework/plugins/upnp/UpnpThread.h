// SPDX-License-Identifier: MIT
#pragma once

#include <QThread>

#include <functional>
#include <memory>

/// A thread that runs a GLib main loop of its own, so that nothing depends on the loop that Qt runs on.
///
/// Destroying it ends the thread in good order and does not wait for that; the end of the application does.
class UpnpThread
{
public:
    using Call = std::function<void()>;

    UpnpThread();
    ~UpnpThread();
    Q_DISABLE_COPY_MOVE(UpnpThread)

    /// Any thread. Runs the call on this thread, after those asked for before; dropped once the thread ends.
    void post(Call call) const;
    /// What the thread does when it ends: first the one, then, once what that sent is on its way, the other.
    void finishWith(Call leave, Call last)
    {
        m_leave = std::move(leave);
        m_last = std::move(last);
    }

private:
    struct Loop;
    std::shared_ptr<Loop> m_loop;
    std::unique_ptr<QThread> m_thread;
    Call m_leave;
    Call m_last;
};
