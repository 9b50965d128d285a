// SPDX-License-Identifier: MIT
#pragma once

#include "VideoFrameTap.h"

#include <QObject>
#include <QSize>
#include <QString>

/// Turns pictures of a video into PNG files in the cache folder, on a thread of its own: at the size of a film that
/// takes a good part of a second. Only the newest files are kept.
class VideoFrameStore : public QObject
{
    Q_OBJECT
public:
    static constexpr int KeptFiles = 20;

    /// The folder of the files.
    static QString folder();

    /// Ends with saved(), or with a warning in the log.
    void save(quint64 epoch, const VideoFrame &frame);

Q_SIGNALS:
    /// The epoch is that of the call. The size is that of the picture, in square pixels.
    void saved(quint64 epoch, const QString &path, const QSize &size);
};
