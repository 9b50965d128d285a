// SPDX-License-Identifier: MIT
#pragma once

#include "Engine.h"
#include "ItemEntries.h"
#include "PlayOrder.h"
#include "PlayRun.h"
#include "Reporter.h"

#include <QObject>

/// Decides what plays next: carries out the commands that choose an item and follows what becomes of it in the engine,
/// as KelvoRenderer says.
class Playback : public QObject
{
    Q_OBJECT
public:
    /// Nothing is owned; all of it must outlive this object.
    Playback(Engine &engine, Reporter &reporter, RendererProperties &properties);

    void assign(KelvoPlaylist *playlist);
    void play();
    void playAddress(const KelvoMediaInfo &item);
    void stop();
    void pause();
    void resume();
    void next();
    void previous();
    void goTo(uint index);
    void setPosition(int seconds, int mode);

    PlayOrder::Status status() const { return m_order.status(); }
    /// Answers from the event loop; 0 while nothing plays.
    void answerPosition(Engine::PositionAnswer answer) const;
    /// For whoever has chosen the renderer only now.
    void tellAgain();

private:
    /// Where the entry in play is.
    enum class Phase { Nowhere, Reading, InEngine };
    using State = KelvoRenderer::State;
    using enum KelvoRenderer::State;

    void connectEngine();
    State state() const { return m_reporter.state(); }
    bool isInEngine() const { return m_phase == Phase::InEngine; }

    // What starts
    bool moveWhileStopped(int index);
    void skipTo(int index);
    void startRun();
    void startItem();
    void startEntry(int entry);
    void open();
    void failLater(const KelvoError &error);
    void load();
    double rateForLoading();
    void leaveEntry();
    void halt(bool completed);
    void take(const PlayRun::Step &step);

    // What becomes of it
    bool isInPlay(quint64 epoch);
    void followState(quint64 epoch, State state);
    void followEnd(quint64 epoch, bool progressed);
    void followFailure(quint64 epoch, const KelvoError &failure, bool progressed);
    void followForeign(const KelvoMediaInfo &item);
    void stoppedElsewhere();
    void endItem();
    void failEntry(const KelvoError &failure, bool progressed);
    void failItem(const KelvoError &failure, bool progressed);
    void readList(const KelvoError &failure);
    void followList(quint64 epoch, const QList<QUrl> &entries, const KelvoError &problem);
    void followEdit();
    void settleEdit();

    PlayRun::Place place() const;
    Reporter::Item inPlay() const;
    void announce() { m_reporter.announce(inPlay()); }

    Engine &m_engine;
    Reporter &m_reporter;
    RendererProperties &m_properties;
    PlayOrder m_order;
    PlayRun m_run;
    ItemEntries m_entries;
    Phase m_phase = Phase::Nowhere;
    quint64 m_epoch = 0; ///< 0: nothing of ours is in the engine
    quint64 m_lastEpoch = 0;
    bool m_pauseWanted = false;
    bool m_editPending = false;
};
