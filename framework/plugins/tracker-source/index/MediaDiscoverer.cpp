// SPDX-License-Identifier: MIT
#include "MediaDiscoverer.h"

#include "GstHandles.h"
#include "KelvoMessageHandler.h"
#include "TextRepair.h"

#include <gst/pbutils/pbutils.h>

#include <algorithm>

namespace {
constexpr GstClockTime timeout = 5 * GST_SECOND;

QString tagText(const GstTagList *tags, const char *name)
{
    gchar *text = nullptr;
    if (!tags || !gst_tag_list_get_string(tags, name, &text))
        return {};
    const GlibHandles::Text owned(text);
    return TextRepair::tidy(QString::fromUtf8(text));
}

int tagNumber(const GstTagList *tags, const char *name)
{
    guint number = 0;
    if (tags)
        gst_tag_list_get_uint(tags, name, &number);
    return int(std::min(number, 1'000'000u));
}

int tagYear(const GstTagList *tags)
{
    GstDateTime *date = nullptr;
    if (!tags || !gst_tag_list_get_date_time(tags, GST_TAG_DATE_TIME, &date))
        return 0;
    const GstHandles::DateTime owned(date);
    return gst_date_time_has_year(date) ? gst_date_time_get_year(date) : 0;
}

// A cover is a video stream of one picture.
bool hasMovingPictures(GstDiscovererInfo *info)
{
    GList *streams = gst_discoverer_info_get_video_streams(info);
    bool found = false;
    for (const GList *entry = streams; entry; entry = entry->next)
        found = found || !gst_discoverer_video_info_is_image(GST_DISCOVERER_VIDEO_INFO(entry->data));
    gst_discoverer_stream_info_list_free(streams);
    return found;
}

bool hasSound(GstDiscovererInfo *info)
{
    GList *streams = gst_discoverer_info_get_audio_streams(info);
    const bool found = streams;
    gst_discoverer_stream_info_list_free(streams);
    return found;
}

bool isUnderstood(GstDiscovererInfo *info)
{
    const GstDiscovererResult result = gst_discoverer_info_get_result(info);
    // Missing decoders do not keep the rest from being known.
    return (result == GST_DISCOVERER_OK || result == GST_DISCOVERER_MISSING_PLUGINS)
        && (hasMovingPictures(info) || hasSound(info));
}

qint64 lengthOf(GstDiscovererInfo *info)
{
    const GstClockTime duration = gst_discoverer_info_get_duration(info);
    return GST_CLOCK_TIME_IS_VALID(duration) ? qint64(duration / GST_MSECOND) : 0;
}

// A stream that is in no container has no place where its length could stand.
bool isBareStream(GstDiscovererInfo *info)
{
    const GlibHandles::Object<GstDiscovererStreamInfo> top(gst_discoverer_info_get_stream_info(info));
    return top && !GST_IS_DISCOVERER_CONTAINER_INFO(top.get());
}

void fill(MediaItem *item, GstDiscovererInfo *info)
{
    item->kind = hasMovingPictures(info) ? MediaKind::Video : MediaKind::Song;
    item->setLength(lengthOf(info));
    const GstTagList *tags = gst_discoverer_info_get_tags(info);
    if (const QString title = tagText(tags, GST_TAG_TITLE); !title.isEmpty())
        item->title = title;
    if (const QString artist = tagText(tags, GST_TAG_ARTIST); !artist.isEmpty())
        item->tags.artists = QStringList(artist);
    item->tags.album = tagText(tags, GST_TAG_ALBUM);
    item->tags.albumArtist = tagText(tags, GST_TAG_ALBUM_ARTIST);
    item->tags.genre = tagText(tags, GST_TAG_GENRE);
    item->tags.track = tagNumber(tags, GST_TAG_TRACK_NUMBER);
    item->tags.disc = tagNumber(tags, GST_TAG_ALBUM_VOLUME_NUMBER);
    item->tags.year = tagYear(tags);
}
} // namespace

struct MediaDiscoverer::Private
{
    bool prepare();
    void noteSource(GstElement *source);
    void endStreaming();

    std::atomic<bool> interrupted{false};
    GMainContext *context = g_main_context_new();
    GlibHandles::Object<GstDiscoverer> discoverer;
    GlibHandles::Object<GstElement> pipeline; ///< the discoverer's; null until it has opened a first file
    bool failed = false;
    // Of the file being read:
    MediaItem *item = nullptr;
    bool done = false;
    bool understood = false;
    bool estimated = false;
};

bool MediaDiscoverer::Private::prepare()
{
    if (discoverer || failed)
        return !failed;
    GlibHandles::Error error;
    failed = !gst_init_check(nullptr, nullptr, error.out());
    if (!failed)
        discoverer.reset(gst_discoverer_new(timeout, error.out()));
    failed = !discoverer;
    if (failed) {
        qCWarning(lcKelvo) << "Videos are indexed by their names only:"
                           << (error ? error.get()->message : "the media engine does not start");
        return false;
    }
    const auto discovered = +[](GstDiscoverer *, GstDiscovererInfo *info, GError *, gpointer data) {
        auto *self = static_cast<Private *>(data);
        self->understood = info && isUnderstood(info);
        if (self->understood) {
            fill(self->item, info);
            self->estimated = isBareStream(info) || self->item->milliseconds == 0;
        }
        self->done = true;
    };
    g_signal_connect(discoverer.get(), "discovered", G_CALLBACK(discovered), this);
    const auto opened = +[](GstDiscoverer *, GstElement *source, gpointer self) {
        static_cast<Private *>(self)->noteSource(source);
    };
    g_signal_connect(discoverer.get(), "source-setup", G_CALLBACK(opened), this);
    return true;
}

/// On the thread of read(): a file is opened while the pipeline is told to start.
void MediaDiscoverer::Private::noteSource(GstElement *source)
{
    GlibHandles::Object<GstObject> top(GST_OBJECT(gst_object_ref(source)));
    while (GstObject *parent = gst_object_get_parent(top.get()))
        top.reset(parent);
    pipeline.reset(GST_ELEMENT(gst_object_ref(top.get())));
}

/// To be called before the discoverer is stopped in the middle of a file. It stops the pipeline under its own lock,
/// for which the thread that has just found a stream may be waiting; that thread holds what the pipeline then waits
/// for. Here no lock is held.
void MediaDiscoverer::Private::endStreaming()
{
    if (pipeline)
        gst_element_set_state(pipeline.get(), GST_STATE_READY);
}

MediaDiscoverer::MediaDiscoverer()
    : d(std::make_unique<Private>())
{
}

MediaDiscoverer::~MediaDiscoverer()
{
    d->pipeline.reset();
    d->discoverer.reset();
    g_main_context_unref(d->context);
}

bool MediaDiscoverer::read(MediaItem *item, bool *estimated)
{
    if (!d->prepare())
        return false;
    d->item = item;
    d->done = false;
    d->understood = false;
    d->estimated = false;
    // The discoverer's callbacks come through the context of the thread that starts it.
    g_main_context_push_thread_default(d->context);
    gst_discoverer_start(d->discoverer.get());
    if (gst_discoverer_discover_uri_async(d->discoverer.get(), item->uri.constData())) {
        while (!d->done && !d->interrupted)
            g_main_context_iteration(d->context, true);
    }
    if (!d->done)
        d->endStreaming();
    gst_discoverer_stop(d->discoverer.get());
    g_main_context_pop_thread_default(d->context);
    *estimated = d->estimated;
    return d->understood;
}

void MediaDiscoverer::interrupt()
{
    d->interrupted = true;
    g_main_context_wakeup(d->context);
}
