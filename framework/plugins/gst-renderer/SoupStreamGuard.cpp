// SPDX-License-Identifier: MIT
#include "SoupStreamGuard.h"

#include <gio/gio.h>

#include <atomic>
#include <mutex>

namespace {
using Close = gboolean (*)(GInputStream *, GCancellable *, GError **);

std::atomic<Close> closeOfLibrary = nullptr;
std::atomic<int> left = 0;

GQuark endMark()
{
    static const GQuark quark = g_quark_from_static_string("kelvo-message-has-ended");
    return quark;
}

void mark(const GValue *message, bool hasEnded)
{
    g_object_set_qdata(G_OBJECT(g_value_get_object(message)), endMark(), GINT_TO_POINTER(int(hasEnded)));
}

gboolean noteEnd(GSignalInvocationHint *, guint, const GValue *arguments, gpointer)
{
    mark(arguments, true);
    return TRUE;
}

/// A message may be sent again, by a redirection for instance.
gboolean noteBegin(GSignalInvocationHint *, guint, const GValue *arguments, gpointer)
{
    mark(arguments, false);
    return TRUE;
}

gboolean closeUnlessEnded(GInputStream *stream, GCancellable *cancellable, GError **error)
{
    GObject *message = nullptr;
    g_object_get(stream, "message", &message, nullptr);
    const bool hasEnded = message && g_object_get_qdata(message, endMark());
    g_clear_object(&message);
    if (!hasEnded)
        return closeOfLibrary.load()(stream, cancellable, error);
    ++left;
    return TRUE;
}

/// The class with another function for closing. Ends, as all statics of a library, when that is unloaded.
class Guard
{
public:
    ~Guard()
    {
        if (!m_streams)
            return;
        m_streams->close_fn = closeOfLibrary;
        g_signal_remove_emission_hook(m_end, m_endHook);
        g_signal_remove_emission_hook(m_begin, m_beginHook);
    }

    void begin()
    {
        const std::lock_guard lock(m_mutex);
        const GType streams = g_type_from_name("SoupClientInputStream");
        const GType messages = g_type_from_name("SoupMessage");
        if (m_streams || !streams || !messages)
            return;
        m_end = g_signal_lookup("finished", messages);
        m_begin = g_signal_lookup("starting", messages);
        // Neither class ever goes, as it belongs to no module of GLib's.
        auto *const type = static_cast<GObjectClass *>(g_type_class_ref(streams));
        if (!m_end || !m_begin || !g_object_class_find_property(type, "message"))
            return; // another version of it
        m_endHook = g_signal_add_emission_hook(m_end, 0, noteEnd, nullptr, nullptr);
        m_beginHook = g_signal_add_emission_hook(m_begin, 0, noteBegin, nullptr, nullptr);
        m_streams = G_INPUT_STREAM_CLASS(type);
        closeOfLibrary = m_streams->close_fn;
        m_streams->close_fn = closeUnlessEnded;
    }

private:
    std::mutex m_mutex;
    GInputStreamClass *m_streams = nullptr;
    guint m_end = 0;
    guint m_begin = 0;
    gulong m_endHook = 0;
    gulong m_beginHook = 0;
};
} // namespace

void SoupStreamGuard::begin()
{
    static Guard guard;
    guard.begin();
}

int SoupStreamGuard::streamsLeft()
{
    return left;
}
