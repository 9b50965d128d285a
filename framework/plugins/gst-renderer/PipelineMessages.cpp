// SPDX-License-Identifier: MIT
#include "PipelineMessages.h"

#include "KelvoMessageHandler.h"
#include "Playbin.h"

namespace {
/// The text of a library that translates its messages, as it appears to this user.
bool isNoDataText(const char *text)
{
    return g_str_equal(text, g_dgettext("gstreamer-1.0", "Stream contains no data."));
}

int httpStatus(GstMessage *error)
{
    const GstStructure *details = nullptr;
    gst_message_parse_error_details(error, &details);
    guint status = 0;
    return details && gst_structure_get_uint(details, "http-status-code", &status) ? int(status) : 0;
}

PipelineFailure describe(GstMessage *message, const Playbin &pipeline)
{
    GlibHandles::Error error;
    gchar *debug = nullptr;
    gst_message_parse_error(message, error.out(), &debug);
    const GlibHandles::Text debugOwner(debug);
    qCDebug(lcKelvo) << "Pipeline error" << error->message << debug;

    const GstObject *source = GST_MESSAGE_SRC(message);
    PipelineFailure failure;
    failure.domain = QString::fromLatin1(g_quark_to_string(error->domain));
    failure.code = error->code;
    failure.text = QString::fromUtf8(error->message);
    failure.fromSource = GST_IS_ELEMENT(source) && GST_OBJECT_FLAG_IS_SET(source, GST_ELEMENT_FLAG_SOURCE);
    failure.fromAudioOutput = pipeline.isPartOfAudioOutput(source);
    failure.fromVideoOutput = pipeline.isPartOfVideoOutput(source);
    failure.noData = isNoDataText(error->message) || pipeline.isEmpty();
    failure.httpStatus = httpStatus(message);
    return failure;
}

int bufferPercent(GstMessage *message)
{
    gint percent = 100;
    gst_message_parse_buffering(message, &percent);
    return percent;
}

GstHandles::TagList tags(GstMessage *message)
{
    GstTagList *list = nullptr;
    gst_message_parse_tag(message, &list);
    return GstHandles::TagList(list);
}

bool requestsPlaying(GstMessage *message)
{
    GstState state = GST_STATE_NULL;
    gst_message_parse_request_state(message, &state);
    return state == GST_STATE_PLAYING;
}
} // namespace

void PipelineMessages::read(GstMessage *message, const Playbin &pipeline)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_STATE_CHANGED:
        return readStateChange(message);
    case GST_MESSAGE_ASYNC_DONE:
        Q_EMIT asyncDone();
        return;
    case GST_MESSAGE_EOS:
        Q_EMIT endReached();
        return;
    case GST_MESSAGE_ERROR:
        Q_EMIT failed(describe(message, pipeline));
        return;
    case GST_MESSAGE_WARNING:
        return readWarning(message);
    case GST_MESSAGE_ELEMENT:
        return readElementMessage(message);
    case GST_MESSAGE_BUFFERING:
        Q_EMIT buffered(bufferPercent(message));
        return;
    case GST_MESSAGE_TAG:
        Q_EMIT tagsFound(tags(message).get());
        return;
    case GST_MESSAGE_DURATION_CHANGED:
        Q_EMIT durationChanged();
        return;
    case GST_MESSAGE_REQUEST_STATE:
        if (pipeline.isPartOfAudioOutput(GST_MESSAGE_SRC(message)))
            Q_EMIT outputRequested(requestsPlaying(message));
        return;
    case GST_MESSAGE_CLOCK_LOST:
        Q_EMIT clockLost();
        return;
    case GST_MESSAGE_LATENCY:
        gst_bin_recalculate_latency(GST_BIN(pipeline.element()));
        return;
    default:
        return;
    }
}

void PipelineMessages::readStateChange(GstMessage *message)
{
    GstState state = GST_STATE_NULL;
    GstState pending = GST_STATE_NULL;
    gst_message_parse_state_changed(message, nullptr, &state, &pending);
    // With a state pending the pipeline only passes by, for instance during a seek.
    if (pending == GST_STATE_VOID_PENDING)
        Q_EMIT stateReached(state == GST_STATE_PLAYING);
}

void PipelineMessages::readElementMessage(GstMessage *message)
{
    const GValue *detail = gst_structure_get_value(gst_message_get_structure(message), "detail");
    if (!detail || !GST_VALUE_HOLDS_CAPS(detail))
        return;
    const GstCaps *caps = gst_value_get_caps(detail);
    if (gst_caps_get_size(caps) > 0)
        Q_EMIT typeUnknown(gst_structure_get_name(gst_caps_get_structure(caps, 0)));
}

void PipelineMessages::readWarning(GstMessage *message)
{
    GlibHandles::Error warning;
    gst_message_parse_warning(message, warning.out(), nullptr);
    const QString text = QString::fromUtf8(warning->message);
    qCDebug(lcKelvo) << "Pipeline warning" << text;
    if (warning->domain == GST_STREAM_ERROR && warning->code == GST_STREAM_ERROR_CODEC_NOT_FOUND)
        Q_EMIT codecMissing(text);
}
