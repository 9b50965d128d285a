// SPDX-License-Identifier: MIT
#include "Playbin.h"

#include "Mailbox.h"
#include "SoupStreamGuard.h"

namespace {
// GstPlayFlags are not public: the pictures are handed to the video output as they come from the decoder.
constexpr guint nativeVideo = 0x40;

/// Pipelines post hundreds of messages about their inner elements; these are the ones of interest.
bool isOfInterest(GstMessage *message)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_STATE_CHANGED:
    case GST_MESSAGE_ASYNC_DONE:
        return GST_IS_PIPELINE(GST_MESSAGE_SRC(message));
    case GST_MESSAGE_ELEMENT:
        return gst_message_has_name(message, "missing-plugin");
    case GST_MESSAGE_EOS:
    case GST_MESSAGE_ERROR:
    case GST_MESSAGE_WARNING:
    case GST_MESSAGE_BUFFERING:
    case GST_MESSAGE_TAG:
    case GST_MESSAGE_DURATION_CHANGED:
    case GST_MESSAGE_CLOCK_LOST:
    case GST_MESSAGE_LATENCY:
    case GST_MESSAGE_REQUEST_STATE:
        return true;
    default:
        return false;
    }
}

/// Any thread. No main loop of GLib is relied on: Qt may run without one.
GstBusSyncReply queueMessage(GstBus *, GstMessage *message, gpointer data)
{
    const std::shared_ptr<GstMessage> owned(message, gst_message_unref);
    const auto *listener = static_cast<Playbin::Listener *>(data);
    if (VideoOutput::answer(message, listener->window))
        return GST_BUS_DROP;
    if (isOfInterest(message))
        listener->mailbox->post([handle = listener->message, owned] { handle(owned.get()); });
    return GST_BUS_DROP;
}

/// Any thread.
void queueVolume(GObject *, GParamSpec *, gpointer data)
{
    const auto *listener = static_cast<Playbin::Listener *>(data);
    listener->mailbox->post(listener->volumeMoved);
}

/// Streaming thread. The default time limit of the HTTP source is too long to wait for.
void setUpSource(GstElement *, GstElement *source, gpointer seconds)
{
    const GParamSpec *timeout = g_object_class_find_property(G_OBJECT_GET_CLASS(source), "timeout");
    const GstElementFactory *factory = gst_element_get_factory(source);
    if (!timeout || !factory || !g_str_equal(GST_OBJECT_NAME(factory), "souphttpsrc"))
        return;
    SoupStreamGuard::begin();
    g_object_set(source, "timeout", guint(GPOINTER_TO_UINT(seconds)), nullptr);
}

void deleteListener(gpointer data)
{
    delete static_cast<Playbin::Listener *>(data);
}

void deleteListenerOfSignal(gpointer data, GClosure *)
{
    deleteListener(data);
}

bool hasRunningTask(GstPad *pad)
{
    GST_OBJECT_LOCK(pad);
    const bool runs = GST_PAD_TASK(pad) && gst_task_get_state(GST_PAD_TASK(pad)) == GST_TASK_STARTED;
    GST_OBJECT_UNLOCK(pad);
    return runs;
}

/// Calls `visit` with each object of the iterator, which it takes over.
void forEach(GstIterator *iterator, void (*visit)(const GValue *, gpointer), gpointer data)
{
    const GstHandles::Iterator owner(iterator);
    while (gst_iterator_foreach(iterator, visit, data) == GST_ITERATOR_RESYNC)
        gst_iterator_resync(iterator);
}

void noteRunningTask(GstElement *element, bool *found)
{
    const auto visit = [](const GValue *value, gpointer result) {
        if (hasRunningTask(GST_PAD(g_value_get_object(value))))
            *static_cast<bool *>(result) = true;
    };
    forEach(gst_element_iterate_pads(element), visit, found);
}

bool isWithin(const GstObject *object, const GstHandles::Element &ancestor)
{
    // The query changes nothing, but its signature does not say so.
    auto *inner = const_cast<GstObject *>(object);
    auto *outer = GST_OBJECT(ancestor.get());
    return object && (inner == outer || gst_object_has_as_ancestor(inner, outer));
}

/// Of what the pipeline is made just now, for Graphviz. Any thread; empty where GStreamer was built without it.
QByteArray graphOf(GstElement *pipeline)
{
    return GlibHandles::Text(gst_debug_bin_to_dot_data(GST_BIN(pipeline), GST_DEBUG_GRAPH_SHOW_ALL)).get();
}
} // namespace

std::unique_ptr<Playbin> Playbin::create(
    GstHandles::Element audioOutput, GstHandles::Element videoOutput, int networkTimeout, Listener listener)
{
    std::unique_ptr<Playbin> playbin(new Playbin);
    playbin->m_playbin = GstHandles::adopt(gst_element_factory_make("playbin", nullptr));
    if (!playbin->m_playbin || !audioOutput || !videoOutput)
        return nullptr;
    playbin->m_audioOutput = std::move(audioOutput);
    playbin->m_videoOutput = std::move(videoOutput);
    g_object_set(playbin->element(), "audio-sink", playbin->m_audioOutput.get(), "video-sink",
        playbin->m_videoOutput.get(), nullptr);
    guint flags = 0;
    g_object_get(playbin->element(), "flags", &flags, nullptr);
    g_object_set(playbin->element(), "flags", flags | nativeVideo, nullptr);
    playbin->listen(std::move(listener), networkTimeout);
    playbin->m_graph = std::make_unique<KelvoEvidenceSource>(
        QStringLiteral("pipeline.dot"), [pipeline = playbin->element()] { return graphOf(pipeline); });
    return playbin;
}

void Playbin::listen(Listener listener, int networkTimeout)
{
    const GstHandles::Bus bus(gst_element_get_bus(element()));
    gst_bus_set_sync_handler(bus.get(), queueMessage, new Listener(listener), deleteListener);
    g_signal_connect_data(element(), "notify::volume", G_CALLBACK(queueVolume),
        new Listener(std::move(listener)), deleteListenerOfSignal, GConnectFlags(0));
    g_signal_connect(
        element(), "source-setup", G_CALLBACK(setUpSource), GUINT_TO_POINTER(guint(networkTimeout)));
}

Playbin::~Playbin()
{
    if (!m_playbin)
        return;
    gst_element_set_state(element(), GST_STATE_NULL);
    const GstHandles::Bus bus(gst_element_get_bus(element()));
    gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
}

GstStateChangeReturn Playbin::setState(GstState state)
{
    GstState present = GST_STATE_NULL;
    gst_element_get_state(element(), &present, nullptr, 0);
    const GstClockTime stopped = gst_element_get_start_time(element());
    const GstStateChangeReturn result = gst_element_set_state(element(), state);
    // A pipeline that is held back on its way to Playing, as by a buffer that runs empty after a seek, takes the time of
    // its last start for that of this one: so much as had been played before would be left out when it goes on.
    if (state == GST_STATE_PAUSED && present == GST_STATE_PAUSED)
        gst_element_set_start_time(element(), stopped);
    return result;
}

void Playbin::setUri(const QByteArray &encodedUri)
{
    g_object_set(element(), "uri", encodedUri.constData(), nullptr);
}

void Playbin::setVolume(double volume)
{
    g_object_set(element(), "volume", volume, nullptr);
}

double Playbin::volume() const
{
    gdouble volume = 0;
    g_object_get(element(), "volume", &volume, nullptr);
    return volume;
}

std::optional<qint64> Playbin::position() const
{
    gint64 position = -1;
    if (!gst_element_query_position(element(), GST_FORMAT_TIME, &position) || position < 0)
        return std::nullopt;
    return position;
}

std::optional<qint64> Playbin::duration() const
{
    gint64 duration = -1;
    if (!gst_element_query_duration(element(), GST_FORMAT_TIME, &duration) || duration <= 0)
        return std::nullopt;
    return duration;
}

bool Playbin::isSeekable() const
{
    const GstHandles::Query query(gst_query_new_seeking(GST_FORMAT_TIME));
    gboolean seekable = FALSE;
    if (gst_element_query(element(), query.get()))
        gst_query_parse_seeking(query.get(), nullptr, &seekable, nullptr, nullptr);
    return seekable;
}

bool Playbin::hasAudio() const
{
    gint count = 0;
    g_object_get(element(), "n-audio", &count, nullptr);
    return count > 0;
}

bool Playbin::hasVideo() const
{
    gint count = 0;
    g_object_get(element(), "n-video", &count, nullptr);
    return count > 0;
}

bool Playbin::isEmpty() const
{
    GstElement *source = nullptr;
    g_object_get(element(), "source", &source, nullptr);
    const GstHandles::Element owner(source);
    gint64 size = -1;
    return source && gst_element_query_duration(source, GST_FORMAT_BYTES, &size) && size == 0;
}

bool Playbin::isStreaming() const
{
    bool streaming = false;
    const auto visit = [](const GValue *value, gpointer found) {
        noteRunningTask(GST_ELEMENT(g_value_get_object(value)), static_cast<bool *>(found));
    };
    forEach(gst_bin_iterate_recurse(GST_BIN(element())), visit, &streaming);
    return streaming;
}

bool Playbin::seek(qint64 position, double rate)
{
    const auto flags = GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
    const qint64 start = rate > 0 ? position : 0;
    const qint64 stop = rate > 0 ? qint64(GST_CLOCK_TIME_NONE) : position;
    return gst_element_seek(
        element(), rate, GST_FORMAT_TIME, flags, GST_SEEK_TYPE_SET, start, GST_SEEK_TYPE_SET, stop);
}

bool Playbin::isPartOfAudioOutput(const GstObject *object) const
{
    return isWithin(object, m_audioOutput);
}

bool Playbin::isPartOfVideoOutput(const GstObject *object) const
{
    return isWithin(object, m_videoOutput);
}
