// SPDX-License-Identifier: MIT
#pragma once

#include "MprisAddress.h"
#include "MprisSnapshot.h"
#include "RemotePosition.h"
#include "RemoteTransport.h"

#include <QElapsedTimer>
#include <QHash>
#include <QTimer>

#include <functional>
#include <utility>

class QDBusError;

/// Drives one player over MPRIS.
///
/// What players signal is late, partial and sometimes wrong, so a signal only leads to a question: all decisions are
/// made from whole snapshots of the player's properties, one question being under way at a time. README.md tells which
/// players need which of them.
class MprisTransport : public RemoteTransport
{
    Q_OBJECT
public:
    /// @param properties    of the player's interface, just read
    /// @param hasTrackList  the player has the interface for its list of tracks
    MprisTransport(
        MprisAddress address, const QVariantMap &properties, bool hasTrackList, QObject *parent = nullptr);

    Abilities abilities() const override;
    void load(const Item &item) override;
    void unload() override;
    void pause() override;
    void resume() override;
    void seek(double seconds) override;
    void setVolume(int volume) override;
    void setRate(double rate) override;
    void askPosition() override { refresh(); }

    /// The player has another name now.
    void rename(const QString &name);
    /// The player signalled a change of its properties.
    void noteChange();
    /// The player signalled a seek.
    void noteSeek(const QVariant &microseconds);

private:
    enum class Phase {
        Idle, ///< nothing plays that we know of
        Opening, ///< our item is on its way
        Following, ///< something plays
    };
    using Done = std::function<void()>;
    using Failed = std::function<void(KelvoError::Code code, const QString &message)>;

    // Commands and questions (MprisTransport_commands.cpp)
    void command(const QString &method, const QVariantList &arguments, Done done = {}, Failed failed = {});
    void send(const QDBusMessage &message, const QString &what, Done done, Failed failed);
    void setPlayerProperty(const QString &name, const QVariant &value, Done done);
    void sendVolume();
    void refresh();
    void refreshIn(int milliseconds);
    void askTitle();

    // While an item is on its way (MprisTransport_opening.cpp)
    void takeOpening(const MprisSnapshot &now);
    void takeOpeningOurs(const MprisSnapshot &now);
    void takeOpeningRest(const MprisSnapshot &now);
    void noteRest(const MprisSnapshot &now);
    void nudge(const MprisSnapshot &now);
    void takeRefusal(const QString &message);
    void takeAbsence(const MprisSnapshot *now);
    void begin(const MprisSnapshot &now, KelvoRenderer::State state);
    void giveUp();
    void fail(KelvoError::Code code, const QString &message);
    bool isOurs(const MprisTrack &track) const;
    bool isFresh(const MprisSnapshot &now) const;
    bool hasGivenUp() const;
    bool isEmptyForGood(const MprisSnapshot &now) const;
    bool hasPlayedAtOnce(const MprisSnapshot &now) const;

    // What a snapshot means (MprisTransport_following.cpp)
    void take(const MprisSnapshot &now);
    void takeCommon(const MprisSnapshot &now);
    void takeFollowing(const MprisSnapshot &now);
    void takeIdle(const MprisSnapshot &now);
    void takeReplacement(const MprisSnapshot &now);
    void notePositionLost(double seconds, bool isSeek);
    void takeLoss(const MprisSnapshot &now);
    void takeEnd(const MprisSnapshot &now);
    void enter(KelvoRenderer::State state);
    void tellFacts(const MprisSnapshot &now);
    void takePosition(double seconds);
    void tell(const char *key, const QString &text);
    bool hasAdvanced(const MprisSnapshot &now) const;
    bool isAtEnd() const;
    bool isHandOver() const;
    bool isLoss(double seconds) const;
    bool isNews(double seconds) const;
    bool isBackAtRest(const MprisSnapshot &now) const;

    MprisAddress m_address;
    const bool m_hasTrackList;
    MprisSnapshot m_last;
    MprisSnapshot m_previous;
    Phase m_phase = Phase::Idle;
    quint64 m_epoch = 0;
    KelvoRenderer::State m_state = KelvoRenderer::Stopped; ///< reported last
    MprisTrack m_track; ///< in play, or played last
    QHash<QString, QString> m_told; ///< facts about it
    bool m_isFactChanged = false; ///< since it was first told
    bool m_trustsPosition = false; ///< the player says "Stopped" while it plays
    RemotePosition m_position;
    double m_toldPosition = 0; ///< last
    double m_duration = -1;
    QElapsedTimer m_sinceSeek; ///< of ours, as long as the player has not arrived
    QElapsedTimer m_sinceLoss; ///< of the position
    double m_lostAt = 0; ///< what it fell back to
    bool m_lostBySeek = false;
    bool m_tellsOfEmptiness = false; ///< the player says when nothing is left of what it was given

    // Of the item on its way
    Item m_item;
    QUrl m_before; ///< what the player had when the item was given to it
    bool m_accepted = false;
    bool m_seen = false;
    bool m_tried = false; ///< the player said that it plays it
    size_t m_nudges = 0;
    int m_refusals = 0; ///< of nudges, in a row
    QElapsedTimer m_sinceNudge;
    std::pair<KelvoRenderer::State, bool> m_rest; ///< the state, and whether there is a track
    QElapsedTimer m_sinceRest; ///< of that
    QElapsedTimer m_sinceLook;
    QElapsedTimer m_sinceLoad;
    QElapsedTimer m_sinceAbsence;
    QElapsedTimer m_sinceUnload;
    int m_looks = 0; ///< at a track that may be playing

    // Questions
    quint64 m_generation = 0; ///< answers to earlier questions are out of date
    bool m_asking = false;
    bool m_askAgain = false;
    QTimer m_nextQuestion;
    QString m_titleAskedFor;

    int m_volume = -1;
    int m_nextVolume = -1;
    bool m_settingVolume = false;
    bool m_volumeAwaited = false;
    double m_rate = 0;
    bool m_rateAwaited = false;
};
