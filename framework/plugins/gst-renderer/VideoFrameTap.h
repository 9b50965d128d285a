// SPDX-License-Identifier: MIT
#pragma once

#include "GstHandles.h"

#include <QtGlobal>

#include <memory>
#include <mutex>

/// A picture as it came from the decoder, with its caps.
using VideoFrame = std::shared_ptr<GstSample>;

/// Remembers the picture that last went through a pad, while it is told to. The pad is in front of the conversion to
/// what the output shows, so that the picture has the size and the colours of the video itself.
class VideoFrameTap
{
public:
    VideoFrameTap() = default;
    Q_DISABLE_COPY_MOVE(VideoFrameTap)

    /// Watches the pad, for as long as that exists.
    static void attach(const std::shared_ptr<VideoFrameTap> &tap, GstPad *pad);

    /// Any thread.
    void setEnabled(bool enabled);
    /// Any thread. Null when no picture has gone through.
    VideoFrame last();
    /// Any thread.
    void clear();

private:
    void remember(GstPad *pad, GstBuffer *buffer);

    std::mutex m_mutex;
    bool m_enabled = false;
    VideoFrame m_last;
};
