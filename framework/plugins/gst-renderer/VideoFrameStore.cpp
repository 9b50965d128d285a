// SPDX-License-Identifier: MIT
#include "VideoFrameStore.h"

#include "KelvoMessageHandler.h"
#include "UserFolders.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QSaveFile>

#include <atomic>

#include <gst/video/video.h>

namespace {
constexpr GstClockTime longestConversion = 10 * GST_SECOND;

/// Copies a picture of packed RGB.
QImage toImage(GstSample *sample)
{
    GstVideoInfo info;
    GstVideoFrame frame;
    if (!gst_video_info_from_caps(&info, gst_sample_get_caps(sample))
        || !gst_video_frame_map(&frame, &info, gst_sample_get_buffer(sample), GST_MAP_READ))
        return {};
    const auto *pixels = static_cast<const uchar *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
    QImage image = QImage(pixels, GST_VIDEO_FRAME_WIDTH(&frame), GST_VIDEO_FRAME_HEIGHT(&frame),
        GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0), QImage::Format_RGB888)
                       .copy();
    gst_video_frame_unmap(&frame);
    return image;
}

/// In square pixels, as it is meant to be seen.
QImage convert(const VideoFrame &frame)
{
    const GstHandles::Caps wanted(gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, "RGB",
        "pixel-aspect-ratio", GST_TYPE_FRACTION, 1, 1, nullptr));
    GlibHandles::Error problem;
    const GstHandles::Sample converted(
        gst_video_convert_sample(frame.get(), wanted.get(), longestConversion, problem.out()));
    if (converted)
        return toImage(converted.get());
    qCWarning(lcKelvo) << "The picture cannot be converted:"
                       << (problem ? problem->message : "no reason given");
    return {};
}

/// Unique on this machine, and in alphabetical order by age.
QString newName()
{
    static std::atomic<int> number = 0;
    return QStringLiteral("pause-%1-%2-%3.png")
        .arg(QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss-zzz")))
        .arg(QCoreApplication::applicationPid())
        .arg(++number);
}

/// The one of that name stays: it is not the newest by its name where the clock was put back.
void removeOld(QDir folder, const QString &newest)
{
    QStringList files = folder.entryList(
        {QStringLiteral("pause-*.png")}, QDir::Files | QDir::NoSymLinks, QDir::Name | QDir::Reversed);
    files.removeOne(newest);
    for (const QString &file : files.mid(VideoFrameStore::KeptFiles - 1))
        folder.remove(file);
}
} // namespace

QString VideoFrameStore::folder()
{
    return UserFolders::cache(QStringLiteral("pause-frames"));
}

void VideoFrameStore::save(quint64 epoch, const VideoFrame &frame)
{
    const QImage image = convert(frame);
    if (image.isNull())
        return;
    const QDir place(folder());
    QSaveFile file(place.filePath(newName()));
    if (!UserFolders::makePrivate(place.path())) {
        qCWarning(lcKelvo) << "The picture cannot be saved:" << place.path() << "- the folder cannot be made";
        return;
    }
    const bool isOpen
        = file.open(QIODevice::WriteOnly) && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    if (!isOpen || !image.save(&file, "PNG") || !file.commit()) {
        qCWarning(lcKelvo) << "The picture cannot be saved:" << file.fileName() << file.errorString();
        return;
    }
    removeOld(place, QFileInfo(file.fileName()).fileName());
    Q_EMIT saved(epoch, file.fileName(), image.size());
}
