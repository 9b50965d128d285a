// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <glib-object.h>

#include <memory>
#include <utility>

/// Owns one reference to a GObject.
template <class T> class GObjectPtr
{
public:
    GObjectPtr() = default;
    /// Takes over the caller's reference; null is allowed.
    static GObjectPtr take(T *object)
    {
        GObjectPtr pointer;
        pointer.m_object = object;
        return pointer;
    }
    GObjectPtr(GObjectPtr &&other) noexcept
        : m_object(std::exchange(other.m_object, nullptr))
    {
    }
    GObjectPtr &operator=(GObjectPtr &&other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }
    Q_DISABLE_COPY(GObjectPtr)
    ~GObjectPtr() { reset(); }

    T *get() const { return m_object; }
    explicit operator bool() const { return m_object; }
    void reset()
    {
        if (T *object = std::exchange(m_object, nullptr))
            g_object_unref(object);
    }

private:
    T *m_object = nullptr;
};

/// Owns a GError that a call fills in through out().
class GErrorPtr
{
public:
    GErrorPtr() = default;
    Q_DISABLE_COPY_MOVE(GErrorPtr)
    ~GErrorPtr() { g_clear_error(&m_error); }

    GError **out()
    {
        g_clear_error(&m_error);
        return &m_error;
    }
    const GError *get() const { return m_error; }
    explicit operator bool() const { return m_error; }

private:
    GError *m_error = nullptr;
};

struct GFreeDeleter
{
    void operator()(void *memory) const { g_free(memory); }
};
using GCharPtr = std::unique_ptr<char, GFreeDeleter>;
