// SPDX-License-Identifier: MIT
#include "Recipe.h"

#include "GstHandles.h"
#include "MediaClock.h"

#include <QHash>
#include <QStringList>

namespace {
/// Before the first sample that was given to it an MPEG layer III encoder puts 576, a decoder 529.
constexpr int layer3Delay = 576 + 529;
/// What this encoder puts there, of which its files do not tell.
constexpr int aacDelay = 1600;

QString withPicture(const char *pictureCoder, const char *soundCoder, const char *container)
{
    return QStringLiteral("videotestsrc name=picture pattern=ball"
                          " ! video/x-raw,format=I420,width=%1,height=%2,framerate=%3/1"
                          " ! simplevideomark name=mark pattern-width=%4 pattern-height=%4 pattern-count=%5"
                          " pattern-data-count=%6 ! %7 ! queue ! mux. "
                          "appsrc name=sound ! audioconvert ! %8 ! queue ! mux. "
                          "%9 name=mux ! filesink name=file")
        .arg(MediaClock::pictureWidth)
        .arg(MediaClock::pictureHeight)
        .arg(MediaClock::framesPerSecond)
        .arg(MediaClock::markSize)
        .arg(MediaClock::markGuards)
        .arg(MediaClock::markBits)
        .arg(QLatin1String(pictureCoder), QLatin1String(soundCoder), QLatin1String(container));
}

QString sound(const char *coder)
{
    return QStringLiteral("appsrc name=sound ! audioconvert ! %1 ! filesink name=file")
        .arg(QLatin1String(coder));
}

// At rates and by encoders that leave a square wave on one channel and a tone on the other what they are: those that
// replace what nobody hears by noise, or one channel by the other, make the code unreadable.
constexpr const char *layer3 = "lamemp3enc target=bitrate bitrate=256 cbr=true ! mpegaudioparse";
constexpr const char *aac = "voaacenc bitrate=160000 ! aacparse";
constexpr const char *vorbis = "vorbisenc quality=0.6";

/// Debian's names.
QString packageOf(const QString &element)
{
    static const QStringList good{QStringLiteral("wavenc"), QStringLiteral("flacenc"),
        QStringLiteral("lamemp3enc"), QStringLiteral("mpegaudioparse"), QStringLiteral("aacparse"),
        QStringLiteral("id3v2mux"), QStringLiteral("mp4mux"), QStringLiteral("vp8enc"),
        QStringLiteral("webmmux"), QStringLiteral("avimux")};
    static const QStringList libav{QStringLiteral("avenc_mpeg4")};
    static const QStringList bad{
        QStringLiteral("voaacenc"), QStringLiteral("simplevideomark"), QStringLiteral("h264parse")};
    if (good.contains(element))
        return QStringLiteral("gstreamer1.0-plugins-good");
    if (libav.contains(element))
        return QStringLiteral("gstreamer1.0-libav");
    if (bad.contains(element))
        return QStringLiteral("gstreamer1.0-plugins-bad");
    return element == QLatin1String("x264enc") ? QStringLiteral("gstreamer1.0-plugins-ugly")
                                               : QStringLiteral("gstreamer1.0-plugins-base");
}
} // namespace

std::optional<Recipe> Recipe::of(const QString &format)
{
    const QByteArray layer3File = QByteArray(layer3) + " ! id3v2mux";
    const QByteArray aacFile = QByteArray(aac) + " ! mp4mux faststart=true";
    const QByteArray vorbisFile = QByteArray(vorbis) + " ! oggmux";
    const QHash<QString, Recipe> recipes{
        {QStringLiteral("wav"), {sound("wavenc"), 0}},
        {QStringLiteral("flac"), {sound("flacenc"), 0}},
        {QStringLiteral("mp3"), {sound(layer3File.constData()), layer3Delay}},
        {QStringLiteral("m4a"), {sound(aacFile.constData()), aacDelay}},
        {QStringLiteral("opus"), {sound("opusenc bitrate=160000 ! oggmux"), 0}},
        {QStringLiteral("ogg"), {sound(vorbisFile.constData()), 0}},
        {QStringLiteral("mp4"),
            {withPicture(
                 "x264enc speed-preset=ultrafast tune=zerolatency bitrate=1000 key-int-max=25 ! h264parse",
                 aac, "mp4mux faststart=true"),
                aacDelay}},
        {QStringLiteral("webm"),
            {withPicture("vp8enc deadline=1 cpu-used=8 target-bitrate=1000000 keyframe-max-dist=25", vorbis,
                 "webmmux"),
                0}},
        {QStringLiteral("avi"),
            {withPicture("avenc_mpeg4 bitrate=1500000 gop-size=25", layer3, "avimux"), layer3Delay}},
    };
    const auto found = recipes.constFind(format);
    return found == recipes.cend() ? std::nullopt : std::optional<Recipe>(*found);
}

QString Recipe::missing() const
{
    QStringList missing;
    const QStringList words = pipeline.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (qsizetype i = 0; i < words.size(); ++i) {
        const QString &word = words.at(i);
        const bool isElement
            = (i == 0 || words.at(i - 1) == QLatin1String("!") || words.at(i - 1).endsWith(u'.'))
            && !word.contains(u'/') && !word.endsWith(u'.');
        const GstHandles::ElementFactory factory(
            isElement ? gst_element_factory_find(word.toLatin1().constData()) : nullptr);
        if (isElement && !factory)
            missing.append(QStringLiteral("%1 (Debian package %2)").arg(word, packageOf(word)));
    }
    return missing.isEmpty() ? QString()
                             : QStringLiteral("GStreamer lacks ") + missing.join(QStringLiteral(", "));
}
