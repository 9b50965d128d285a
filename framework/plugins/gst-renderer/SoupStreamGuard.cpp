// SPDX-License-Identifier: MIT
#include "SoupStreamGuard.h"

#include <dlfcn.h>
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

gboolean noteEnd(GSignalInvocationHint *, guint, const GValue *arguments, gpointer);

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

/// What notes the end of messages, and the class of streams with another function for closing. Ends, as all statics of a
/// library, when that is unloaded.
class Guard
{
public:
    Guard() = default;
    Guard(const Guard &) = delete;
    Guard &operator=(const Guard &) = delete;
    ~Guard()
    {
        if (m_streams)
            m_streams->close_fn = closeOfLibrary;
        if (m_end && m_begin) {
            g_signal_remove_emission_hook(m_end, m_endHook);
            g_signal_remove_emission_hook(m_begin, m_beginHook);
        }
    }

    void watchMessages()
    {
        const std::lock_guard lock(m_mutex);
        const GType messages = m_end ? 0 : typeOfMessages();
        if (!messages)
            return;
        // No such class ever goes, as it belongs to no module of GLib's. Its signals come with it.
        g_type_class_ref(messages);
        m_begin = g_signal_lookup("starting", messages);
        m_end = g_signal_lookup("finished", messages);
        if (!m_end || !m_begin)
            return; // another version of it
        m_beginHook = g_signal_add_emission_hook(m_begin, 0, noteBegin, nullptr, nullptr);
        m_endHook = g_signal_add_emission_hook(m_end, 0, noteEnd, nullptr, nullptr);
    }

    /// The class is there when the first message of which there is a stream ends.
    void watchStreams()
    {
        if (closeOfLibrary)
            return;
        const std::lock_guard lock(m_mutex);
        const GType streams = m_streams ? 0 : g_type_from_name("SoupClientInputStream");
        if (!streams)
            return;
        auto *const type = static_cast<GObjectClass *>(g_type_class_ref(streams));
        if (!g_object_class_find_property(type, "message"))
            return; // another version of it
        m_streams = G_INPUT_STREAM_CLASS(type);
        closeOfLibrary = m_streams->close_fn;
        m_streams->close_fn = closeUnlessEnded;
    }

private:
    /// Of the library, if it is loaded, which GStreamer does itself; 0 otherwise.
    static GType typeOfMessages()
    {
        void *const library = dlopen("libsoup-3.0.so.0", RTLD_LAZY | RTLD_NOLOAD);
        if (!library)
            return 0;
        const auto type = reinterpret_cast<GType (*)()>(dlsym(library, "soup_message_get_type"));
        const GType messages = type ? type() : 0;
        dlclose(library); // NOLOAD counted it once more, and that is all that ends
        return messages;
    }

    std::mutex m_mutex;
    GInputStreamClass *m_streams = nullptr;
    guint m_end = 0;
    guint m_begin = 0;
    gulong m_endHook = 0;
    gulong m_beginHook = 0;
};

Guard &guard()
{
    static Guard guard;
    return guard;
}

gboolean noteEnd(GSignalInvocationHint *, guint, const GValue *arguments, gpointer)
{
    mark(arguments, true);
    guard().watchStreams();
    return TRUE;
}
} // namespace

void SoupStreamGuard::begin()
{
    guard().watchMessages();
}

int SoupStreamGuard::streamsLeft()
{
    return left;
}
