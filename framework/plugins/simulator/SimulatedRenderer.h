// SPDX-License-Identifier: MIT
#pragma once

#include "KelvoItemFacts.h"
#include "KelvoPlayQueue.h"
#include "KelvoRenderer.h"
#include "SimulatedMedium.h"
#include "SimulatedPosition.h"

#include <QHash>
#include <QPointer>

#include <deque>
#include <functional>
#include <optional>

class SimulatedClock;

/// A renderer without media: the contract of KelvoRenderer, played out against a SimulatedClock. What a
/// tester can do to it stands in SimulatorProperties.h.
///
/// Every command becomes a task of the clock. Reports are collected while a task runs and emitted at its end,
/// so that whoever hears one may delete the renderer.
class SimulatedRenderer : public KelvoRenderer
{
    Q_OBJECT
public:
    /// The clock is not owned and must outlive the renderer.
    SimulatedRenderer(
        SimulatedClock *clock, const QString &uuid, const QString &name, QObject *parent = nullptr);

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

Q_SIGNALS:
    /// "sim-vanish": the owner is to remove the renderer and bring it back after that time.
    void vanishRequested(int milliseconds);

private:
    using Task = std::function<void()>;

    // Tasks and reports
    quint64 later(qint64 milliseconds, Task task);
    void command(Task task);
    void report(Task emission);
    void reportScanning(float fraction);
    void reportError(KelvoError::Code code, const QString &message = {});
    void flush();

    // Commands: what happens when they take effect (SimulatedRenderer_commands.cpp)
    void doPlay();
    void doNext();
    void doPrevious();
    void doGotoIndex(uint index);
    void doSetPosition(int seconds, int mode);
    void doAssign(KelvoPlaylist *playlist);
    bool adoptAssigned();
    bool moveWhileStopped(int index);

    // Playback (SimulatedRenderer_playback.cpp)
    void startRun();
    void startItem();
    void startEntry(int entry);
    void loaded();
    void startBuffering();
    void fillBuffer();
    void endBuffering();
    void begin();
    void updateRunning();
    void checkPosition();
    void rearm();
    bool atPausePoint();
    void backAtStart();
    void endEntry();
    void failEntry(KelvoError::Code code, const QString &message);
    void goOnAfterFailure();
    void halt(bool completed = false);
    void setState(State state);
    void followEdit();
    void playlistEdited();
    void announceItem();
    void tellItem();
    KelvoPlaylist *playlistInPlay() const;
    void announceMetadata();
    void takeFact(const QString &key, const QList<QVariant> &values);
    void tellFact(const KelvoItemFacts::Fact &fact);
    void tellState(State state);
    void tellAgain();
    double position() const;
    double duration() const;
    KelvoContent content() const;

    // Properties (SimulatedRenderer_properties.cpp)
    enum class Outcome { Done, Invalid, Reported }; ///< Reported: the setter itself sees to the report
    using Setter = Outcome (SimulatedRenderer::*)(const QVariant &value);
    static const QHash<QString, Setter> &setters();
    QVariant valueOf(const QString &name) const;
    void doSetProperty(const QString &name, const QVariant &value);
    void changed(const QString &name, const QVariant &value);
    Outcome setVolume(const QVariant &value);
    Outcome setSpeed(const QVariant &value);
    Outcome setAutoAdvance(const QVariant &value);
    Outcome setXid(const QVariant &value);
    Outcome setAutopaint(const QVariant &value);
    Outcome setRectangle(const QVariant &value);
    Outcome setFrameOnPause(const QVariant &value);
    Outcome setPolicyOverride(const QVariant &value);
    Outcome setColorKey(const QVariant &value);
    Outcome storeBool(QLatin1String name, const QVariant &value);
    Outcome storeMilliseconds(QLatin1String name, const QVariant &value);
    int number(QLatin1String name) const { return m_properties.value(name).toInt(); }
    bool flag(QLatin1String name) const { return m_properties.value(name).toBool(); }

    // What testers demand (SimulatedRenderer_trouble.cpp)
    Outcome setLatency(const QVariant &value);
    Outcome setFailure(const QVariant &value);
    Outcome setError(const QVariant &value);
    Outcome setBuffering(const QVariant &value);
    Outcome setStall(const QVariant &value);
    Outcome setVanish(const QVariant &value);
    Outcome setName(const QVariant &value);
    Outcome setDuration(const QVariant &value);
    Outcome setSeekable(const QVariant &value);
    Outcome setMetadata(const QVariant &value);
    Outcome setClock(const QVariant &value);
    Outcome setAdvance(const QVariant &value);

    SimulatedClock *const m_clock;
    const QString m_uuid;
    QString m_name;
    QHash<QString, QVariant> m_properties;
    std::deque<Task> m_reports;
    qint64 m_lastCommandDue = 0;

    State m_state = Stopped;
    KelvoPlayQueue m_queue;
    QPointer<KelvoPlaylist> m_assigned; ///< m_queue takes it over with the next command that chooses an item
    QPointer<KelvoPlaylist> m_announcedPlaylist;
    KelvoMediaInfo m_uri;
    bool m_uriInPlay = false; ///< what plays, or played last, is m_uri and not an item of m_queue

    QList<SimulatedMedium> m_entries; ///< of the item in play
    KelvoItemFacts m_facts;
    int m_entry = 0;
    SimulatedPosition m_position;
    std::optional<uint> m_pauseAt; ///< seconds
    std::optional<int> m_seekWhenLoaded; ///< seconds
    bool m_pauseWanted = false;
    bool m_loaded = false;
    bool m_editPending = false;
    bool m_playedInRun = false; ///< something played since the user last chose an item
    bool m_playedInItem = false;
    float m_scanned = 1;
    int m_failedInRow = 0;
    int m_itemsToFail = 0;
    int m_bufferStep = -1; ///< -1: not buffering
    quint64 m_wake = 0; ///< the clock's task for whatever happens next in the item
};
