// SPDX-License-Identifier: MIT
#include "TagCollector.h"

#include "GstHandles.h"

#include <QBuffer>
#include <QImageReader>

#include <algorithm>

#include <gst/gst.h>

namespace {
struct TagKey
{
    const char *tag;
    const char *key;
};

constexpr TagKey textTags[] = {
    {GST_TAG_TITLE, "title"},
    {GST_TAG_ARTIST, "artist"},
    {GST_TAG_ALBUM, "album"},
    {GST_TAG_ALBUM_ARTIST, "album-artist"},
    {GST_TAG_COMPOSER, "composer"},
    {GST_TAG_GENRE, "genre"},
    {GST_TAG_COMMENT, "comment"},
    {GST_TAG_ORGANIZATION, "organization"},
    {GST_TAG_LANGUAGE_CODE, "language"},
    {GST_TAG_CONTAINER_FORMAT, "container"},
    {GST_TAG_AUDIO_CODEC, "audio-codec"},
    {GST_TAG_VIDEO_CODEC, "video-codec"},
};

QList<QVariant> texts(const GstTagList *tags, const char *tag)
{
    QList<QVariant> values;
    const guint count = gst_tag_list_get_tag_size(tags, tag);
    for (guint i = 0; i < count; ++i) {
        gchar *text = nullptr;
        if (!gst_tag_list_get_string_index(tags, tag, i, &text))
            continue;
        const GstHandles::Text owner(text);
        const QString value = QString::fromUtf8(text).trimmed();
        if (!value.isEmpty() && !values.contains(value))
            values.append(value);
    }
    return values;
}

QList<QVariant> number(const GstTagList *tags, const char *tag)
{
    guint value = 0;
    return gst_tag_list_get_uint(tags, tag, &value) && value > 0 ? QList<QVariant>{value} : QList<QVariant>{};
}

/// The announced bit rate rather than the momentary one, which changes with every frame.
QList<QVariant> bitRate(const GstTagList *tags)
{
    const QList<QVariant> nominal = number(tags, GST_TAG_NOMINAL_BITRATE);
    return nominal.isEmpty() ? number(tags, GST_TAG_BITRATE) : nominal;
}

QList<QVariant> date(const GstTagList *tags)
{
    GstDateTime *value = nullptr;
    if (!gst_tag_list_get_date_time(tags, GST_TAG_DATE_TIME, &value))
        return {};
    const GstHandles::Text text(gst_date_time_to_iso8601_string(value));
    gst_date_time_unref(value);
    return text ? QList<QVariant>{QString::fromUtf8(text.get())} : QList<QVariant>{};
}

/// A picture in words: type, size in pixels where it can be read, size in bytes.
QString pictureText(GstSample *sample)
{
    GstBuffer *buffer = gst_sample_get_buffer(sample);
    GstMapInfo map;
    if (!buffer || !gst_buffer_map(buffer, &map, GST_MAP_READ))
        return {};
    QStringList parts;
    const GstCaps *caps = gst_sample_get_caps(sample);
    if (caps && gst_caps_get_size(caps) > 0)
        parts.append(QString::fromLatin1(gst_structure_get_name(gst_caps_get_structure(caps, 0))));
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(map.data), qsizetype(map.size));
    QBuffer device(&bytes);
    const QSize size = QImageReader(&device).size();
    if (size.isValid())
        parts.append(QStringLiteral("%1x%2").arg(size.width()).arg(size.height()));
    parts.append(QStringLiteral("%1 bytes").arg(map.size));
    gst_buffer_unmap(buffer, &map);
    return parts.join(QLatin1String(", "));
}

QList<QVariant> cover(const GstTagList *tags)
{
    for (const char *tag : {GST_TAG_IMAGE, GST_TAG_PREVIEW_IMAGE}) {
        GstSample *sample = nullptr;
        if (!gst_tag_list_get_sample(tags, tag, &sample))
            continue;
        const GstHandles::Sample owner(sample);
        const QString text = pictureText(sample);
        if (!text.isEmpty())
            return {text};
    }
    return {};
}

/// Audio and video streams both announce bit rates; the plain name is the sound's.
QString bitRateKey(const GstTagList *tags)
{
    const bool video = gst_tag_list_get_tag_size(tags, GST_TAG_VIDEO_CODEC) > 0;
    const bool audio = gst_tag_list_get_tag_size(tags, GST_TAG_AUDIO_CODEC) > 0;
    return video && !audio ? QStringLiteral("video-bitrate") : QStringLiteral("bitrate");
}
} // namespace

QList<TagCollector::Fact> TagCollector::merge(const GstTagList *tags)
{
    QList<Fact> facts;
    for (const TagKey &entry : textTags)
        facts += set(QString::fromLatin1(entry.key), texts(tags, entry.tag));
    facts += set(QStringLiteral("track"), number(tags, GST_TAG_TRACK_NUMBER));
    facts += set(QStringLiteral("date"), date(tags));
    facts += set(bitRateKey(tags), bitRate(tags));
    facts += set(QStringLiteral("cover"), cover(tags));
    describeCodecs(facts);
    return facts;
}

QList<TagCollector::Fact> TagCollector::set(const QString &key, const QList<QVariant> &values)
{
    if (values.isEmpty() || m_known.value(key) == values)
        return {};
    m_known.insert(key, values);
    return {{key, values}};
}

/// "codec" names what decodes the item: picture and sound, or the only one there is.
void TagCollector::describeCodecs(QList<Fact> &facts)
{
    QStringList codecs;
    for (const char *key : {"video-codec", "audio-codec"}) {
        const QList<QVariant> values = m_known.value(QLatin1String(key));
        if (!values.isEmpty())
            codecs.append(values.constFirst().toString());
    }
    if (!codecs.isEmpty())
        facts += set(QStringLiteral("codec"), {codecs.join(QLatin1String(" / "))});
}
