// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoAnswer.h"
#include "KelvoItemFacts.h"
#include "KelvoPlayQueue.h"
#include "KelvoRenderer.h"
#include "RemotePosition.h"
#include "RemoteTransport.h"

#include <QElapsedTimer>
#include <QHash>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

/// A renderer over a player outside of this process.
///
/// This class decides what plays: it holds the place in the playlist, pauses at a second and keeps to the contract of
/// KelvoRenderer. How the player is told is the business of the RemoteTransport. What another controller does to the
/// player is shown and not fought: an item of its own has index -1 and ends the automatic way through our playlist.
///
/// Lists (.m3u and the like) go to the player as they are. Everything that is reported goes through the event loop, so
/// that whoever hears it may call anything, and may delete the renderer.
class RemoteRenderer : public KelvoRenderer
{
    Q_OBJECT
public:
    RemoteRenderer(
        std::unique_ptr<RemoteTransport> transport, QString uuid, QString name, QObject *parent = nullptr);
    ~RemoteRenderer() override;

    QString uuid() const override { return m_uuid; }
    QString name() const override { return m_name; }
    void play() override;
    void playUri(const QUrl &uri) override;
    void playUriWithType(const QUrl &uri, const QString &contentType) override;
    void stop() override;
    void pause() override;
    void resume() override;
    void next() override;
    void previous() override;
    void pauseAt(uint seconds) override;
    void gotoIndex(uint index) override;
    void setPosition(int seconds, int mode) override;
    void getStatus(QObject *receiver, const char *slot) override;
    void getPosition(QObject *receiver, const char *slot) override;
    void assignPlaylist(KelvoPlaylist *playlist) override;
    void setKelvoProperty(const QString &name, const QVariant &value) override;
    void kelvoProperty(const QString &name, QObject *receiver, const char *slot) override;

private:
    /// What plays, or played last.
    enum class InPlay { Single, OfPlaylist, OfAnother };
    // Reports (RemoteRenderer.cpp)
    void connectTransport();
    void later(std::function<void()> call);
    void setState(State state);
    void tellState(State state);
    void takeFact(const QString &key, const QList<QVariant> &values);
    void tellFact(const KelvoItemFacts::Fact &fact);
    void tellAgain();
    void reportError(KelvoError::Code code, const QString &message);
    void transportTroubled(KelvoError::Code code, const QString &message);

    // Commands (RemoteRenderer_commands.cpp)
    bool adoptAssigned();
    bool moveWhileStopped(int index);
    void leaveItemBySkip(int index);
    void seekTo(double seconds);
    void seekToEnd();

    // Playback (RemoteRenderer_playback.cpp)
    void startRun();
    void startItem();
    void leaveItem();
    void announceItem();
    void tellItem();
    KelvoPlaylist *playlistInPlay() const;
    KelvoContent content() const;
    void transportReached(quint64 epoch, State state);
    void reachedPlaying();
    void reachedPaused();
    void takeLoaded();
    void stoppedElsewhere();
    void takeReplacement(const KelvoMediaInfo &item);
    void itemEnded();
    void itemFailed(KelvoError::Code code, const QString &message);
    void halt(bool completed);
    void followEdit();
    void playlistEdited();

    // What an item did (RemoteRenderer_judging.cpp)
    void forgetFalseStart();
    bool hasProgressed() const;
    bool hasLived() const;
    bool isLifeUnknown() const;
    void failUnplayed();

    // Position (RemoteRenderer_position.cpp)
    void askPosition();
    void positionReported(quint64 epoch, double seconds);
    void durationReported(quint64 epoch, double seconds);
    void answerPosition(std::function<void(double)> answer);
    void answerWaiting();
    void positionMoved();
    void schedulePoll();
    bool isSeeking() const;
    bool isPositionWanted() const;
    bool isPositionKnown() const;
    bool checkPausePoint();
    bool canPause();

    // Properties (RemoteRenderer_properties.cpp)
    void setVolume(const QVariant &value);
    void setSpeed(const QVariant &value);
    void volumeReported(int volume);
    void rateReported(double rate);
    double rateForLoading();
    void refuseValue(const QString &name, const QVariant &value);
    void setProperty(const QString &name, const QVariant &value);

    const std::unique_ptr<RemoteTransport> m_transport;
    const QString m_uuid;
    QString m_name;
    QHash<QString, QVariant> m_properties;
    std::optional<uint> m_volumeAwaited; ///< set, not yet reported
    std::optional<double> m_rateAwaited;

    State m_state = Stopped;
    InPlay m_inPlay = InPlay::OfPlaylist;
    KelvoPlayQueue m_queue;
    QPointer<KelvoPlaylist> m_assigned; ///< m_queue takes it over with the next command that chooses an item
    QPointer<KelvoPlaylist> m_announced; ///< the playlist last reported as in play
    KelvoMediaInfo m_single; ///< the URI given last
    bool m_editPending = false;

    // Of the run: everything since the user last chose an item
    bool m_playedInRun = false;
    int m_failedInRow = 0; ///< items
    int m_idleInRow = 0; ///< items that ended where they began

    // Of the item in play
    KelvoMediaInfo m_item;
    quint64 m_epoch = 0; ///< 0: nothing of ours is in the player
    quint64 m_lastEpoch = 0;
    bool m_loaded = false; ///< the player has begun with it
    bool m_pauseWanted = false;
    bool m_pauseSent = false; ///< told to the player before the item was reported as playing
    bool m_loadedPaused = false;
    std::optional<int> m_seekWhenLoaded;
    QElapsedTimer m_playingSince;
    bool m_positionTold = false;
    bool m_moved = false; ///< the player has told of a position behind the item's beginning

    RemotePosition m_position;
    double m_duration = -1; ///< seconds; -1: not known
    KelvoItemFacts m_facts;
    bool m_positionKnown = false;
    std::optional<uint> m_pauseAt;
    QElapsedTimer m_lastReport;
    QElapsedTimer m_lastPoll;
    QElapsedTimer m_lastAsked; ///< somebody wanted to know the position
    QElapsedTimer m_lastSeek;
    bool m_seekArrived = true;
    std::optional<double> m_seekTarget; ///< until it plays on from there
    QTimer m_pollTimer;
    QTimer m_pauseTimer;
    QTimer m_answerTimer;
    QList<std::function<void(double)>> m_waiting; ///< for the next position report
};
