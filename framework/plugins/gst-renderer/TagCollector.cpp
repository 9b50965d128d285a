// SPDX-License-Identifier: MIT
#include "TagCollector.h"

#include "GstHandles.h"

#include <QBuffer>
#include <QImageReader>

#include <algorithm>
#include <utility>

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
        const GlibHandles::Text owner(text);
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

QList<QVariant> date(const GstTagList *tags)
{
    GstDateTime *value = nullptr;
    if (!gst_tag_list_get_date_time(tags, GST_TAG_DATE_TIME, &value))
        return {};
    const GstHandles::DateTime owner(value);
    const GlibHandles::Text text(gst_date_time_to_iso8601_string(value));
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

void TagCollector::merge(const GstTagList *tags)
{
    const bool ofContainer = gst_tag_list_get_scope(tags) == GST_TAG_SCOPE_GLOBAL;
    for (const TagKey &entry : textTags)
        setText(QString::fromLatin1(entry.key), texts(tags, entry.tag), ofContainer);
    set(QStringLiteral("track"), number(tags, GST_TAG_TRACK_NUMBER));
    set(QStringLiteral("date"), date(tags));
    setBitRate(bitRateKey(tags), tags);
    set(QStringLiteral("cover"), cover(tags));
    describeCodecs();
}

/// What the container says about the whole is not replaced by what it says about one of its streams.
void TagCollector::setText(const QString &key, const QList<QVariant> &values, bool ofContainer)
{
    if (values.isEmpty() || (!ofContainer && m_ofContainer.contains(key)))
        return;
    if (ofContainer)
        m_ofContainer.insert(key);
    set(key, values);
}

/// The announced bit rate; without one, a momentary one, which would change with every frame: the first that is told
/// stays.
void TagCollector::setBitRate(const QString &key, const GstTagList *tags)
{
    const QList<QVariant> nominal = number(tags, GST_TAG_NOMINAL_BITRATE);
    if (!nominal.isEmpty())
        set(key, nominal);
    else if (!m_told.contains(key))
        set(key, number(tags, GST_TAG_BITRATE));
}

void TagCollector::set(const QString &key, const QList<QVariant> &values)
{
    if (values.isEmpty() || m_known.value(key) == values)
        return;
    m_known.insert(key, values);
    if (!m_news.contains(key))
        m_news.append(key);
}

QList<TagCollector::Fact> TagCollector::takeNews()
{
    static const QStringList first{QStringLiteral("title"), QStringLiteral("artist"), QStringLiteral("album"),
        QStringLiteral("duration")};
    const auto rank = [](const QString &key) {
        const qsizetype place = first.indexOf(key);
        return place < 0 ? first.size() : place;
    };
    std::stable_sort(m_news.begin(), m_news.end(),
        [&rank](const QString &one, const QString &other) { return rank(one) < rank(other); });
    QList<Fact> facts;
    for (const QString &key : std::exchange(m_news, {})) {
        m_told.insert(key);
        facts.append({key, m_known.value(key)});
    }
    return facts;
}

/// "codec" names what decodes the item: picture and sound, or the only one there is.
void TagCollector::describeCodecs()
{
    QStringList codecs;
    for (const char *key : {"video-codec", "audio-codec"}) {
        const QList<QVariant> values = m_known.value(QLatin1String(key));
        if (!values.isEmpty())
            codecs.append(values.constFirst().toString());
    }
    if (!codecs.isEmpty())
        set(QStringLiteral("codec"), {codecs.join(QLatin1String(" / "))});
}
