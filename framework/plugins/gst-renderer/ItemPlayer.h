// SPDX-License-Identifier: MIT
#pragma once

#include "EngineSettings.h"
#include "ItemFindings.h"
#include "KelvoAnswer.h"
#include "KelvoError.h"
#include "KelvoRenderer.h"
#include "LastingPipeline.h"
#include "PipelineMessages.h"
#include "PlayPosition.h"
#include "PlayState.h"
#include "PlaybackWatch.h"
#include "VideoFrameTap.h"

#include <QElapsedTimer>
#include <QObject>
#include <QRect>
#include <QUrl>

#include <memory>

class Mailbox;
class QTimer;
class VideoPresenter;

/// Plays one item at a time: the state machine over the pipeline.
///
/// Lives on the engine thread, because changes of a pipeline's state may block. Everything here is called
/// there, and its signals go to the GUI thread. Each item has the epoch of its load(); every signal about an
/// item carries it, so that the GUI side can tell what comes late from news.
///
/// It brings together what each of its parts knows of its own: the state, the position, the pipeline, the picture, the
/// facts. What to do about each thing that happens is decided here and in them, never in the pipeline's threads.
class ItemPlayer : public QObject
{
    Q_OBJECT
public:
    struct Item
    {
        quint64 epoch = 0;
        QUrl uri;
        bool paused = false; ///< go to Paused instead of Playing
        double speed = 1.0;
    };

    explicit ItemPlayer(const EngineSettings &settings);
    ~ItemPlayer() override;

    /// Starts GStreamer; ends with initialised().
    void initialise();

    void load(const Item &item);
    /// Ends the item without a report and closes the outputs.
    void unload();
    void pause();
    void resume();
    /// To that second, or that many seconds from here; clamped to the item. To its end: the item ends.
    void seek(int seconds, bool relative);
    void setSpeed(double speed);
    /// Pauses when the position reaches that second, once, in this item or a later one.
    void setPauseAt(uint seconds);
    void dropPauseAt();
    /// 0..99 on a cubic scale.
    void setVolume(int volume);
    /// Native id of the window that video goes to (0: none) and the place in it, in its pixels.
    void placeVideo(uint window, const QRect &rectangle);
    /// Whether the video output may paint a colour key itself; from the next pipeline on.
    void setVideoAutopaint(bool autopaint);
    /// Whether frameTaken() follows when playback of a video pauses.
    void setFrameOnPause(bool wanted);
    /// Answers as the property "position" does: in seconds with their fraction.
    void answerExactPosition(const KelvoAnswer &answer);

Q_SIGNALS:
    /// Empty text: ready for use.
    void initialised(const QString &problem);
    void stateReached(quint64 epoch, KelvoRenderer::State state);
    /// pauseAt() has paused.
    void pausedAtPosition(quint64 epoch);
    /// The item has come to its end. `progressed` is false for one that ended where it began, such as a
    /// picture.
    void ended(quint64 epoch, bool progressed);
    /// The item cannot be played, or, after it has `progressed`, no further; it is unloaded.
    void failed(quint64 epoch, KelvoError::Code code, const QString &message, bool progressed);
    /// Something went wrong, but the item goes on.
    void troubled(quint64 epoch, KelvoError::Code code, const QString &message);
    void fact(quint64 epoch, const QString &key, const QList<QVariant> &values);
    void buffering(quint64 epoch, int percent);
    void speedChanged(quint64 epoch, double speed);
    void volumeChanged(int volume);
    void policyOverridden(bool overridden);
    /// The colour, 0xRRGGBB, that the video output needs around it; 0: none.
    void colorKeyChanged(uint color);
    /// The picture at which playback has paused.
    void frameTaken(quint64 epoch, const VideoFrame &frame);

private:
    void connectParts();
    void connectPosition();
    void startPipeline();
    void restart();
    void forgetItem();
    void shutDown();
    void prerolled();
    void applyState();
    void settle();
    void report(KelvoRenderer::State state);
    void look();
    void endItem(bool progressed);
    void fail(KelvoError::Code code, const QString &message);
    void failUnlessReported();
    void refuse(const QString &what);

    // What the pipeline says
    void hear(GstMessage *message);
    void takeStateChange(bool playing);
    void takeAsyncDone();
    void takeEnd();
    void takeFailure(PipelineFailure failure);
    void takeMissingCodec(const QString &text);
    void takeBuffering(int percent);
    void takeOverride(bool overridden);
    void takeClockLoss();

    // What is told about the item
    void tellAboutItem();
    void tellDuration();
    void tellFacts();

    void redrawPaused();
    void takeDueFrame();

    const EngineSettings m_settings;
    const std::shared_ptr<Mailbox> m_mailbox;
    std::unique_ptr<VideoPresenter> m_video; ///< made on the engine thread, like all that it consists of
    LastingPipeline m_pipeline; ///< goes before the window that it draws into
    PipelineMessages m_messages;
    PlayState m_state;
    PlayPosition m_position;
    PlaybackWatch m_watch;
    QTimer *m_watchTimer;
    QElapsedTimer m_time; ///< the watch's
    Item m_item;
    ItemFindings m_findings;
};
