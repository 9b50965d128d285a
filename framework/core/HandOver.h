// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

#ifdef KELVO_WATCH_THREADS
#include <sanitizer/tsan_interface.h>
#endif

/// What one thread gives to another by way of Qt or GLib, whose queues the thread sanitizer cannot see into: they are
/// locked by means of the kernel, not by the functions of pthread that it knows. It is told here what orders what. In
/// any other build nothing of this does anything.
///
/// Only what is handed over is ordered by that. What either thread does to it later is still a race, and is reported.
namespace HandOver {
/// The giving thread: what it has done so far comes before what another does after taken() of the same address.
inline void given([[maybe_unused]] const void *what)
{
#ifdef KELVO_WATCH_THREADS
    __tsan_release(const_cast<void *>(what));
#endif
}

/// The taking thread, before it looks at anything.
inline void taken([[maybe_unused]] const void *what)
{
#ifdef KELVO_WATCH_THREADS
    __tsan_acquire(const_cast<void *>(what));
#endif
}
} // namespace HandOver

/// A call for another thread, with all that it has captured: given when it was last moved or copied, which is when it
/// was put into the queue, and taken when it is called or, because nobody is there to call it, dropped.
template <typename Call> class HandedCall
{
public:
    explicit HandedCall(Call call)
        : m_call(std::move(call))
    {
        HandOver::given(this);
    }
    HandedCall(const HandedCall &other)
        : m_call(other.m_call)
    {
        HandOver::given(this);
    }
    HandedCall(HandedCall &&other) noexcept
        : m_call(std::move(other.m_call))
    {
        HandOver::given(this);
    }
    HandedCall &operator=(const HandedCall &) = delete;
    HandedCall &operator=(HandedCall &&) = delete;
    ~HandedCall() { HandOver::taken(this); }

    void operator()()
    {
        HandOver::taken(this);
        m_call();
    }

private:
    Call m_call;
};
