// SPDX-License-Identifier: MIT
#include "VideoFrameTap.h"

void VideoFrameTap::attach(const std::shared_ptr<VideoFrameTap> &tap, GstPad *pad)
{
    using Owner = std::shared_ptr<VideoFrameTap>;
    const auto look = [](GstPad *from, GstPadProbeInfo *info, gpointer owner) {
        (*static_cast<Owner *>(owner))->remember(from, GST_PAD_PROBE_INFO_BUFFER(info));
        return GST_PAD_PROBE_OK;
    };
    const auto forget = [](gpointer owner) {
        delete static_cast<Owner *>(owner);
    };
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, look, new Owner(tap), forget);
}

/// Streaming thread. A picture is a reference to what the decoder made; nothing is copied.
void VideoFrameTap::remember(GstPad *pad, GstBuffer *buffer)
{
    const std::scoped_lock lock(m_mutex);
    if (!m_enabled)
        return;
    const GstHandles::Caps caps(gst_pad_get_current_caps(pad));
    if (caps)
        m_last = VideoFrame(gst_sample_new(buffer, caps.get(), nullptr, nullptr), gst_sample_unref);
}

void VideoFrameTap::setEnabled(bool enabled)
{
    const std::scoped_lock lock(m_mutex);
    m_enabled = enabled;
    if (!enabled)
        m_last.reset();
}

VideoFrame VideoFrameTap::last()
{
    const std::scoped_lock lock(m_mutex);
    return m_last;
}

void VideoFrameTap::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_last.reset();
}
