// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <functional>
#include <memory>

class Mailbox;
typedef struct _GstElement GstElement;

/// Tells when the pipeline's own clock has advanced by some time. That clock is what playback follows, so the
/// moment is exact to a fraction of a millisecond, which no timer of the event loop is.
class PauseClock
{
public:
    explicit PauseClock(std::shared_ptr<Mailbox> mailbox);
    ~PauseClock();
    Q_DISABLE_COPY_MOVE(PauseClock)

    /// Calls `expired` by the mailbox after `delay` nanoseconds of a playing pipeline. Replaces what was
    /// armed.
    void arm(GstElement *pipeline, qint64 delay, std::function<void()> expired);
    void disarm();

private:
    struct Wait;
    std::shared_ptr<Mailbox> m_mailbox;
    std::unique_ptr<Wait> m_wait;
    /// Tells a moment that was called off from the one that counts.
    quint64 m_turn = 0;
};
