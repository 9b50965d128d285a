// SPDX-License-Identifier: MIT
#pragma once

#include "Engine.h"
#include "SimulatedMedium.h"
#include "SimulatedPosition.h"
#include "SimulatorSettings.h"

#include <optional>

class SimulatedClock;

/// An engine without media: what plays only moves a position by a SimulatedClock. What a tester can do to it stands in
/// SimulatorProperties.h.
///
/// Commands and reports are tasks of the clock, so that a clock that tests move keeps their order, and whoever hears a
/// report has reacted before time goes on.
class SimulatedEngine : public Engine
{
    Q_OBJECT
public:
    /// The clock is not owned and must outlive the engine.
    SimulatedEngine(SimulatedClock *clock, const QString &name);

    QString name() const override;
    void describe(RendererProperties &properties) const override;
    bool canOpen(const QUrl &uri) const override;
    void load(const Item &item) override;
    void unload() override;
    void pause() override;
    void resume() override;
    void seek(int seconds, KelvoRenderer::SeekMode mode) override;
    void setPauseAt(std::optional<uint> seconds) override;
    void answerPosition(PositionAnswer answer) override;
    QList<QUrl> knownEntries(const KelvoMediaInfo &item) const override;
    bool applyProperty(const QString &name, const QVariant &value) override;
    bool setOwnProperty(const QString &name, const QVariant &value) override;
    QVariant ownProperty(const QString &name) const override;
    void post(std::function<void()> call) override;
    void command(std::function<void()> call) override;

Q_SIGNALS:
    /// "sim-vanish": the owner is to remove the renderer and bring it back after that time.
    void vanishRequested(int milliseconds);

private:
    using State = KelvoRenderer::State;
    using enum KelvoRenderer::State;
    enum class Report { Now, Later };

    // The item
    quint64 later(qint64 milliseconds, std::function<void()> task);
    void reach(State state);
    void takeMedium();
    void tellFacts();
    void startBuffering();
    void fillBuffer();
    bool isBuffering() const { return m_bufferStep >= 0; }
    void begin();
    void updateRunning();
    void rearm();
    void checkPosition();
    bool atPausePoint();
    void backAtStart();
    void setSpeed(double speed);
    void end();
    void stopElsewhere();
    void fail(KelvoError::Code code, const QString &message);
    double position() const;
    double duration() const;

    // What testers demand
    void takeSetting(const QString &name, const QVariant &value);
    Report takeEffect(const QString &name, const QVariant &value);
    void takeError(const QVariant &value);
    void tellFacts(const QVariant &value);
    void takeForeign(const QString &deed);
    void advance();

    SimulatedClock *const m_clock;
    SimulatorSettings m_settings;
    qint64 m_lastCommandDue = 0;
    int m_itemsToFail = 0;

    // Of the item
    quint64 m_epoch = 0;
    SimulatedMedium m_medium;
    State m_state = Stopped;
    bool m_loaded = false;
    bool m_pauseWanted = false;
    SimulatedPosition m_position;
    std::optional<uint> m_pauseAt; ///< seconds
    std::optional<int> m_seekWhenLoaded; ///< seconds
    int m_bufferStep = -1; ///< -1: not buffering
    quint64 m_wake = 0; ///< the clock's task for whatever happens next in the item
};
