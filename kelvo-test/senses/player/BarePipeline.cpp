// SPDX-License-Identifier: MIT
#include "BarePipeline.h"

#include "SenseProgram.h"

#include <QFile>

#include <cstdio>
#include <gst/video/videooverlay.h>

namespace {
constexpr GstClockTime interval = 100 * GST_MSECOND; // from one position that is told to the next
constexpr auto nanoseconds = double(GST_SECOND); // of a second
} // namespace

BarePipeline BarePipeline::sound(const QString &sink, const QString &file)
{
    BarePipeline pipeline("filesrc name=file ! wavparse ! audioconvert ! audioresample ! "
                          "pulsesink name=sink client-name=kelvo-bare-player",
        file);
    if (pipeline.m_pipeline)
        g_object_set(pipeline.element("sink").get(), "device", sink.toUtf8().constData(), nullptr);
    return pipeline;
}

BarePipeline BarePipeline::picture(uint window, const QString &file)
{
    BarePipeline pipeline("filesrc name=file ! decodebin ! videoconvert ! ximagesink name=sink", file);
    if (pipeline.m_pipeline)
        gst_video_overlay_set_window_handle(GST_VIDEO_OVERLAY(pipeline.element("sink").get()), window);
    return pipeline;
}

BarePipeline::BarePipeline(const char *description, const QString &file)
{
    GlibHandles::Error error;
    m_pipeline = GstHandles::adopt(gst_parse_launch(description, error.out()));
    if (!m_pipeline || error) {
        m_problem = QString::fromUtf8(error->message);
        m_pipeline.reset();
        return;
    }
    g_object_set(element("file").get(), "location", QFile::encodeName(file).constData(), nullptr);
}

BarePipeline::~BarePipeline()
{
    if (m_pipeline)
        gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
}

GstHandles::Element BarePipeline::element(const char *name) const
{
    return GstHandles::Element(gst_bin_get_by_name(GST_BIN(m_pipeline.get()), name));
}

QString BarePipeline::run(const std::atomic<bool> &isEnded)
{
    if (!m_pipeline)
        return m_problem;
    const GstHandles::Bus bus(gst_element_get_bus(m_pipeline.get()));
    gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING);
    while (!isEnded) {
        const GstHandles::Message end(gst_bus_timed_pop_filtered(
            bus.get(), interval, GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
        if (!end) {
            tellPosition();
        } else if (GST_MESSAGE_TYPE(end.get()) == GST_MESSAGE_EOS) {
            break;
        } else {
            GlibHandles::Error error;
            gst_message_parse_error(end.get(), error.out(), nullptr);
            return QString::fromUtf8(error->message);
        }
    }
    return {};
}

void BarePipeline::tellPosition() const
{
    GstState state = GST_STATE_NULL;
    gst_element_get_state(m_pipeline.get(), &state, nullptr, 0);
    const double before = SenseProgram::now();
    gint64 position = 0;
    const bool isKnown = gst_element_query_position(m_pipeline.get(), GST_FORMAT_TIME, &position) != FALSE;
    if (state != GST_STATE_PLAYING || !isKnown)
        return;
    std::printf("at %.6f %.6f\n", (before + SenseProgram::now()) / 2, double(position) / nanoseconds);
    std::fflush(stdout);
}
