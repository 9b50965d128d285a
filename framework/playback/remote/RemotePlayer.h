// SPDX-License-Identifier: MIT
#pragma once

#include "Awaited.h"
#include "Engine.h"
#include "RemoteProgress.h"
#include "RemoteTransport.h"

#include <memory>
#include <optional>

/// The engine over a player outside of this process.
///
/// How the player is told is the business of the RemoteTransport; here is what the players' protocols leave open: where
/// the item is, pausing at a second, and whether what stopped has played. What another controller does to the player is
/// shown and not fought. Lists (.m3u and the like) go to the player as they are.
class RemotePlayer : public Engine
{
    Q_OBJECT
public:
    RemotePlayer(std::unique_ptr<RemoteTransport> transport, const QString &name);
    ~RemotePlayer() override;

    QString name() const override { return m_name; }
    void describe(RendererProperties &properties) const override;
    QString refusal(const QString &name, const QVariant &value) const override;
    bool usesWindow() const override { return false; }
    void load(const Item &item) override;
    void unload() override;
    void pause() override;
    void resume() override;
    void seek(int seconds, KelvoRenderer::SeekMode mode) override;
    void setPauseAt(std::optional<uint> seconds) override;
    void answerPosition(PositionAnswer answer) override;
    bool applyProperty(const QString &name, const QVariant &value) override;

private:
    using State = KelvoRenderer::State;
    using enum KelvoRenderer::State;
    using Motion = RemoteProgress::Motion;

    void connectTransport();
    void leave(bool isAlive = false);
    void reach(State state);
    bool isNews(State state);
    void followState(quint64 epoch, State state);
    void reachedPlaying();
    void reachedPaused();
    void takeLoaded();
    void stoppedElsewhere();
    void followReplacement(const KelvoMediaInfo &item);
    void followEnd();
    void followTrouble(KelvoError::Code code, const QString &message);
    void followRate(double rate);
    bool canPause();
    bool pauseHere();
    void seekTo(double seconds);

    const std::unique_ptr<RemoteTransport> m_transport;
    QString m_name;
    RemoteProgress m_progress;
    Awaited<uint> m_volume;
    Awaited<double> m_rate;

    // Of the item in play
    QUrl m_url;
    quint64 m_epoch = 0; ///< 0: nothing of ours is in the player
    bool m_foreign = false;
    State m_state = Stopped;
    std::optional<State> m_toldState; ///< by the player, last
    bool m_loaded = false; ///< the player has begun with it
    bool m_pauseWanted = false;
    bool m_pauseSent = false; ///< told to the player before the item was reported as playing
    bool m_loadedPaused = false;
    std::optional<int> m_seekWhenLoaded; ///< seconds
};
