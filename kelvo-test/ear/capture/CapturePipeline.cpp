// SPDX-License-Identifier: MIT
#include "CapturePipeline.h"

#include "Ear.h"
#include "MediaClock.h"

#include <cstdio>

namespace {
constexpr int rate = MediaClock::sampleRate;
/// Small pieces: what is heard is told soon. The monitor of a sink makes the sink itself play in such pieces.
constexpr auto description
    = "pulsesrc name=device buffer-time=2000000 latency-time=10000 client-name=kelvo-ear ! "
      "audio/x-raw,format=F32LE,layout=interleaved,rate=%1,channels=%2 ! fakesink name=end "
      "signal-handoffs=true sync=false";
} // namespace

CapturePipeline::CapturePipeline(const QString &device)
    : m_listener(rate)
    , m_clock(rate)
{
    const QString words = QString::fromLatin1(description).arg(rate).arg(MediaClock::channels);
    GlibHandles::Error error;
    m_pipeline = GstHandles::adopt(gst_parse_launch(words.toUtf8().constData(), error.out()));
    if (!m_pipeline || error) {
        m_problem = QString::fromUtf8(error->message);
        m_pipeline.reset();
        return;
    }
    const GstHandles::Element source(gst_bin_get_by_name(GST_BIN(m_pipeline.get()), "device"));
    g_object_set(source.get(), "device", device.toUtf8().constData(), nullptr);
    const GstHandles::Element end(gst_bin_get_by_name(GST_BIN(m_pipeline.get()), "end"));
    const auto passed = +[](GstElement *, GstBuffer *buffer, GstPad *, CapturePipeline *self) {
        self->hear(buffer);
    };
    g_signal_connect(end.get(), "handoff", G_CALLBACK(passed), this);
}

CapturePipeline::~CapturePipeline()
{
    if (m_pipeline)
        gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
}

QString CapturePipeline::run()
{
    if (!m_pipeline)
        return m_problem;
    const GstHandles::Bus bus(gst_element_get_bus(m_pipeline.get()));
    gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING);
    const GstHandles::Message end(gst_bus_timed_pop_filtered(
        bus.get(), GST_CLOCK_TIME_NONE, GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
    if (GST_MESSAGE_TYPE(end.get()) == GST_MESSAGE_EOS)
        return QStringLiteral("the device gives no more sound");
    GlibHandles::Error error;
    char *words = nullptr;
    gst_message_parse_error(end.get(), error.out(), &words);
    const GlibHandles::Text owned(words);
    return QString::fromUtf8(error->message);
}

void CapturePipeline::hear(GstBuffer *buffer)
{
    const double time = Ear::now();
    GstMapInfo map = GST_MAP_INFO_INIT;
    if (!gst_buffer_map(buffer, &map, GST_MAP_READ))
        return;
    const std::span sound(reinterpret_cast<const float *>(map.data), map.size / sizeof(float));
    const qint64 samples = qint64(sound.size()) / MediaClock::channels;
    if (GST_BUFFER_OFFSET_IS_VALID(buffer))
        skipTo(GST_BUFFER_OFFSET(buffer));
    m_next += guint64(samples);
    m_samples += samples;
    m_clock.note(m_samples, time);
    if (!m_hasBegun)
        std::puts("listening");
    m_hasBegun = true;
    tell(m_listener.hear(sound));
    gst_buffer_unmap(buffer, &map);
    std::fflush(stdout);
}

void CapturePipeline::skipTo(guint64 sample)
{
    if (m_hasBegun && sample > m_next) {
        const guint64 lost = sample - m_next;
        m_samples += qint64(lost);
        tell(m_listener.skip(double(lost) / rate));
    }
    m_next = sample;
}

void CapturePipeline::tell(std::vector<Hearing> heard)
{
    for (Hearing &hearing : heard) {
        hearing.at = m_clock.timeOf(hearing.at * rate);
        std::fputs(hearing.line().constData(), stdout);
    }
}
