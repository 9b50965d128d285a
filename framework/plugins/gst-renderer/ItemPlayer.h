// SPDX-License-Identifier: MIT
#pragma once

#include "EngineSettings.h"
#include "KelvoAnswer.h"
#include "KelvoError.h"
#include "KelvoRenderer.h"
#include "StallWatch.h"
#include "TagCollector.h"
#include "VideoFrameTap.h"

#include <QElapsedTimer>
#include <QObject>
#include <QRect>
#include <QUrl>

#include <memory>
#include <optional>

class Mailbox;
class PauseClock;
class Playbin;
class QTimer;
class VideoOutput;
typedef struct _GstMessage GstMessage;

/// Plays one item at a time: the state machine over the pipeline.
///
/// Lives on the engine thread, because changes of a pipeline's state may block. Everything here is called
/// there, and its signals go to the GUI thread. Each item has the epoch of its load(); every signal about an
/// item carries it, so that the GUI side can tell what comes late from news.
///
/// What the user wants (playing or paused) is kept apart from what holds the pipeline back at the moment (an
/// empty buffer, a policy of the audio server): a hold never changes the want.
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
    /// Answers with the position in whole seconds.
    void answerPosition(const KelvoAnswer &answer);
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
    enum class Phase { Idle, Loading, Loaded, Ended };

    // Pipeline (ItemPlayer.cpp)
    bool createPipeline();
    void startPipeline();
    void forgetItem();
    void shutDown();
    void prerolled();
    void applyState();
    void settle();
    void report(KelvoRenderer::State state);
    bool wantsToMove() const;
    void watch();
    bool isDead();
    void endItem(bool progressed);
    void fail(KelvoError::Code code, const QString &message);
    void failUnlessReported();
    void restart();

    // Messages (ItemPlayer_messages.cpp)
    void handle(GstMessage *message);
    void handleStateChange(GstMessage *message);
    void handleAsyncDone();
    void handleEnd();
    void handleError(GstMessage *message);
    void handleMissingPlugin(GstMessage *message);
    void handleWarning(GstMessage *message);
    void handleBuffering(GstMessage *message);
    void handleTags(GstMessage *message);
    void handleStateRequest(GstMessage *message);
    void handleVolume();
    void tellFacts();
    void tellAboutItem();
    void noteAudio();
    void tellDuration();

    // Position (ItemPlayer_seeking.cpp)
    qint64 position() const;
    void noteProgress();
    qint64 reachedPosition() const;
    void seekTo(qint64 target);
    void issueSeek();
    void seekDone();
    void checkPauseAt();
    void backAtStart();

    // Pictures (ItemPlayer_video.cpp)
    void redrawPaused();
    void noteVideo();
    void takeDueFrame();

    const EngineSettings m_settings;
    const std::shared_ptr<Mailbox> m_mailbox;
    std::unique_ptr<Playbin> m_pipeline;
    std::unique_ptr<PauseClock> m_pauseClock;
    QTimer *m_watchTimer;
    QTimer *m_redrawTimer;
    std::unique_ptr<VideoOutput> m_video; ///< made on the engine thread, like all that it consists of
    QElapsedTimer m_time;
    StallWatch m_stallWatch;
    TagCollector m_tags;
    int m_volume = 99;
    bool m_silent = false; ///< the audio output failed while playing; the silent clock stands in
    bool m_audioLost = false; ///< has failed, was told, and is tried again with each item until it is back
    bool m_blind = false; ///< the same for the video output
    bool m_policyOverride = false;
    bool m_framesWanted = false;
    uint m_colorKey = 0;

    // Of the item
    Item m_item;
    Phase m_phase = Phase::Idle;
    KelvoRenderer::State m_reported = KelvoRenderer::Stopped;
    int m_deadLooks = 0; ///< how often in a row no streaming thread was running
    bool m_wantPlaying = false;
    bool m_reused = false; ///< the pipeline served another item before
    bool m_pauseAcknowledged = false; ///< paused before there is anything to pause: reported at once
    bool m_frameDue = false; ///< paused, and the picture not yet taken
    bool m_bufferHold = false;
    bool m_live = false;
    bool m_pipelinePlaying = false; ///< the state that the pipeline is in, once it has prerolled
    bool m_playingAsked = false; ///< the state that it was last told to go to
    int m_bufferPercent = 100;
    double m_speed = 1.0;
    qint64 m_noted = 0; ///< the position, nanoseconds, ...
    qint64 m_notedAt = 0; ///< ... at this time of m_time
    bool m_notMedia = false; ///< of a type that is for reading
    QString m_missingCodec; ///< a stream that nothing decodes; reported once the others play
    std::optional<qint64> m_pauseAt; ///< nanoseconds
    std::optional<qint64> m_seekWanted; ///< nanoseconds: the newest position asked for and not yet sought
    std::optional<qint64> m_seekInFlight;
    bool m_rateWanted = false; ///< a seek is due that changes nothing but the speed
};
