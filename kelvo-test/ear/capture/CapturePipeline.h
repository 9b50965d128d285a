// SPDX-License-Identifier: MIT
#pragma once

#include "GstHandles.h"
#include "Listener.h"
#include "SampleClock.h"

#include <QString>

/// Listens to a source of the sound server and writes what it hears to the standard output, a line each, until it is ended
/// or nothing can be heard any more.
class CapturePipeline
{
public:
    explicit CapturePipeline(const QString &device);
    ~CapturePipeline();
    Q_DISABLE_COPY_MOVE(CapturePipeline)

    /// Returns when nothing can be heard any more, and why.
    QString run();

private:
    // On GStreamer's streaming thread.
    void hear(GstBuffer *buffer);
    void skipTo(guint64 sample);
    void tell(std::vector<Hearing> heard);

    GstHandles::Element m_pipeline;
    QString m_problem;
    Listener m_listener;
    SampleClock m_clock;
    bool m_hasBegun = false;
    guint64 m_next = 0; ///< the device's number of the next sample
    qint64 m_samples = 0; ///< of its own, those that were lost, too
};
