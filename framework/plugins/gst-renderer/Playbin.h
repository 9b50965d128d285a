// SPDX-License-Identifier: MIT
#pragma once

#include "GstHandles.h"
#include "KelvoEvidenceSource.h"
#include "VideoOutput.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <optional>

class Mailbox;

/// The pipeline: one playbin element, used for one item after the other. Engine thread.
class Playbin
{
public:
    struct Listener
    {
        std::shared_ptr<Mailbox> mailbox; ///< by which both arrive
        std::function<void(GstMessage *)> message;
        std::function<void()> volumeMoved;
        VideoOutput::WindowId window; ///< what the video output is to draw into
    };

    /// Null when GStreamer has no playbin.
    static std::unique_ptr<Playbin> create(GstHandles::Element audioOutput, GstHandles::Element videoOutput,
        int networkTimeout, Listener listener);
    /// Stops it first.
    ~Playbin();
    Q_DISABLE_COPY_MOVE(Playbin)

    GstElement *element() const { return m_playbin.get(); }
    GstElement *audioOutput() const { return m_audioOutput.get(); }

    GstStateChangeReturn setState(GstState state);
    void setUri(const QByteArray &encodedUri);
    /// Linear, 1.0 is unchanged.
    void setVolume(double volume);
    double volume() const;

    /// Nanoseconds; nothing when not known (yet).
    std::optional<qint64> position() const;
    std::optional<qint64> duration() const;
    bool isSeekable() const;
    /// Whether the item has sound.
    bool hasAudio() const;
    /// Whether the item has moving pictures.
    bool hasVideo() const;
    /// Whether the source knows that it has no data.
    bool isEmpty() const;
    /// Whether any streaming thread runs. Of a local file that does not preroll and has none, nothing will come.
    bool isStreaming() const;
    /// To the exact position, playing on from there at the given rate. Ends with an ASYNC_DONE message.
    bool seek(qint64 position, double rate);

    bool isPartOfAudioOutput(const GstObject *object) const;
    bool isPartOfVideoOutput(const GstObject *object) const;

private:
    Playbin() = default;
    void listen(Listener listener, int networkTimeout);

    GstHandles::Element m_playbin;
    GstHandles::Element m_audioOutput;
    GstHandles::Element m_videoOutput;
    std::unique_ptr<KelvoEvidenceSource> m_graph; ///< goes before what it shows
};
