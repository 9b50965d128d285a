// SPDX-License-Identifier: MIT
#include "ErrorMapping.h"
#include "ItemPlayer.h"
#include "KelvoMessageHandler.h"
#include "Mailbox.h"
#include "Playbin.h"
#include "RendererValues.h"

#include <cmath>
#include <utility>

namespace {
constexpr qint64 shortOfEnd = GST_SECOND; // an item that ends this much too early was cut off
constexpr qint64 progress = GST_SECOND / 10; // less than this is not playing

/// The text of a library that translates its messages, as it appears to this user.
bool isNoDataText(const char *text)
{
    return g_str_equal(text, g_dgettext("gstreamer-1.0", "Stream contains no data."));
}

PipelineFailure describe(GstMessage *message, const Playbin &pipeline, const QUrl &uri)
{
    GError *error = nullptr;
    gchar *debug = nullptr;
    gst_message_parse_error(message, &error, &debug);
    const GstHandles::Error owner(error);
    const GstHandles::Text debugOwner(debug);
    qCDebug(lcKelvo) << "Pipeline error" << error->message << debug;

    const GstObject *source = GST_MESSAGE_SRC(message);
    const QByteArray scheme = uri.scheme().toLatin1();
    PipelineFailure failure;
    failure.domain = QString::fromLatin1(g_quark_to_string(error->domain));
    failure.code = error->code;
    failure.text = QString::fromUtf8(error->message);
    failure.uri = uri;
    failure.fromSource = GST_IS_ELEMENT(source) && GST_OBJECT_FLAG_IS_SET(source, GST_ELEMENT_FLAG_SOURCE);
    failure.fromAudioOutput = pipeline.isPartOfAudioOutput(source);
    failure.fromVideoOutput = pipeline.isPartOfVideoOutput(source);
    failure.noData = isNoDataText(error->message) || pipeline.isEmpty();
    failure.noHandler = !gst_uri_protocol_is_supported(GST_URI_SRC, scheme.constData());
    const GstStructure *details = nullptr;
    gst_message_parse_error_details(message, &details);
    guint status = 0;
    if (details && gst_structure_get_uint(details, "http-status-code", &status))
        failure.httpStatus = int(status);
    return failure;
}
} // namespace

void ItemPlayer::handle(GstMessage *message)
{
    if (m_phase == Phase::Idle || m_phase == Phase::Ended)
        return;
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_STATE_CHANGED:
        return handleStateChange(message);
    case GST_MESSAGE_ASYNC_DONE:
        return handleAsyncDone();
    case GST_MESSAGE_EOS:
        return handleEnd();
    case GST_MESSAGE_ERROR:
        return handleError(message);
    case GST_MESSAGE_WARNING:
        return handleWarning(message);
    case GST_MESSAGE_ELEMENT:
        return handleMissingPlugin(message);
    case GST_MESSAGE_BUFFERING:
        return handleBuffering(message);
    case GST_MESSAGE_TAG:
        return handleTags(message);
    case GST_MESSAGE_DURATION_CHANGED:
        return tellDuration();
    case GST_MESSAGE_REQUEST_STATE:
        return handleStateRequest(message);
    case GST_MESSAGE_LATENCY:
        gst_bin_recalculate_latency(GST_BIN(m_pipeline->element()));
        return;
    case GST_MESSAGE_CLOCK_LOST:
        // A new clock is chosen on the way to Playing.
        m_pipeline->setState(GST_STATE_PAUSED);
        m_playingAsked = false;
        return applyState();
    default:
        return;
    }
}

void ItemPlayer::handleStateChange(GstMessage *message)
{
    GstState state = GST_STATE_NULL;
    GstState pending = GST_STATE_NULL;
    gst_message_parse_state_changed(message, nullptr, &state, &pending);
    // With a state pending the pipeline only passes by, for instance during a seek.
    if (pending != GST_STATE_VOID_PENDING)
        return;
    m_pipelinePlaying = state == GST_STATE_PLAYING;
    settle();
    if (m_pipelinePlaying)
        checkPauseAt();
}

void ItemPlayer::handleAsyncDone()
{
    if (m_phase == Phase::Loading) {
        prerolled();
        return;
    }
    tellDuration();
    seekDone();
}

void ItemPlayer::handleEnd()
{
    // The end of what was playing before the seek: the seek counts.
    if (m_seekInFlight || m_phase != Phase::Loaded)
        return;
    if (m_speed < 0) {
        backAtStart();
        return;
    }
    const qint64 reached = reachedPosition();
    const std::optional<qint64> duration = m_pipeline->duration();
    if (duration && *duration - reached > shortOfEnd) {
        const auto seconds = [](qint64 time) {
            return QString::number(double(time) / GST_SECOND, 'f', 1);
        };
        Q_EMIT troubled(m_item.epoch, KelvoError::PrematureEnd,
            QStringLiteral("ended after %1 of %2 seconds").arg(seconds(reached), seconds(*duration)));
    }
    endItem(reached > progress);
}

void ItemPlayer::handleError(GstMessage *message)
{
    PipelineFailure failure = describe(message, *m_pipeline, m_item.uri);
    failure.notMedia = m_notMedia;
    if (failure.fromAudioOutput && !m_silent) {
        if (!std::exchange(m_audioLost, true))
            Q_EMIT troubled(m_item.epoch, KelvoError::AudioOutputFailed, failure.text);
        m_silent = true;
        restart();
        return;
    }
    if (failure.fromVideoOutput && !m_blind) {
        Q_EMIT troubled(m_item.epoch, KelvoError::VideoOutputFailed, failure.text);
        m_blind = true;
        restart();
        return;
    }
    fail(ErrorMapping::codeOf(failure), failure.text);
}

void ItemPlayer::handleMissingPlugin(GstMessage *message)
{
    const GValue *detail = gst_structure_get_value(gst_message_get_structure(message), "detail");
    if (!detail || !GST_VALUE_HOLDS_CAPS(detail))
        return;
    const GstCaps *caps = gst_value_get_caps(detail);
    if (gst_caps_get_size(caps) > 0)
        m_notMedia = g_str_has_prefix(gst_structure_get_name(gst_caps_get_structure(caps, 0)), "text/");
}

void ItemPlayer::handleWarning(GstMessage *message)
{
    GError *warning = nullptr;
    gst_message_parse_warning(message, &warning, nullptr);
    const GstHandles::Error owner(warning);
    const QString text = QString::fromUtf8(warning->message);
    qCDebug(lcKelvo) << "Pipeline warning" << text;
    if (warning->domain != GST_STREAM_ERROR || warning->code != GST_STREAM_ERROR_CODEC_NOT_FOUND)
        return;
    // Before preroll it is not clear yet whether anything else of the item plays.
    if (m_phase == Phase::Loading)
        m_missingCodec = text;
    else
        Q_EMIT troubled(m_item.epoch, KelvoError::PartlyPlayable, text);
}

void ItemPlayer::handleBuffering(GstMessage *message)
{
    gint percent = 100;
    gst_message_parse_buffering(message, &percent);
    if (m_live || percent == m_bufferPercent)
        return;
    m_bufferPercent = percent;
    Q_EMIT buffering(m_item.epoch, percent);
    m_bufferHold = percent < 100;
    if (!m_bufferHold)
        m_pauseAcknowledged = false;
    applyState();
}

void ItemPlayer::handleTags(GstMessage *message)
{
    GstTagList *tags = nullptr;
    gst_message_parse_tag(message, &tags);
    const GstHandles::TagList owner(tags);
    m_tags.merge(tags);
    tellFacts();
}

/// The audio server takes the output away (to Paused) or gives it back (to Playing).
void ItemPlayer::handleStateRequest(GstMessage *message)
{
    GstState state = GST_STATE_NULL;
    gst_message_parse_request_state(message, &state);
    const bool overridden = state != GST_STATE_PLAYING;
    if (overridden == m_policyOverride || !m_pipeline->isPartOfAudioOutput(GST_MESSAGE_SRC(message)))
        return;
    m_policyOverride = overridden;
    Q_EMIT policyOverridden(overridden);
    m_stallWatch.restart(m_time.elapsed());
    applyState();
}

/// Also the desktop's mixer moves the volume of some outputs.
void ItemPlayer::handleVolume()
{
    const int volume = m_pipeline ? RendererValues::cubicVolume(m_pipeline->volume()) : m_volume;
    if (volume == m_volume)
        return;
    m_volume = volume;
    Q_EMIT volumeChanged(volume);
}

void ItemPlayer::setVolume(int volume)
{
    m_volume = volume;
    if (m_pipeline)
        m_pipeline->setVolume(RendererValues::linearVolume(volume));
    Q_EMIT volumeChanged(volume);
}

/// Held back until the item is prepared: until then its streams still complete one another's facts.
void ItemPlayer::tellFacts()
{
    if (m_phase != Phase::Loaded)
        return;
    for (const TagCollector::Fact &news : m_tags.takeNews())
        Q_EMIT fact(m_item.epoch, news.key, news.values);
}

void ItemPlayer::tellDuration()
{
    if (m_phase != Phase::Loaded)
        return; // not known before
    if (const std::optional<qint64> duration = m_pipeline->duration())
        m_tags.set(QStringLiteral("duration"), {int(std::lround(double(*duration) / GST_SECOND))});
    tellFacts();
}
