// SPDX-License-Identifier: MIT
#pragma once

#include "GstHandles.h"

#include <QString>

#include <atomic>

/// Plays one medium, once, and writes where it is: what GStreamer itself does to a position, without a player around it.
class BarePipeline
{
public:
    /// The sound of a file of samples (WAV).
    /// @param sink  of the sound server
    static BarePipeline sound(const QString &sink, const QString &file);
    /// The picture of a file of any kind.
    /// @param window  of the X server of DISPLAY
    static BarePipeline picture(uint window, const QString &file);

    ~BarePipeline();
    Q_DISABLE_COPY(BarePipeline)
    BarePipeline(BarePipeline &&) = default;
    BarePipeline &operator=(BarePipeline &&) = delete;

    /// Returns why it cannot play; nothing when the medium ends, or it is ended by another thread or a signal.
    QString run(const std::atomic<bool> &isEnded);

private:
    BarePipeline(const char *description, const QString &file);
    GstHandles::Element element(const char *name) const;
    /// Nothing until it plays.
    void tellPosition() const;

    GstHandles::Element m_pipeline;
    QString m_problem;
};
