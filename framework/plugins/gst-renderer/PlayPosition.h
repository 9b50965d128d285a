// SPDX-License-Identifier: MIT
#pragma once

#include "PauseClock.h"
#include "PausePoint.h"
#include "PositionNote.h"
#include "SeekWishes.h"

#include <QElapsedTimer>
#include <QObject>

class LastingPipeline;
class PlayState;

/// Where in the item playback is, where it is to go and how fast, and where it is to pause. Engine thread.
///
/// Positions are in nanoseconds.
class PlayPosition : public QObject
{
    Q_OBJECT
public:
    /// Both have to outlive it.
    PlayPosition(const PlayState &state, const LastingPipeline &pipeline, std::shared_ptr<Mailbox> mailbox,
        QObject *parent);

    /// Another item, to be played at that speed once it has prerolled.
    void beginItem(double speed);
    void forgetItem();
    /// The item has prerolled: makes the seek that it has been waiting for.
    void begin();
    /// The pipeline is given up. Returns where it was.
    qint64 leavePipeline();
    /// Has the next pipeline go on there.
    void resumeAt(qint64 position);
    /// The pipeline changes its state: it does not run into the point to pause at by itself any more.
    void stopClock() { m_pauseClock.disarm(); }

    /// On the way to a position, that position.
    qint64 current() const;
    /// The same, remembered for reachable().
    qint64 note();
    /// How far playback can have come by now.
    qint64 reachable() const;
    double speed() const { return m_wishes.speed(); }
    bool isSeeking() const { return m_wishes.isSeeking(); }
    /// Whether no seek is to come or under way.
    bool isAtRest() const { return m_wishes.isAtRest(); }

    /// To that second, or that many seconds from here; clamped to the item. To its end: endReached().
    void seek(int seconds, bool relative);
    /// Makes the picture anew while playback stands still.
    void seekOnTheSpot();
    void setSpeed(double speed);
    /// Playing backwards has come to the beginning, where it goes on forwards at normal speed.
    void turnAround();
    /// A seek is done: makes the one that was wished for in the meantime.
    void seekDone();

    void setPauseAt(qint64 position);
    void dropPauseAt();
    /// Tells when playback is at or past the point to pause at; before it, has the pipeline's clock tell when it is
    /// reached.
    void checkPausePoint();

Q_SIGNALS:
    /// A seek is under way.
    void seekBegun();
    void seekRefused();
    void speedRefused();
    void speedChanged(double speed);
    /// A seek goes to the end.
    void endReached();
    void pausePointReached();

private:
    void seekTo(qint64 target);
    void issueSeek();

    const PlayState &m_state;
    const LastingPipeline &m_pipeline;
    SeekWishes m_wishes;
    PausePoint m_pausePoint;
    PauseClock m_pauseClock;
    PositionNote m_note;
    QElapsedTimer m_time;
};
