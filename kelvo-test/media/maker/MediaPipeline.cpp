// SPDX-License-Identifier: MIT
#include "MediaPipeline.h"

#include "MediaClock.h"

#include <QFile>

#include <algorithm>
#include <cmath>

namespace {
void setCaps(GstElement *source)
{
    const GstHandles::Caps caps(gst_caps_new_simple("audio/x-raw", "format", G_TYPE_STRING, "S16LE", "layout",
        G_TYPE_STRING, "interleaved", "rate", G_TYPE_INT, MediaClock::sampleRate, "channels", G_TYPE_INT,
        MediaClock::channels, nullptr));
    g_object_set(source, "caps", caps.get(), "format", GST_FORMAT_TIME, nullptr);
}

GstClockTime timeOf(qint64 samples)
{
    return gst_util_uint64_scale_int(guint64(samples), GST_SECOND, MediaClock::sampleRate);
}

void setTags(const GValue *setter, gpointer tags)
{
    gst_tag_setter_merge_tags(
        GST_TAG_SETTER(g_value_get_object(setter)), static_cast<GstTagList *>(tags), GST_TAG_MERGE_REPLACE);
}
} // namespace

MediaPipeline::MediaPipeline(const Recipe &recipe, const ClockedMedium &medium, const QString &path)
    : m_item(medium.item)
    , m_samples(std::llround(medium.seconds * MediaClock::sampleRate))
    , m_wave(medium.item, recipe.delay)
{
    GlibHandles::Error error;
    m_pipeline = GstHandles::adopt(gst_parse_launch(recipe.pipeline.toUtf8().constData(), error.out()));
    if (!m_pipeline || error) {
        m_error = QString::fromUtf8(error->message);
        m_pipeline.reset();
        return;
    }
    g_object_set(element("file").get(), "location", QFile::encodeName(path).constData(), nullptr);
    prepareSound();
    preparePicture();
    tell(medium.title);
}

MediaPipeline::~MediaPipeline()
{
    if (m_pipeline)
        gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
}

GstHandles::Element MediaPipeline::element(const char *name) const
{
    return GstHandles::Element(gst_bin_get_by_name(GST_BIN(m_pipeline.get()), name));
}

void MediaPipeline::prepareSound()
{
    const GstHandles::Element source = element("sound");
    setCaps(source.get());
    const auto needed = +[](GstElement *from, guint, MediaPipeline *self) {
        self->feed(from);
    };
    g_signal_connect(source.get(), "need-data", G_CALLBACK(needed), this);
}

void MediaPipeline::preparePicture()
{
    const GstHandles::Element source = element("picture");
    if (!source)
        return;
    const double pictures = double(m_samples) / MediaClock::samplesPerFrame;
    g_object_set(source.get(), "num-buffers", int(std::ceil(pictures)), nullptr);
    const GstHandles::Element marker = element("mark");
    const GstHandles::Pad pad(gst_element_get_static_pad(marker.get(), "sink"));
    const auto passed = +[](GstPad *on, GstPadProbeInfo *info, gpointer self) {
        const GstHandles::Element owner(gst_pad_get_parent_element(on));
        static_cast<MediaPipeline *>(self)->mark(owner.get(), gst_pad_probe_info_get_buffer(info));
        return GST_PAD_PROBE_OK;
    };
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, passed, this, nullptr);
}

void MediaPipeline::tell(const QString &title)
{
    const GstHandles::TagList tags(gst_tag_list_new(GST_TAG_TITLE, title.toUtf8().constData(), GST_TAG_ARTIST,
        "Kelvo", GST_TAG_ALBUM, "timecode", GST_TAG_TRACK_NUMBER, guint(m_item), nullptr));
    const GstHandles::Iterator setters(
        gst_bin_iterate_all_by_interface(GST_BIN(m_pipeline.get()), GST_TYPE_TAG_SETTER));
    gst_iterator_foreach(setters.get(), setTags, tags.get());
}

void MediaPipeline::feed(GstElement *source)
{
    const qint64 samples = std::min<qint64>(m_samples - m_given, MediaClock::samplesPerFrame);
    GstFlowReturn result = GST_FLOW_OK;
    if (samples <= 0) {
        g_signal_emit_by_name(source, "end-of-stream", &result);
        return;
    }
    const std::vector<qint16> sound = m_wave.read(samples);
    const gsize size = sound.size() * sizeof(qint16);
    GstBuffer *const buffer = gst_buffer_new_allocate(nullptr, size, nullptr);
    gst_buffer_fill(buffer, 0, sound.data(), size);
    GST_BUFFER_PTS(buffer) = timeOf(m_given);
    m_given += samples;
    GST_BUFFER_DURATION(buffer) = timeOf(m_given) - GST_BUFFER_PTS(buffer);
    g_signal_emit_by_name(source, "push-buffer", buffer, &result);
    gst_buffer_unref(buffer);
}

void MediaPipeline::mark(GstElement *element, GstBuffer *picture) const
{
    const qint64 frame
        = std::llround(double(GST_BUFFER_PTS(picture)) * MediaClock::framesPerSecond / double(GST_SECOND));
    g_object_set(element, "pattern-data", guint64(MediaClock::markOf({m_item, frame})), nullptr);
}

ClockedMedium::ExitCode MediaPipeline::run()
{
    if (!m_pipeline)
        return ClockedMedium::CannotBeMade;
    const GstHandles::Bus bus(gst_element_get_bus(m_pipeline.get()));
    gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING);
    const GstHandles::Message end(gst_bus_timed_pop_filtered(
        bus.get(), GST_CLOCK_TIME_NONE, GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
    if (GST_MESSAGE_TYPE(end.get()) == GST_MESSAGE_EOS)
        return ClockedMedium::Made;
    GlibHandles::Error error;
    char *words = nullptr;
    gst_message_parse_error(end.get(), error.out(), &words);
    const GlibHandles::Text owned(words);
    m_error = QString::fromUtf8(error->message);
    const bool isOfFile = error->domain == GST_RESOURCE_ERROR;
    return isOfFile ? ClockedMedium::CannotBeWritten : ClockedMedium::CannotBeMade;
}
