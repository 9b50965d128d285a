// SPDX-License-Identifier: MIT
#pragma once

#include "EarlySeek.h"
#include "Engine.h"
#include "ItemProgress.h"
#include "RemotePausePoint.h"
#include "SignsOfLife.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QTimer>

#include <functional>
#include <optional>

class RemoteTransport;

/// How far the item in play has come, by what the player tells and the time that has passed since. The player is asked
/// once a second at most, and only while somebody needs to know.
class RemoteProgress : public QObject
{
    Q_OBJECT
public:
    enum class Motion {
        None, ///< the player has no item of ours
        Waiting, ///< it has one, which is held up
        Pausing, ///< it plays one that it is to pause before that is shown
        Playing,
        Paused,
    };
    /// Pauses; false: the player cannot.
    using Pause = std::function<bool()>;

    /// The transport is not owned and must outlive this object.
    RemoteProgress(RemoteTransport &transport, Pause pause);

    /// Another item or none; it stands at its beginning. `isAlive` as in SignsOfLife.
    void begin(bool isAlive);
    void setMotion(Motion motion);
    void setRate(double rate);
    /// The player was sent there.
    void beginSeek(double seconds);
    /// What it was told last it has refused.
    void giveUpSeek();
    void takePosition(double seconds);
    /// As RemoteTransport::seeked() and begun().
    void takeSeek(double seconds, int settling);
    void takeBeginning(double seconds) { m_item.setPassed(seconds); }
    /// Below 0: not known. True: that is news.
    bool takeDuration(double seconds);
    void setPauseAt(std::optional<uint> seconds);

    double now() const { return m_item.now(); }
    double duration() const { return m_item.duration(); }
    /// Whether it is to pause before that position.
    bool pausesBefore(double seconds) const { return m_pausePoint.isBefore(seconds); }
    SignsOfLife &life() { return m_life; }
    /// Asks the player where it is, unless that is known.
    void makeSure();
    /// Answers from the event loop, with the time that has passed since the player's last word added.
    void answer(Engine::PositionAnswer answer);

private:
    void ask();
    void aimFor(double seconds);
    void seekAgainIfLost(double told, double expected);
    void move();
    bool follow(RemotePausePoint::Step step);
    bool isPaused() const { return m_motion == Motion::Paused; }
    bool isInPlay() const { return m_motion == Motion::Playing || isPaused(); }
    bool isPositionWanted() const;
    bool isPositionKnown() const;
    void schedulePoll();
    std::optional<qint64> timeToPoll() const;
    void tellLater(const Engine::PositionAnswer &answer, double seconds);
    void answerWaiting();

    RemoteTransport &m_transport;
    const Pause m_pause;
    Motion m_motion = Motion::None;
    SignsOfLife m_life;
    ItemProgress m_item;
    bool m_known = false;
    EarlySeek m_earlySeek;
    RemotePausePoint m_pausePoint;
    QElapsedTimer m_lastReport;
    QElapsedTimer m_lastPoll;
    QElapsedTimer m_lastAsked; ///< somebody wanted to know
    QTimer m_pollTimer;
    // For the next report of the player.
    struct Waiting
    {
        QTimer timer;
        QList<Engine::PositionAnswer> answers;
    } m_waiting;
};
