// SPDX-License-Identifier: MIT
#include "PauseClock.h"

#include "GstHandles.h"
#include "Mailbox.h"

namespace {
struct Expiry
{
    std::shared_ptr<Mailbox> mailbox;
    std::function<void()> call;
};

/// The clock's own thread.
gboolean expire(GstClock *, GstClockTime, GstClockID, gpointer data)
{
    const auto *expiry = static_cast<Expiry *>(data);
    expiry->mailbox->post(expiry->call);
    return TRUE;
}

void deleteExpiry(gpointer data)
{
    delete static_cast<Expiry *>(data);
}
} // namespace

struct PauseClock::Wait
{
    GstHandles::ClockId id;

    ~Wait() { gst_clock_id_unschedule(id.get()); }
};

PauseClock::PauseClock(std::shared_ptr<Mailbox> mailbox)
    : m_mailbox(std::move(mailbox))
{
}

PauseClock::~PauseClock() = default;

void PauseClock::arm(GstElement *pipeline, qint64 delay, std::function<void()> expired)
{
    disarm();
    const GstHandles::Clock clock(gst_element_get_clock(pipeline));
    if (!clock)
        return;
    const GstClockTime moment = gst_clock_get_time(clock.get()) + GstClockTime(std::max<qint64>(0, delay));
    m_wait = std::make_unique<Wait>();
    m_wait->id.reset(gst_clock_new_single_shot_id(clock.get(), moment));
    const auto call = [this, turn = m_turn, expired = std::move(expired)] {
        if (turn == m_turn)
            expired();
    };
    gst_clock_id_wait_async(m_wait->id.get(), expire, new Expiry{m_mailbox, call}, deleteExpiry);
}

void PauseClock::disarm()
{
    ++m_turn;
    m_wait.reset();
}
