// SPDX-License-Identifier: MIT
#pragma once

#include "ItemDuration.h"
#include "ItemInDevice.h"
#include "ItemStart.h"
#include "KelvoError.h"
#include "KelvoMediaInfo.h"
#include "PlayingProof.h"
#include "RemoteTransport.h"
#include "RendererWishes.h"
#include "StateChange.h"
#include "ToldPosition.h"

#include <QVariant>

#include <optional>

class RendererRequests;

/// What a renderer makes of the item that it was given, or of somebody else's: goes by what the renderer reports and answers,
/// tells what that means, and wishes for what is to be asked or to be told once more.
///
/// An event that changes the state to Stopped is confirmed by asking, because a late one of the item before would
/// end the item in play. What stops at once, without having moved or shown a duration, has not played.
///
/// The signals are those of RemoteTransport, and come from within calls.
class RendererPlayback : public QObject
{
    Q_OBJECT
public:
    using State = KelvoRenderer::State;

    /// Milliseconds.
    struct Patience
    {
        int seek = 1000; ///< so long the target of a seek counts: devices answer 0 for a while
        int start = 2000; ///< until an accepted item must play
        int retry = 300; ///< until an accepted item that does not play is started again
        int change = 3000; ///< until a device must be in the state that it accepted to go to
        int doubt = 1000; ///< until what stopped at once must play after all
        int proof = 3000; ///< until what plays counts as played, whatever the device says of its position
        int progress = 10'000; ///< until the position of what plays must have moved on
    };

    /// @param transport  knows the progress of the item
    /// @param requests   describes failures
    /// @param wishes     of the item in play; all live longer than this
    RendererPlayback(const RemoteTransport *transport, const RendererRequests *requests,
        RendererWishes *wishes, const Patience &patience);

    State state() const { return m_state; }
    /// Of the item in the device, 0 for somebody else's; nothing: nothing that anybody is to hear of.
    std::optional<quint64> epoch() const { return m_epoch; }
    bool isOurs() const { return m_epoch.value_or(0) > 0; }
    /// An item is on its way into the device.
    bool isLoading() const { return m_wishes->load || m_wishes->play || m_start.isLoading(); }
    /// It was accepted, and has not played yet.
    bool isStarting() const { return m_start.isStarting(); }
    bool isDescribed() const { return m_start.isDescribed(); }
    double duration() const { return m_duration.seconds(); } ///< below 0: not known

    /// Another item is to be put in. @param isStopSent  the device is stopped first
    void prepare(bool isStopSent);
    /// Whatever is in the device is not to be heard of any more.
    void leave();

    // What was sent, and what became of it; isCurrent: no other item has been asked for since.
    void loadSent() { m_start.send(); }
    void uriAnswered(quint64 epoch, const QString &uri, const Upnp::Answer &answer, bool isCurrent);
    void playAnswered(const Upnp::Answer &answer, bool isCurrent);
    void stopSent() { m_change.setStopping(true); }
    void stopEnded() { m_change.setStopping(false); }
    void expect(State state);
    void seekAccepted(double seconds);
    /// The item was to go on behind its end.
    void endBefore();
    /// Once more, if anybody is to hear of what is in the device.
    void tellState();

    void hear(const Upnp::Report &report);
    void hearState(State state, bool isCertain);
    void hearDuration(const QString &text, bool isAnswer);
    void stateAnswered(const Upnp::Answer &answer);
    void mediaAnswered(const Upnp::Answer &answer);
    void positionAnswered(const Upnp::Answer &answer);

Q_SIGNALS:
    void stateReported(quint64 epoch, KelvoRenderer::State state);
    void ended(quint64 epoch);
    void stopped(quint64 epoch, const RemoteTransport::Stop &stop);
    void failed(quint64 epoch, KelvoError::Code code, const QString &message);
    void positionReported(quint64 epoch, double seconds);
    void seeked(quint64 epoch, double seconds, int settling);
    void durationReported(quint64 epoch, double seconds);
    void fact(quint64 epoch, const QString &key, const QList<QVariant> &values);
    void replaced(const KelvoMediaInfo &item);
    /// The device is in another state.
    void stateEntered();
    /// There are new wishes.
    void wished();

private:
    void hearItem(const Upnp::Report &report, std::optional<State> state);
    void hearUri(const QString &uri);
    bool hearTrackUri(const QString &uri);
    void hearTrack(const Upnp::Track &track);
    void hearStarting(State state, bool isCertain);
    void itemStarted(State state);
    bool isUnproven() const;
    void doubtStart();
    void failStart();
    void awaitExpected();
    void askForProof();
    void judgeProgress();
    void enterState(State state);
    void finishItem();
    void becomeForeign(const KelvoMediaInfo &info);
    void fail(KelvoError::Code code, const QString &message);

    const RemoteTransport *const m_transport;
    const RendererRequests *const m_requests;
    RendererWishes *const m_wishes;
    const Patience m_patience;
    std::optional<quint64> m_epoch;
    std::optional<quint64> m_stoppedEpoch; // stopped by somebody else, and still in the device
    State m_state = KelvoRenderer::Stopped; // of the device: what it can be told, and what its next one means
    StateChange m_change;
    ItemInDevice m_inDevice;
    ItemStart m_start;
    ItemDuration m_duration;
    ToldPosition m_told;
    PlayingProof m_proof;
};
