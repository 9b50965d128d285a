// SPDX-License-Identifier: MIT
#include "StreamLength.h"

#include "GstHandles.h"
#include "HandOver.h"

#include <QElapsedTimer>

#include <algorithm>
#include <memory>
#include <mutex>
#include <vector>

namespace {
constexpr int longestCounting = 20'000; // milliseconds
constexpr GstClockTime lookInterval = 50 * GST_MSECOND;

/// The part of time that one stream of the file fills. Not every stream begins at 0.
class Extent
{
public:
    /// The thread of the stream.
    void take(const GstBuffer *buffer)
    {
        HandOver::taken(this);
        lengthenBy(buffer);
        HandOver::given(this);
    }
    GstClockTime length() const { return m_end > m_first ? m_end - m_first : 0; }

private:
    void lengthenBy(const GstBuffer *buffer)
    {
        const GstClockTime begin
            = GST_BUFFER_PTS_IS_VALID(buffer) ? GST_BUFFER_PTS(buffer) : GST_BUFFER_DTS(buffer);
        if (!GST_CLOCK_TIME_IS_VALID(begin))
            return;
        const GstClockTime length = GST_BUFFER_DURATION_IS_VALID(buffer) ? GST_BUFFER_DURATION(buffer) : 0;
        m_first = std::min(m_first, begin);
        m_end = std::max(m_end, begin + length);
    }

    GstClockTime m_first = GST_CLOCK_TIME_NONE;
    GstClockTime m_end = 0;
};

struct PipelineDeleter
{
    void operator()(GstElement *pipeline) const
    {
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(pipeline);
    }
};

/// The file, taken apart into its streams, which are counted and thrown away.
class Counter
{
public:
    Counter(const QByteArray &path, const char *element)
        : m_pipeline(gst_pipeline_new(nullptr))
    {
        gst_object_ref_sink(m_pipeline.get());
        GstElement *source = gst_element_factory_make("filesrc", nullptr);
        GstElement *parts = gst_element_factory_make(element, nullptr);
        if (!source || !parts) {
            gst_clear_object(&source);
            gst_clear_object(&parts);
            return;
        }
        g_object_set(source, "location", path.constData(), nullptr);
        gst_bin_add_many(GST_BIN(m_pipeline.get()), source, parts, nullptr);
        m_isComplete = gst_element_link(source, parts);
        const auto added = +[](GstElement *, GstPad *pad, gpointer self) {
            static_cast<Counter *>(self)->follow(pad);
        };
        g_signal_connect(parts, "pad-added", G_CALLBACK(added), this);
    }

    /// Nanoseconds; 0 when it did not come to an end. What comes before a fault in the file counts.
    GstClockTime run(const std::atomic<bool> &interrupted)
    {
        HandOver::given(this);
        if (!m_isComplete
            || gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE)
            return 0;
        const GstHandles::Bus bus(gst_element_get_bus(m_pipeline.get()));
        QElapsedTimer time;
        time.start();
        constexpr auto wanted = GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR);
        GstHandles::Message end;
        while (!end && !interrupted && !time.hasExpired(longestCounting))
            end.reset(gst_bus_timed_pop_filtered(bus.get(), lookInterval, wanted));
        gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
        if (!end)
            return 0;
        GstClockTime longest = 0;
        for (const auto &extent : m_extents) {
            HandOver::taken(extent.get());
            longest = std::max(longest, extent->length());
        }
        return longest;
    }

private:
    /// The thread that takes the file apart.
    void follow(GstPad *pad)
    {
        HandOver::taken(this);
        GstElement *sink = gst_element_factory_make("fakesink", nullptr);
        if (!sink)
            return;
        g_object_set(sink, "sync", FALSE, "async", FALSE, nullptr);
        gst_bin_add(GST_BIN(m_pipeline.get()), sink);
        const GstHandles::Pad input(gst_element_get_static_pad(sink, "sink"));
        const auto passed = +[](GstPad *, GstPadProbeInfo *info, gpointer extent) {
            static_cast<Extent *>(extent)->take(GST_PAD_PROBE_INFO_BUFFER(info));
            return GST_PAD_PROBE_OK;
        };
        gst_pad_add_probe(input.get(), GST_PAD_PROBE_TYPE_BUFFER, passed, newExtent(), nullptr);
        gst_pad_link(pad, input.get());
        gst_element_sync_state_with_parent(sink);
    }

    Extent *newExtent()
    {
        const std::lock_guard lock(m_mutex);
        m_extents.push_back(std::make_unique<Extent>());
        HandOver::given(m_extents.back().get());
        return m_extents.back().get();
    }

    std::mutex m_mutex;
    std::vector<std::unique_ptr<Extent>>
        m_extents; // each written by its stream's thread; outlives the pipeline
    std::unique_ptr<GstElement, PipelineDeleter> m_pipeline;
    bool m_isComplete = false;
};
} // namespace

qint64 StreamLength::count(const QByteArray &path, Way way) const
{
    if (!gst_init_check(nullptr, nullptr, nullptr))
        return 0;
    const GstClockTime length = Counter(path, way == Parsing ? "parsebin" : "decodebin").run(m_interrupted);
    return qint64((length + GST_MSECOND / 2) / GST_MSECOND);
}
