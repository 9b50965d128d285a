// SPDX-License-Identifier: MIT
#pragma once

#include "PlayClock.h"
#include "RemoteTransport.h"
#include "RendererLink.h"

#include <QElapsedTimer>
#include <QTimer>

#include <memory>
#include <optional>

/// A media renderer of the network, driven by AVTransport and RenderingControl.
///
/// What is wanted of the device is kept as wishes, of each kind only the newest, and granted one after the other:
/// never is more than one request of ours under way. A wish is tried once; what the device or another controller
/// makes of it is reported, not fought.
///
/// An event that changes the state to Stopped is confirmed by asking, because a late one of the item before would
/// end the item in play. What a device says while it goes from one item to the next belongs to the item whose address it
/// names as that of its track. What stops at once, without having moved or shown a duration, has not played.
class UpnpTransport : public RemoteTransport
{
    Q_OBJECT
public:
    /// Milliseconds.
    struct Patience
    {
        int seek = 1000; ///< so long the target counts as the position, because devices answer 0 for a while
        int start = 2000; ///< until an accepted item must play
        int retry = 300; ///< until an accepted item that does not play is started again
        int change = 3000; ///< until a device must be in the state that it accepted to go to
        int doubt = 1000; ///< until what stopped at once must play after all
        int proof = 3000; ///< until what plays counts as played, whatever the device says of its position
        int progress = 10'000; ///< until the position of what plays must have moved on
    };

    UpnpTransport(std::unique_ptr<RendererLink> link, Patience patience);
    ~UpnpTransport() override;

    Abilities abilities() const override;
    void load(const Item &item) override;
    void unload() override;
    void pause() override;
    void resume() override;
    void seek(double seconds) override;
    void setVolume(int volume) override;
    void setRate(double rate) override;
    void askPosition() override;

private:
    using State = KelvoRenderer::State;

    struct Wishes
    {
        bool stop = false;
        bool load = false;
        bool play = false;
        bool knowState = false;
        std::optional<bool> paused = {};
        std::optional<double> position = {};
        std::optional<int> volume = {};
        bool rate = false;
        bool knowMedia = false;
        bool knowVolume = false;
        bool knowPosition = false;
    };

    /// A device volume as it was set, and what for.
    struct SetVolume
    {
        int volume;
        int deviceVolume;
    };

    // --- asking, in UpnpTransport_commands.cpp ---
    void next();
    bool sendFirstWish();
    void send(Upnp::Service service, const char *action, QList<QPair<QByteArray, QString>> in,
        QList<QByteArray> out, std::function<void(const Upnp::Answer &)> handler);
    void sendStop();
    void sendUri();
    void uriAnswered(quint64 epoch, const QString &uri, const Upnp::Answer &answer);
    void sendPlay();
    void playAnswered(quint64 epoch, const Upnp::Answer &answer);
    bool isRefusalPassing(const Upnp::Answer &answer);
    void sendPaused();
    void sendSeek();
    void seekAnswered(double target, const Upnp::Answer &answer);
    void judgeTarget(double target, const Upnp::Answer &refusal);
    void sendVolume();
    void unmute();
    void sendRate();
    void askState();
    void askMedia();
    void askVolume();
    void sendPositionQuestion();
    /// A refused change of state is none when the device is in that state already.
    void forgive(State wanted, const char *action, const Upnp::Answer &refusal);

    // --- hearing, in UpnpTransport_reports.cpp ---
    void hear(const Upnp::Report &report);
    void hearItem(const Upnp::Report &report, std::optional<State> state);
    void hearEarly();
    void hearRendering(const Upnp::Report &report);
    void hearUri(const QString &uri);
    void hearTrack(const Upnp::Track &track);
    enum class From { Event, Answer };
    void hearDuration(const QString &text, From from);
    bool isDurationOfItemBefore(double duration) const;
    void hearState(State state, bool isCertain);
    void awaitExpected();
    void hearStarting(State state, bool isCertain);
    void itemStarted(State state);
    void checkAgain();
    void doubtStart();
    void failStart();
    bool isUnproven() const;
    bool isItemBefore(const QString &trackUri) const;
    bool isTrackDoubtful() const;
    bool hearTrackUri(const QString &uri);
    void takePosition(double position, bool isJudged);
    bool isStateDoubtful(double position);
    void askForProof();
    void settleDuration(State state);
    void hearMedia(const Upnp::Answer &answer);
    void hearVolume(int deviceVolume);
    void hearPosition(const Upnp::Answer &answer);
    void enterState(State state);
    void finishItem();
    void fail(KelvoError::Code code, const QString &message);
    void becomeForeign(const KelvoMediaInfo &info);
    void checkProgress();

    void tell(std::function<void()> report);
    void trouble(const char *action, const Upnp::Answer &answer);
    QString describe(const char *action, const Upnp::Answer &answer) const;
    void expect(State state);
    void expectationEnds();
    void forgetItem();
    bool isLoading() const { return m_wishes.load || m_wishes.play || m_isLoading; }
    void noteAbilities();

    const std::unique_ptr<RendererLink> m_link;
    const Patience m_patience;
    Upnp::RendererLimits m_limits;
    QSet<QString> m_allowedActions; // of the present state; empty: not said
    Abilities m_lastAbilities;

    Wishes m_wishes;
    bool m_isBusy = false;
    bool m_isLoading = false; // the present request puts an item in
    Item m_item; // the newest that was asked for
    QString m_uri; // what of ours the device accepted last
    QString m_foreignUri; // what of somebody else's is in the device
    std::optional<quint64> m_epoch; // in the device; nothing: nothing that anybody is to hear of
    std::optional<quint64> m_stoppedEpoch; // stopped by somebody else, and still in the device
    State m_state = KelvoRenderer::Stopped;
    QString m_trackUri; // what the device named last as that of its track
    QStringList m_before; // of items that the device may still be busy with
    QList<Upnp::Report> m_early; // come before the answer to the command that they are due to
    bool m_isTrackOurs = false; // and not that of an item before
    bool m_isAddressGone = false; // forgotten by the device
    bool m_isStarting = false; // accepted, and has not played yet
    bool m_isDoubted = false; // stopped at once
    QElapsedTimer m_started;
    QTimer m_proof;
    int m_proofDelay = 0;
    int m_playTries = 0; // of the item
    bool m_isRefusalTried = false; // whether it lasts
    bool m_isStopping = false;
    bool m_isStopTried = false; // because the device would not take an item while playing
    std::optional<State> m_expected;
    QElapsedTimer m_expectedSince;
    int m_checkDelay = 0;
    int m_changeTries = 0;
    QTimer m_check;

    double m_duration = -1;
    double m_durationBefore = -1; // of the item before
    bool m_isDurationUntold = false; // it may be that one
    double m_position = 0; // as the device said last
    bool m_isDurationDoubted = false; // taken back by an answer
    double m_lastPosition = -1;
    QElapsedTimer m_lastPositionAt;
    bool m_isPositionDoubted = false;
    PlayClock m_clock;
    QElapsedTimer m_seeked;
    QTimer m_progress;
    bool m_isProgressJudged = false;
    QHash<QString, QString> m_facts;

    int m_volume = -1;
    std::optional<SetVolume> m_setVolume;
    bool m_isMuted = false;
    int m_volumeBeforeMute = -1;
};
