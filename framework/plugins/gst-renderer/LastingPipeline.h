// SPDX-License-Identifier: MIT
#pragma once

#include "EngineSettings.h"
#include "OutputFallbacks.h"

#include <QObject>

#include <gst/gst.h>
#include <memory>

class Mailbox;
class Playbin;
class VideoOutput;

/// The pipeline that serves one item after the other, so that the outputs stay open in between, with its volume. It is
/// made anew when it is beyond repair, and when an output has failed that something else has to stand in for.
///
/// Engine thread. What its pipeline says arrives by the mailbox; each pipeline and each item begin a new generation.
class LastingPipeline : public QObject
{
    Q_OBJECT
public:
    LastingPipeline(const EngineSettings &settings, std::shared_ptr<Mailbox> mailbox, QObject *parent);
    ~LastingPipeline() override;

    /// Null when there is none.
    Playbin *get() const { return m_playbin.get(); }
    Playbin *operator->() const { return m_playbin.get(); }
    explicit operator bool() const { return m_playbin != nullptr; }

    /// Gets ready for another item. False when there is no pipeline to be had.
    bool prepare(VideoOutput &video);
    /// Takes a new pipeline with the outputs that are left. False when there is none to be had.
    bool renew(VideoOutput &video);
    /// To Null. What it still has to say is not heard any more.
    void shutDown();
    /// The same, and the next item tries again the outputs that had failed.
    void release();
    /// Whether it served another item before.
    bool isReused() const { return m_isReused; }
    OutputFallbacks &fallbacks() { return m_fallbacks; }

    /// 0..99 on a cubic scale; of this pipeline and those to come.
    void setVolume(int volume);
    /// The item has its streams. What a sound server gave them to begin with was nobody's wish: it is told ours again,
    /// and only from now on is another volume somebody's move.
    void claimVolume();

Q_SIGNALS:
    void messageArrived(GstMessage *message);
    /// Others than setVolume() have moved it: the desktop's mixer moves the volume of some outputs.
    void volumeMoved(int volume);

private:
    void readVolume();

    const EngineSettings m_settings;
    const std::shared_ptr<Mailbox> m_mailbox;
    std::unique_ptr<Playbin> m_playbin;
    OutputFallbacks m_fallbacks;
    int m_volume = 99;
    bool m_isReused = false;
    bool m_hasStream = false;
};
