// SPDX-License-Identifier: MIT
#pragma once

#include "MprisCalls.h"
#include "MprisEnd.h"
#include "MprisOpening.h"
#include "MprisQuestions.h"
#include "MprisSelfPause.h"
#include "MprisSettings.h"
#include "MprisSnapshot.h"
#include "RemoteTransport.h"

#include <QElapsedTimer>

/// Drives one player over MPRIS.
///
/// What players signal is late, partial and sometimes wrong, so a signal only leads to a question: all decisions are
/// made from whole snapshots of the player's properties, one question being under way at a time. What each of them says is
/// reported; README.md tells which players need which of the decisions.
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
    void setVolume(int volume) override { m_settings.setVolume(volume); }
    void setRate(double rate) override { m_settings.setRate(rate); }
    void askPosition() override { m_questions.ask(); }

    /// The player has another name now.
    void rename(const QString &name);
    /// The player signalled a change of its properties.
    void notePropertiesChanged();
    /// The player signalled a seek.
    void noteSeeked(const QVariant &microseconds);

private:
    enum class Phase {
        Idle, ///< nothing plays that we know of
        Opening, ///< our item is on its way
        Following, ///< something plays
    };

    void take(const MprisSnapshot &now);
    void takeOpening(const MprisSnapshot &now, bool hasAdvanced);
    void takeSilence();
    void takeFollowing(const MprisSnapshot &now);
    void takeIdle(const MprisSnapshot &now, bool hasAdvanced);
    void nudge();
    void begin(const MprisSnapshot &now, KelvoRenderer::State state);
    void fail(KelvoError::Code code, const QString &message);
    void takeReplacement(const MprisSnapshot &now);
    void notePositionLost(double seconds, bool isSeek);
    void takeLoss(const MprisSnapshot &now);
    void takeStop(const MprisSnapshot &now, const Stop &stop);
    bool isPauseToPass(const MprisSnapshot &now);
    void tellTrack(const MprisSnapshot &now);
    void tell(const QString &key, const QString &text);
    void askTitle();

    MprisCalls m_calls;
    MprisQuestions m_questions;
    MprisSettings m_settings;
    MprisSnapshot m_last;
    Phase m_phase = Phase::Idle;
    quint64 m_epoch = 0;
    MprisOpening m_opening;
    MprisTrack m_track; ///< in play, or played last
    QString m_untitled; ///< id of the track whose title was asked for
    MprisSelfPause m_selfPause;
    MprisEnd m_end;
    bool m_trustsPosition = false; ///< the player says "Stopped" while it plays
    QElapsedTimer m_sinceUnload;
    int m_looks = 0; ///< at a track that may be playing
    const bool m_hasTrackList;
};
