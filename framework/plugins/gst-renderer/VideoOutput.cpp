// SPDX-License-Identifier: MIT
#include "VideoOutput.h"

#include "KelvoMessageHandler.h"

#include <utility>

#include <gst/video/videooverlay.h>

namespace {
// The display's video adaptor scales and converts; else we do. An output by OpenGL would gain nothing: displays that have
// the hardware for it offer it by such an adaptor, too, and without hardware it takes five times the work.
const QString adaptorOutput = QStringLiteral("xvimagesink");
const QString plainOutput = QStringLiteral("ximagesink");
const QString nothing = QStringLiteral("fakesink sync=true qos=true enable-last-sample=false");
// Here and not in the pipeline, so that what comes in is the video's own picture. One element for both steps takes up to
// half as much time again.
const QString conversion = QStringLiteral("videoconvert ! videoscale ! %1");

GstHandles::Element makeBin(const QString &output)
{
    GlibHandles::Error problem;
    GstHandles::Element made = GstHandles::adopt(
        gst_parse_bin_from_description(conversion.arg(output).toUtf8().constData(), TRUE, problem.out()));
    if (made && !problem)
        return made;
    qCWarning(lcKelvo) << "The video output" << output
                       << "cannot be used:" << (problem ? problem->message : "no such element");
    return nullptr;
}

/// Calls `visit` with each element in the bin, at any depth.
template <typename Visit> void forEachWithin(const GstHandles::Element &bin, Visit visit)
{
    if (!bin || !GST_IS_BIN(bin.get()))
        return;
    const GstHandles::Iterator iterator(gst_bin_iterate_recurse(GST_BIN(bin.get())));
    const auto call = [](const GValue *value, gpointer function) {
        (*static_cast<Visit *>(function))(GST_ELEMENT(g_value_get_object(value)));
    };
    while (gst_iterator_foreach(iterator.get(), call, &visit) == GST_ITERATOR_RESYNC)
        gst_iterator_resync(iterator.get());
}

bool has(GstElement *element, const char *property)
{
    return g_object_class_find_property(G_OBJECT_GET_CLASS(element), property);
}

/// The sink proper; null in a bin that has not chosen one yet.
GstElement *sinkWithin(const GstHandles::Element &bin)
{
    GstElement *found = nullptr;
    forEachWithin(bin, [&found](GstElement *element) {
        if (GST_OBJECT_FLAG_IS_SET(element, GST_ELEMENT_FLAG_SINK) && !GST_IS_BIN(element))
            found = element;
    });
    return found;
}

/// Of the window that it draws into: our own connection hears of them and has it redraw. Outputs that listen themselves look
/// twenty times a second, and every item waits for the last look, also one without pictures.
void ignoreEvents(GstElement *element)
{
    for (const char *events : {"handle-events", "handle-expose"}) {
        if (has(element, events))
            g_object_set(element, events, FALSE, nullptr);
    }
}

QString nameOf(GstElement *element)
{
    const GstElementFactory *factory = gst_element_get_factory(element);
    return factory ? QString::fromLatin1(GST_OBJECT_NAME(factory)) : QString();
}

/// A decoder keeps the pictures that others are made from. Were they in the display's memory, each that is shown would be
/// copied into new memory of the display, at twice the cost of the copy into memory that is there.
void keepDecodersOut(GstElement *sink)
{
    const auto offered = [](GstPad *, GstPadProbeInfo *info, gpointer) {
        GstQuery *query = GST_PAD_PROBE_INFO_QUERY(info);
        if (GST_QUERY_TYPE(query) != GST_QUERY_ALLOCATION)
            return GST_PAD_PROBE_OK;
        for (guint i = 0; i < gst_query_get_n_allocation_pools(query); ++i) {
            guint size = 0;
            guint fewest = 0;
            guint most = 0;
            gst_query_parse_nth_allocation_pool(query, i, nullptr, &size, &fewest, &most);
            gst_query_set_nth_allocation_pool(query, i, nullptr, size, fewest, most);
        }
        return GST_PAD_PROBE_OK;
    };
    const GstHandles::Pad pad(gst_element_get_static_pad(sink, "sink"));
    constexpr int answered = GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM | GST_PAD_PROBE_TYPE_PULL;
    if (pad)
        gst_pad_add_probe(pad.get(), GstPadProbeType(answered), offered, nullptr, nullptr);
}

void giveWindow(GstVideoOverlay *overlay, uint window)
{
    gst_video_overlay_handle_events(overlay, FALSE); // of such as have no property for it
    gst_video_overlay_set_window_handle(overlay, window);
}

/// Calls `use` with the part of the output that draws into a window, if there is one.
template <typename Use> void withOverlay(const GstHandles::Element &sink, Use use)
{
    if (!sink || !GST_IS_BIN(sink.get()))
        return;
    const GstHandles::Element overlay(gst_bin_get_by_interface(GST_BIN(sink.get()), GST_TYPE_VIDEO_OVERLAY));
    if (overlay)
        use(GST_VIDEO_OVERLAY(overlay.get()));
}
} // namespace

VideoOutput::VideoOutput(const QString &description)
    : m_description(description)
    , m_windowId(std::make_shared<std::atomic<uint>>(0))
    , m_tap(std::make_shared<VideoFrameTap>())
{
}

VideoOutput::~VideoOutput() = default;

void VideoOutput::openWindow()
{
    if (m_window)
        return;
    m_window = VideoWindow::open();
    if (!m_window)
        return;
    connect(m_window.get(), &VideoWindow::exposed, this, &VideoOutput::redraw);
    connect(m_window.get(), &VideoWindow::replaced, this, &VideoOutput::useWindow);
    *m_windowId = m_window->id();
    m_adaptor = m_window->adaptor();
    m_window->place(m_parent, m_rectangle);
    m_window->setShown(m_shown);
}

/// The window is another one than before: what was around it is gone. A new place may have been told before that
/// was noticed.
void VideoOutput::useWindow()
{
    *m_windowId = m_window->id();
    withOverlay(m_sink, [this](GstVideoOverlay *overlay) { giveWindow(overlay, m_window->id()); });
    if (std::exchange(m_placeDue, false))
        place(m_parent, m_rectangle);
    else
        m_parent = 0;
}

GstHandles::Element VideoOutput::makeSink(Pictures pictures)
{
    const bool isSeen = pictures != Pictures::None;
    if (isSeen)
        openWindow();
    m_sink.reset();
    if (isSeen && !m_description.isEmpty())
        m_sink = makeBin(m_description);
    const bool triesAdaptor = !m_sink && pictures == Pictures::Usual && m_adaptor != Adaptor::None;
    if (triesAdaptor)
        m_sink = makeBin(adaptorOutput);
    m_choseAdaptor = triesAdaptor && m_sink;
    if (!m_sink && isSeen && m_window)
        m_sink = makeBin(plainOutput);
    if (!m_sink)
        m_sink = makeBin(nothing);
    if (!m_sink)
        return nullptr;
    forEachWithin(m_sink, [this](GstElement *element) {
        if (has(element, "autopaint-colorkey"))
            g_object_set(element, "autopaint-colorkey", gboolean(m_autopaint), nullptr);
        ignoreEvents(element);
        if (nameOf(element) == adaptorOutput)
            keepDecodersOut(element);
    });
    const GstHandles::Pad pad(gst_element_get_static_pad(m_sink.get(), "sink"));
    m_caps = std::make_shared<IdleCapsCache>();
    if (pad) {
        VideoFrameTap::attach(m_tap, pad.get());
        IdleCapsCache::attach(m_caps, pad.get());
    }
    return GstHandles::Element(GST_ELEMENT(gst_object_ref(m_sink.get())));
}

QString VideoOutput::describe() const
{
    GstElement *sink = sinkWithin(m_sink);
    const QString name = sink ? nameOf(sink) : QString();
    return name.isEmpty() || name == QLatin1String("fakesink") ? QStringLiteral("no video output") : name;
}

bool VideoOutput::place(uint parent, const QRect &rectangle)
{
    const bool isResized = rectangle.size() != m_rectangle.size();
    m_parent = parent;
    m_rectangle = rectangle;
    m_placeDue = m_window && !m_window->place(parent, rectangle);
    // Drawing is also how the output learns of its new size. Of a window that is gone it would take any size.
    if (m_window && !m_placeDue)
        redraw();
    return m_window && isResized;
}

void VideoOutput::setShown(bool shown)
{
    m_shown = shown;
    if (!m_window)
        return;
    // Where overlay hardware shows the picture the window has the key's colour.
    if (shown)
        m_window->setBackground(colorKey());
    m_window->setShown(shown);
}

uint VideoOutput::colorKey() const
{
    // The output has one for all adaptors.
    if (m_adaptor == Adaptor::Drawing && describe() == adaptorOutput)
        return 0;
    int key = 0;
    forEachWithin(m_sink, [&key](GstElement *element) {
        if (has(element, "autopaint-colorkey") && has(element, "colorkey"))
            g_object_get(element, "colorkey", &key, nullptr);
    });
    return uint(key) & 0xffffff;
}

void VideoOutput::setKeepsFrames(bool keeps)
{
    m_tap->setEnabled(keeps);
}

VideoFrame VideoOutput::frame() const
{
    return m_tap->last();
}

void VideoOutput::forgetFrame()
{
    m_tap->clear();
}

void VideoOutput::forgetCaps()
{
    if (m_caps)
        m_caps->clear();
}

void VideoOutput::logStatistics() const
{
    GstElement *sink = sinkWithin(m_sink);
    if (!sink || !has(sink, "stats"))
        return;
    GstStructure *statistics = nullptr;
    g_object_get(sink, "stats", &statistics, nullptr);
    const GstHandles::Structure owner(statistics);
    guint64 rendered = 0;
    guint64 dropped = 0;
    if (statistics && gst_structure_get_uint64(statistics, "rendered", &rendered)
        && gst_structure_get_uint64(statistics, "dropped", &dropped))
        qCDebug(lcKelvo) << "Video pictures shown:" << rendered << "dropped:" << dropped;
}

void VideoOutput::redraw()
{
    withOverlay(m_sink, gst_video_overlay_expose);
}

bool VideoOutput::answer(GstMessage *message, const WindowId &window)
{
    if (!gst_is_video_overlay_prepare_window_handle_message(message))
        return false;
    if (const uint id = *window)
        giveWindow(GST_VIDEO_OVERLAY(GST_MESSAGE_SRC(message)), id);
    return true;
}
