// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <glib-object.h>

#include <memory>

/// Owners of what GLib hands out, one per kind of release. Those of libraries on top of it are made the same way.
namespace GlibHandles {

template <auto release> struct Releaser
{
    template <typename T> void operator()(T *object) const { release(object); }
};

/// One reference to a GObject, which is taken over from the caller.
template <typename T> using Object = std::unique_ptr<T, Releaser<g_object_unref>>;
using Text = std::unique_ptr<char, Releaser<g_free>>;
using Source = std::unique_ptr<GSource, Releaser<g_source_unref>>;

/// A reference of its own to an object that somebody else owns; null stays null.
template <typename T> Object<T> share(T *object)
{
    return Object<T>(object ? static_cast<T *>(g_object_ref(object)) : nullptr);
}

/// A GError that a call fills in through out().
class Error
{
public:
    Error() = default;
    Q_DISABLE_COPY_MOVE(Error)
    ~Error() { g_clear_error(&m_error); }

    /// Forgets an earlier one: calls insist on that.
    GError **out()
    {
        g_clear_error(&m_error);
        return &m_error;
    }
    const GError *operator->() const { return m_error; }
    const GError *get() const { return m_error; }
    explicit operator bool() const { return m_error; }

private:
    GError *m_error = nullptr;
};

} // namespace GlibHandles
