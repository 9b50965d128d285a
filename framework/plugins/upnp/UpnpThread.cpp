// SPDX-License-Identifier: MIT
#include "UpnpThread.h"

#include "GlibLog.h"
#include "HandOver.h"
#include "ThreadEnd.h"

#include <glib.h>

namespace {
constexpr guint leaveTime = 100; // milliseconds

using QueuedCall = HandedCall<UpnpThread::Call>;

int runCall(void *call)
{
    (*static_cast<QueuedCall *>(call))();
    return G_SOURCE_REMOVE;
}

void deleteCall(void *call)
{
    delete static_cast<QueuedCall *>(call);
}
} // namespace

struct UpnpThread::Loop
{
    GMainContext *context = g_main_context_new();
    GMainLoop *loop = g_main_loop_new(context, FALSE);

    Loop() = default;
    Q_DISABLE_COPY_MOVE(Loop)
    ~Loop()
    {
        g_main_loop_unref(loop);
        g_main_context_unref(context);
    }

    void post(Call call) const { attach(g_idle_source_new(), std::move(call)); }
    void postLater(guint milliseconds, Call call) const
    {
        attach(g_timeout_source_new(milliseconds), std::move(call));
    }
    void attach(GSource *source, Call call) const
    {
        g_source_set_priority(source, G_PRIORITY_DEFAULT);
        g_source_set_callback(source, runCall, new QueuedCall(std::move(call)), deleteCall);
        g_source_attach(source, context);
        g_source_unref(source);
    }

    void run() const
    {
        g_main_context_push_thread_default(context);
        GlibLog::catchXmlErrors();
        g_main_loop_run(loop);
        // What was cancelled still has to hear of it, else it would never be released.
        while (g_main_context_iteration(context, FALSE)) { }
        g_main_context_pop_thread_default(context);
    }
};

UpnpThread::UpnpThread()
    : m_loop(std::make_shared<Loop>())
    , m_thread(QThread::create([loop = m_loop] { loop->run(); }))
{
    m_thread->setObjectName(QStringLiteral("kelvo-upnp"));
    m_thread->start();
}

UpnpThread::~UpnpThread()
{
    deleteWhenEnded(std::move(m_thread));
    post([loop = m_loop, leave = m_leave, last = m_last] {
        leave();
        loop->postLater(leaveTime, [loop, last] {
            last();
            g_main_loop_quit(loop->loop);
        });
    });
}

void UpnpThread::post(Call call) const
{
    m_loop->post(std::move(call));
}
