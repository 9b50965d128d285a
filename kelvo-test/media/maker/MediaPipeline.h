// SPDX-License-Identifier: MIT
#pragma once

#include "ClockedMedium.h"
#include "GstHandles.h"
#include "Recipe.h"
#include "TimeCodeWave.h"

/// Makes one medium, once.
class MediaPipeline
{
public:
    /// @param path  of the file, which is written over
    MediaPipeline(const Recipe &recipe, const ClockedMedium &medium, const QString &path);
    ~MediaPipeline();
    Q_DISABLE_COPY_MOVE(MediaPipeline)

    /// Returns when the medium is made, or cannot be: then error() tells why.
    ClockedMedium::ExitCode run();
    QString error() const { return m_error; }

private:
    void prepareSound();
    void preparePicture();
    void tell(const QString &title);
    GstHandles::Element element(const char *name) const;
    // On GStreamer's streaming threads.
    void feed(GstElement *source);
    void mark(GstElement *element, GstBuffer *picture) const;

    const int m_item;
    const qint64 m_samples; ///< of the whole
    TimeCodeWave m_wave;
    qint64 m_given = 0; ///< samples
    GstHandles::Element m_pipeline;
    QString m_error;
};
